#include <sys/resource.h>

#include "testing.h"
#include "trajectory/binary_open.h"
#include "trajectory/front_end_fixture.h"
#include "trajectory/history_file.h"
#include "trajectory/history_writer.h"

namespace pathstat {
namespace {

using namespace testing_bytes;

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t zero = -1;

/// Three atoms, of which the third and the first move, in two molecules.
HistoryPlan small_plan(double version) {
  return {.version = version, .atoms = 3, .movable = {3, 1}, .molecules = 2, .bonds = {{1, 2}}};
}

class History : public FrontEnd {
 protected:
  void write_and_open(const Bytes& content) {
    file_ = std::make_unique<FileOnDisk>(content.all(), ".his");
    ASSERT_EQ(open(file_->path()), 0);
  }
  Doubles vectors(int frame, int kind, const Integers& atoms) {
    Doubles numbers;
    for (const auto atom : atoms) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        numbers.push_back(vector_number(frame, kind, static_cast<std::size_t>(atom), axis));
      }
    }
    return numbers;
  }

 private:
  std::unique_ptr<FileOnDisk> file_;
};

/// The numbers of the components behind the keys, in the order of the lists below; `zero` for one that is not there.
struct VersionCase {
  double version;
  Integers whole, each_molecule, summed;
  friend void PrintTo(const VersionCase& c, std::ostream* out) { *out << c.version; }
};
const Integers whole_keys{400026, 400027, 400028, 400029, 400106, 400107, 400108, 400109, 400110,
                          400111, 400112, 400113, 400114, 400030, 400115, 400116, 400031, 400032};
const Integers molecule_keys{400118, 400119, 400120, 400121, 400122, 400123, 400124,
                             400125, 400126, 400127, 400128, 400129, 400130, 400134};
const VersionCase version_cases[] = {
    {2.5,
     {0, 1, 2, 3, 4, 5, 6, zero, zero, 7, zero, 8, zero, 9, 10, 11, 12, 13},
     {0, 1, 2, 3, 4, 5, 6, zero, zero, 7, zero, 8, zero, 13},
     {4, 5, 6, 7, 8}},
    {2.59,
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, zero, 13, 14, 15, 16, 17},
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, zero, 16},
     {4, 5, 6, 7, 8, 9, 10, 11, 12}},
    {2.6,
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, zero, 12, 13, 14, 15, 16},
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, zero, 16},
     {4, 5, 6, 7, 8, 9, 10, 11}},
    {2.8,
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17},
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 17},
     {4, 5, 6, 7, 8, 9, 10, 11, 12}},
    {2.9,
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17},
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 17},
     {4, 5, 6, 7, 8, 9, 10, 11, 12}},
};

class HistoryVersions : public History, public testing::WithParamInterface<VersionCase> {};

TEST_P(HistoryVersions, each_energy_has_its_place_in_each_frame) {
  const auto& expected = GetParam();
  const auto plan = small_plan(expected.version);
  const EnergyPlaces at(plan);
  write_and_open(history_file(plan, 3));
  for (const int frame : {1, 3, 2}) {
    SCOPED_TRACE(frame);
    ASSERT_EQ(read(frame), 0);
    const auto component = [&](std::int32_t number) {
      return number == zero ? 0.0 : energy_number(frame, at.components + static_cast<std::size_t>(number));
    };
    for (std::size_t k = 0; k < whole_keys.size(); ++k) {
      EXPECT_EQ(number(whole_keys[k]), component(expected.whole[k])) << whole_keys[k];
    }
    double sum = 0;
    for (const auto part : expected.summed) sum += component(part);
    EXPECT_EQ(number(400179), sum);
    for (std::size_t k = 0; k < molecule_keys.size(); ++k) {
      const auto column = expected.each_molecule[k];
      const auto first = at.components_of + 2 * static_cast<std::size_t>(column);
      const auto answer = doubles(molecule_keys[k], 2);
      EXPECT_EQ(answer.count, 2);
      EXPECT_THAT(answer.values, ElementsAre(column == zero ? 0.0 : energy_number(frame, first),
                                             column == zero ? 0.0 : energy_number(frame, first + 1)))
          << molecule_keys[k];
    }
    for (const auto& [key, place] :
         {std::pair{400117, at.potential_of}, std::pair{400131, at.repulsive_of}, std::pair{400132, at.attractive_of},
          std::pair{400133, at.coulomb_of}, std::pair{400154, at.van_der_waals_of}}) {
      EXPECT_THAT(doubles(key, 2).values, ElementsAre(energy_number(frame, place), energy_number(frame, place + 1)))
          << key;
    }
    EXPECT_EQ(number(400049), energy_number(frame, at.total));
    EXPECT_EQ(number(400025), energy_number(frame, at.potential));
    EXPECT_EQ(number(400050), energy_number(frame, at.kinetic));
    for (const auto key : {400057, 400063}) EXPECT_EQ(number(key), energy_number(frame, at.pressure) * 0.0001);
    EXPECT_NEAR(number(400017), 0.002 * (10 + 5 * (frame - 1)), 1e-15);
  }
  EXPECT_EQ(number(400022), 0.002);
  EXPECT_EQ(integer(200000), 6);
  EXPECT_EQ(integer(200001), std::lround(100 * expected.version));
  EXPECT_EQ(integer(200164), 3);
  EXPECT_EQ(integer(200165), 2);
  EXPECT_EQ(integer(200177), 2);
  EXPECT_EQ(integer(200019), 2);
  EXPECT_EQ(named_span<char>("Trj/His/AtomNames").size(), 15U);
  EXPECT_EQ(std::string(named_span<char>("Trj/His/AtomNames").data(), 15), "A1   A2   A3   ");
  EXPECT_THAT(named_span<std::int32_t>("Trj/His/BondIndex"), ElementsAre(1, 2));
}

TEST_P(HistoryVersions, vectors_come_in_the_order_of_the_movable_atoms) {
  const auto plan = small_plan(GetParam().version);
  write_and_open(history_file(plan, 3));
  EXPECT_EQ(doubles(200160, 9).status, 50014);
  ASSERT_EQ(attach({model({7, 8, 9})}), 0);
  // Without a list the file stores all atoms as they stand, and the first ones are the movable ones.
  const Integers order = plan.has_movable_list() ? Integers{3, 1} : Integers{1, 2};
  const Integers ids = plan.has_movable_list() ? Integers{9, 7, 8} : Integers{7, 8, 9};
  EXPECT_THAT(integers(200152, 3).values, ElementsAreArray(ids));
  EXPECT_THAT(integers(200167, 3).values, ElementsAreArray(ids));
  for (const auto key : {200159, 200168}) EXPECT_THAT(integers(key, 2).values, ElementsAre(ids[0], ids[1]));
  for (const int frame : {1, 3, 2}) {
    ASSERT_EQ(read(frame), 0);
    auto all = vectors(frame, 1, order), moving = vectors(frame, 2, order);
    for (const auto key : {200161, 200170}) EXPECT_EQ(doubles(key, 6).values, all) << key;
    for (const auto key : {200163, 200172}) EXPECT_EQ(doubles(key, 6).values, moving) << key;
    const auto fixed = plan.has_movable_list() ? Doubles{1.5, 0, 0} : vectors(frame, 1, {3});
    all.insert(all.end(), fixed.begin(), fixed.end());
    moving.insert(moving.end(), 3, 0.0);
    for (const auto key : {200160, 200169}) EXPECT_EQ(doubles(key, 9).values, all) << key;
    for (const auto key : {200162, 200171}) EXPECT_EQ(doubles(key, 9).values, moving) << key;
  }
  const auto some = doubles(200160, 8);
  EXPECT_EQ(some.status, 50008);
  EXPECT_EQ(some.count, 9);
  const auto expected = vectors(2, 1, order);
  EXPECT_THAT(some.values,
              ElementsAre(expected[0], expected[1], expected[2], expected[3], expected[4], expected[5], -7, -7));
}

TEST_P(HistoryVersions, a_file_cut_at_any_byte_gives_a_status_and_its_whole_frames) {
  const auto plan = small_plan(GetParam().version);
  Bytes whole = history_head(plan);
  std::vector<std::size_t> ends;
  for (int frame = 1; frame <= 3; ++frame) {
    whole.add(frame == 1 ? history_first_frame(plan, numbered_frame(plan, 1))
                         : history_later_frame(numbered_frame(plan, frame)));
    ends.push_back(whole.size());
  }
  for (std::size_t kept = 0; kept <= whole.size(); ++kept) {
    SCOPED_TRACE(kept);
    const Bytes part = whole.part(0, kept);
    std::int32_t status = -1;
    open_history(RecordReader(part.all()), status);
    ASSERT_EQ(status, kept < ends[0] ? 50004 : 0);
    if (status != 0) continue;
    std::int32_t frames = 0;
    while (read_history_frame(frames + 1, status), status == 0) ++frames;
    const auto there = static_cast<std::size_t>(frames);
    ASSERT_EQ(there, static_cast<std::size_t>(std::ranges::count_if(ends, [&](auto end) { return end <= kept; })));
    ASSERT_EQ(status, kept == ends[there - 1] ? 50004 : 50003);
    ASSERT_EQ(history_frame(), 0);
    ASSERT_EQ(status_of(read_history_frame, 1), 0);
  }
  close_history();
}

INSTANTIATE_TEST_SUITE_P(all, HistoryVersions, testing::ValuesIn(version_cases),
                         [](const auto& test) { return std::to_string(std::lround(100 * test.param.version)); });

TEST_F(History, a_head_without_bonds_or_with_one_frame_is_whole) {
  HistoryPlan plan{.version = 2.8};
  write_and_open(history_file(plan, 1));
  EXPECT_EQ(histrj_i_.his_header_records, 11);
  EXPECT_EQ(read(2), 50004);
  EXPECT_EQ(doubles(400049).status, 50003) << "no frame is loaded";
  EXPECT_EQ(read(1), 0);
  plan.bonds = {{1, 2}};
  write_and_open(history_file(plan, 1));
  EXPECT_EQ(histrj_i_.his_header_records, 12);
  std::array<char, 160> lines;
  std::int32_t count = 0;
  EXPECT_EQ(status_of(trj_cvalue_, handle_, 2, lines, 80, count), 0);
  EXPECT_EQ(std::string(lines.data(), 160), padded("one line", 80) + padded("another line", 80));
  EXPECT_EQ(status_of(trj_cvalue_, handle_, 2, std::span(lines).first(8), 4, count), -50000);
  EXPECT_EQ(std::string(lines.data(), 8), "one anot");
}

TEST_F(History, frames_are_found_in_any_order) {
  const auto plan = small_plan(2.9);
  write_and_open(history_file(plan, 12));
  for (const int frame : {7, 3, 12, 1, 1, 11, 2, 12}) {
    ASSERT_EQ(read(frame), 0);
    EXPECT_EQ(number(400049), energy_number(frame, 0));
    EXPECT_EQ(trj_i_.trj_current_frame, frame);
  }
  EXPECT_EQ(read(40), 50004);
  EXPECT_EQ(read(5), 0);
  for (const int frame : {0, -1}) EXPECT_EQ(read(frame), 50003);
}

TEST_F(History, the_cell_stress_and_vectors_are_turned_as_the_model_lies) {
  // The file's cell: a along x, b in the xy plane. In the model c lies along z and b in the yz plane.
  const double alpha = 1.2, beta = 1.4, gamma = 1.3, a = 10, b = 12, c = 14;
  const double cx = std::cos(beta), cy = (std::cos(alpha) - std::cos(beta) * std::cos(gamma)) / std::sin(gamma);
  const double height = std::sqrt(1 - cx * cx - cy * cy);
  const HistoryPlan plan{.atoms = 3, .movable = {1, 2, 3}};
  auto frame = numbered_frame(plan, 1);
  frame.cell = {a, b, c, alpha, beta, gamma};
  frame.vectors = {a, 0, 0, b * std::cos(gamma), b * std::sin(gamma), 0, c * cx, c * cy, c * height};
  // Atoms at the ends of the cell vectors, so that their turned positions are the cell of the model.
  frame.positions.assign(frame.vectors.begin(), frame.vectors.end());
  frame.velocities = frame.positions;
  // A stress that pulls along the file's cell vector a alone.
  const auto stress = EnergyPlaces(plan).stress;
  std::fill_n(frame.energies.begin() + static_cast<std::ptrdiff_t>(stress), 9, 0.0);
  frame.energies[stress] = 20000;
  Bytes file = history_head(plan);
  file.add(history_first_frame(plan, frame));
  write_and_open(file);
  for (const auto key : {400078, 400084, 400085, 400105, 400149, 400151}) EXPECT_EQ(doubles(key, 9).status, 50014);
  EXPECT_EQ(doubles(400058).status, 50019);
  ASSERT_EQ(attach({model({1, 2, 3}, {}, 100)}), 0);

  const auto parameters = doubles(400149, 6).values;
  EXPECT_THAT(parameters, ElementsAre(a, b, c, alpha, beta, gamma));
  const double bz = b * std::cos(alpha), by = b * std::sin(alpha), az = a * std::cos(beta);
  const double ay = a * (std::cos(gamma) - std::cos(alpha) * std::cos(beta)) / std::sin(alpha);
  const double ax = std::sqrt(a * a - ay * ay - az * az);
  const auto near = [](double x) { return DoubleNear(x, 1e-12); };
  EXPECT_THAT(doubles(400078, 6).values, ElementsAre(near(ax), near(by), near(c), near(bz), near(az), near(ay)));
  const Doubles matrix{ax, ay, az, 0, by, bz, 0, 0, c};
  EXPECT_THAT(doubles(400105, 9).values, Pointwise(DoubleNear(1e-12), matrix));
  const double volume = a * b * c * std::sin(gamma) * height;
  for (const auto key : {400058, 400064}) EXPECT_NEAR(number(key), volume, 1e-9);
  EXPECT_EQ(doubles(400151).status, 50011);
  for (const auto key : {200160, 200161, 200162, 200163, 200169, 200170, 200171, 200172}) {
    EXPECT_THAT(doubles(key, 9).values, Pointwise(DoubleNear(2e-6), matrix)) << "32 bits; key " << key;
  }
  const double x = ax / a, y = ay / a, z = az / a;
  for (const auto key : {400084, 400085}) {
    EXPECT_THAT(doubles(key, 6).values, ElementsAre(near(2 * x * x), near(2 * y * y), near(2 * z * z), near(2 * y * z),
                                                    near(2 * x * z), near(2 * x * y)));
  }
  EXPECT_TRUE(logicals(100005).values[0]);
  EXPECT_TRUE(logicals(100008).values[0]);
  EXPECT_TRUE(logicals(100054).values[0]);
  EXPECT_EQ(integer(200004), 3);
  EXPECT_EQ(integer(200142), 100);
  EXPECT_EQ(integer(200135), 1);
}

TEST_F(History, without_a_cell_there_is_none_to_ask_for) {
  write_and_open(history_file({}, 2));
  EXPECT_EQ(logicals(100005).status, 50014);
  ASSERT_EQ(attach({model({1, 2})}), 0);
  for (const auto key : {400078, 400084, 400085, 400105, 400149}) EXPECT_EQ(doubles(key, 9).status, 50010) << key;
  EXPECT_EQ(doubles(400058).status, 50019);
  EXPECT_FALSE(logicals(100005).values[0]);
  for (const auto key : {400020, 400021, 400033, 400144, 400150, 400100, 400173, 400176, 400180, 1}) {
    EXPECT_EQ(doubles(key, 9).status, 50005) << key;
  }
  for (const auto key : {200018, 200145, 200166, 7}) EXPECT_EQ(integers(key).status, 50005) << key;
  for (const auto key : {100007, 100010, 100012}) EXPECT_EQ(logicals(key).status, 50005) << key;
  EXPECT_EQ(integer(200140), -1);
  EXPECT_EQ(integer(200141), -1);
  EXPECT_EQ(integer(200153), 3);
}

/// The model of the images: atoms 7 and 8, four operators; the second of the file's atoms moves.
TEST_F(History, images_follow_the_stored_atoms) {
  const auto model = core.import_text(
      "(1 Model crystal\n (A I PeriodicType 100)\n (A V Cell ((8 0 0) (0 16 0) (0 0 32)))\n (A I AtomId (7 8))\n"
      " (A C Element (C C))\n (A V XYZ ((1 2 3) (2 5 7)))\n"
      " (A D Rotation (1 0 0 0 1 0 0 0 1  -1 0 0 0 -1 0 0 0 1  -1 0 0 0 1 0 0 0 -1  1 0 0 0 -1 0 0 0 -1))\n"
      " (A D Translation (0 0 0  0.5 0 0.5  0 0.5 0.5  0.5 0.5 0))\n)\n");
  const HistoryPlan plan{.movable = {2}};
  auto frame = numbered_frame(plan, 1);
  frame.cell = {10, 20, 40, std::acos(0.0), std::acos(0.0), std::acos(0.0)};
  frame.vectors = {10, 0, 0, 0, 20, 0, 0, 0, 40};
  frame.positions = {0, 0, 0, 3, 6, 8};
  frame.velocities = {0, 0, 0, 1, 2, 4};
  Bytes file = history_head(plan);
  file.add(history_first_frame(plan, frame));
  write_and_open(file);
  ASSERT_EQ(attach({model}), 0);
  EXPECT_EQ(integer(200155), 8);
  EXPECT_EQ(integer(200083), 8);
  EXPECT_EQ(integer(200156), 4);
  EXPECT_EQ(integer(200157), 4);
  EXPECT_EQ(integer(200135), 4);
  const auto ids = integers(200152, 8).values;
  EXPECT_THAT(integers(200159, 4).values, ElementsAre(8, ids[2], ids[3], ids[4]));
  const auto near = [](const Doubles& numbers) { return Pointwise(DoubleNear(1e-12), numbers); };
  const Doubles moving{3, 6, 8, -3 + 5, -6, 8 + 20, -3, 6 + 10, -8 + 20, 3 + 5, -6 + 10, -8};
  EXPECT_THAT(doubles(200161, 12).values, near(moving));
  EXPECT_THAT(doubles(200170, 3).values, near({3, 6, 8}));
  EXPECT_THAT(doubles(200169, 6).values, near({3, 6, 8, 1, 2, 3})) << "the fixed atom lies as in the model";
  EXPECT_THAT(doubles(200160, 24).values, near({3, 6, 8,  1,      2,  3,      -3 + 5, -6,     8 + 20, -3,    16, 12,
                                                8, 4, -8, -1 + 5, -2, 3 + 20, -1,     2 + 10, 17,     1 + 5, 8,  -3}));
  EXPECT_THAT(doubles(200163, 12).values, near({1, 2, 4, -1, -2, 4, -1, 2, -4, 1, -2, -4}));
  Doubles all{1, 2, 4, 0, 0, 0, -1, -2, 4, -1, 2, -4, 1, -2, -4};
  all.resize(24, 0.0);
  EXPECT_THAT(doubles(200162, 24).values, near(all));
}

TEST_F(History, a_model_that_does_not_fit_is_refused) {
  write_and_open(history_file({}, 1));
  EXPECT_EQ(attach({}), 50015);
  EXPECT_TRUE(core.messages.empty());
  EXPECT_EQ(attach({model({1, 2, 3})}), 50015);
  EXPECT_EQ(attach({1, 2}), 50015);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_112", "PATHSTAT_ERROR_111"));
  EXPECT_EQ(integers(200152, 2).status, 50014);
}

TEST_F(History, what_cannot_be_opened_is_refused_by_its_code) {
  EXPECT_EQ(open("/none/run.his", 2), 50002);
  EXPECT_EQ(open("/none/run.fhis"), 50012);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_106", "PATHSTAT_ERROR_107 \"/none/run.fhis\""));
  Bytes file = history_file({}, 2);
  Bytes other = file;
  other.patch(4, 7);
  EXPECT_EQ(status_of(open_history, RecordReader(other.all())), 50016);
  // The marker of the second frame stands behind the first one.
  other = file;
  other.patch(history_file({}, 1).size() + 4, 2);
  ASSERT_EQ(status_of(open_history, RecordReader(other.all())), 0);
  EXPECT_EQ(status_of(read_history_frame, 2), 50018);
  EXPECT_EQ(status_of(read_history_frame, 1), 0);
  close_history();
}

#ifdef __SANITIZE_ADDRESS__
constexpr bool watched_for_addresses = true;  // which keeps what is freed for a while
#else
constexpr bool watched_for_addresses = false;
#endif

long peak_kilobytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST(HistoryDamage, an_impossible_count_is_refused_before_any_allocation) {
  const auto before = peak_kilobytes();
  for (const auto& version : version_cases) {
    const auto plan = small_plan(version.version);
    const Bytes whole = history_file(plan, 2);
    const auto size = history_file(plan, 1).size();
    for (std::size_t at = 0; at + 4 <= size; at += 4) {
      for (const std::int32_t count : {largest, 1 << 28, 1 << 20, 4, 0, -1}) {
        Bytes damaged = whole;
        damaged.patch(at, count);
        std::int32_t status = -1;
        open_history(RecordReader(damaged.all()), status);
        if (status != 0) continue;
        for (const int frame : {1, 2, 3, 1}) read_history_frame(frame, status);
        ASSERT_EQ(status, 0) << "the first frame of a file that opens, at " << at;
        Doubles vectors(9);
        get_history_vectors(HistoryVectors::velocities, nullptr, vectors, status);
        ASSERT_EQ(status, 0);
      }
    }
  }
  close_history();
  EXPECT_LT(peak_kilobytes() - before, watched_for_addresses ? 400'000 : 20'000);
}

TEST(HistoryDamage, counts_below_one_have_a_code_of_their_own) {
  const auto plan = small_plan(2.9);
  const Bytes whole = history_file(plan, 1);
  // Behind H1 (12 bytes), H2 (96), H3 and H4 (88 each): the counts of the records from H5 on.
  std::size_t at = 12 + 96 + 88 + 88 + 4;
  const std::array<std::size_t, 6> lengths{4 + 24, 4 + 4, 4 + 27, 8 + 8, 4 + 16, 4 + 12};
  for (std::size_t k = 0; k < lengths.size(); ++k) {
    for (const std::int32_t count : {0, -5}) {
      Bytes damaged = whole;
      damaged.patch(at + (k == 3 ? 4 : 0), count);
      EXPECT_EQ(status_of(open_history, RecordReader(damaged.all())), 50017) << "record " << k + 5;
    }
    at += lengths[k] + 8;
  }
}

TEST(HistoryDamage, an_index_of_no_atom_or_a_repeated_one_is_a_read_error) {
  for (const auto& list : {Integers{4, 1}, Integers{0, 1}, Integers{-3, 1}, Integers{2, 2}}) {
    auto plan = small_plan(2.9);
    plan.movable = list;
    Bytes file = history_head(plan);
    EXPECT_EQ(status_of(open_history, RecordReader(file.all())), 50003);
  }
}

}  // namespace
}  // namespace pathstat
