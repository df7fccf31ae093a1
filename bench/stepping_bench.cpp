// Stepping through a run of 10,000 atoms with the whole of both programs: the analysis process reads a frame, pathdesk
// takes its coordinates into the model, and the panel asks for its values.
#include <benchmark/benchmark.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include "desk/graphs/plot_operations.h"
#include "desk/link/core_session.h"
#include "desk/link/work_directory.h"
#include "desk/model/data_model.h"
#include "desk/ops/model_operations.h"
#include "desk/ops/user_interface.h"
#include "trajectory/binary_trajectory.h"

namespace {

using namespace pathstat;
using namespace pathstat::desk;

constexpr std::int32_t atoms = 10'000;
constexpr std::int32_t frames = 200;

/// Atoms on a lattice, each frame moved a little.
std::vector<double> coordinates(std::int32_t frame) {
  std::vector<double> xyz;
  const auto edge = static_cast<std::int32_t>(std::ceil(std::cbrt(static_cast<double>(atoms))));
  for (std::int32_t k = 0; k < atoms; ++k) {
    for (const auto place : {k % edge, k / edge % edge, k / edge / edge}) xyz.push_back(3.0 * place + 0.001 * frame);
  }
  return xyz;
}

void write_model(const std::filesystem::path& path) {
  std::ofstream file(path);
  const auto column = [&](const char* head, auto cell) {
    file << " (A " << head << " (";
    for (std::int32_t k = 0; k < atoms; ++k) cell(k);
    file << "))\n";
  };
  const auto xyz = coordinates(1);
  file << "(1 Model lattice\n (A I PeriodicType 0)\n";
  column("I AtomId", [&](std::int32_t k) { file << k + 1 << ' '; });
  column("C Element", [&](std::int32_t) { file << "Ar "; });
  column("V XYZ", [&](std::int32_t k) {
    const auto* at = &xyz[3 * static_cast<std::size_t>(k)];
    file << '(' << at[0] << ' ' << at[1] << ' ' << at[2] << ") ";
  });
  file << ")\n";
}

void write_trajectory(const std::string& path) {
  std::int32_t handle = 0, status = 0;
  kvA_TRJ_Open(path, binary_mode::create, handle, status);
  constexpr std::array<std::string_view, 1> kind{"MDTR"};
  kvA_TRJ_SetValueChar(handle, 4001, kind, status);
  constexpr std::int32_t directions = 0;
  std::vector<std::int32_t> ids(static_cast<std::size_t>(atoms));
  std::iota(ids.begin(), ids.end(), 1);
  kvA_TRJ_SetValueInt(handle, 2020, {&atoms, 1}, status);
  kvA_TRJ_SetValueInt(handle, 2018, {&directions, 1}, status);
  kvA_TRJ_SetValueInt(handle, 2008, ids, status);
  for (std::int32_t frame = 1; frame <= frames; ++frame) {
    const double time_ps = 0.1 * frame;
    kvA_TRJ_SetValueDouble(handle, 1000, {&time_ps, 1}, status);
    kvA_TRJ_SetValueDouble(handle, 1071, coordinates(frame), status);
    kvA_TRJ_WriteFrame(handle, status);
  }
  kvA_TRJ_Close(handle, status);
}

/// Processor time that a process has used, in microseconds.
double processor_us(clockid_t clock) {
  timespec used{};
  clock_gettime(clock, &used);
  return 1e6 * static_cast<double>(used.tv_sec) + 1e-3 * static_cast<double>(used.tv_nsec);
}

double now_us() {
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + std::ssize(values) / 2;
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Both programs with the run loaded, and the button held.
class SteppedRun {
 public:
  explicit SteppedRun(benchmark::State& state) {
    register_data_model_operations(server_, model_);
    register_analysis_operations(server_, model_);
    register_interface_operations(server_, ui_);
    register_plot_operations(server_, graphs_);
    const auto work = directory_.path() / "work";
    std::filesystem::create_directories(work);
    model_.set_folder(work);
    trajectory_ = directory_.path() / "run.trj";
    write_trajectory(trajectory_);
    write_model(directory_.path() / "run.qfx");
    const auto trouble = session.start({PATHSTAT_PROGRAM, work, directory_.path(), Protocol::unix_socket});
    ready = trouble.empty() && session.command("TRAJECTORY", trajectory_) == 0 &&
            session.command("FRAME_STEPPING_MODE", "\"LOOP AT END\"") == 0 && step("START") == 0;
    if (!ready) state.SkipWithError("the run cannot be stepped");
  }
  ~SteppedRun() { session.finish(); }
  SteppedRun(const SteppedRun&) = delete;

  std::int32_t step(const char* phase) { return session.command("FRAME_STEP_FORWARDS", phase).value_or(1); }

  /// The median time that reading the coordinates of a frame takes by itself.
  double reading_us() const {
    std::int32_t handle = 0, status = 0, count = 0;
    std::vector<double> xyz(3 * static_cast<std::size_t>(atoms)), times;
    kvA_TRJ_Open(trajectory_, binary_mode::read, handle, status);
    for (std::int32_t frame = 1; frame <= frames && status == 0; ++frame) {
      const auto start = now_us();
      kvA_TRJ_ReadFrame(handle, frame, status);
      kvA_TRJ_ValueDouble(handle, 1071, xyz, count, status);
      times.push_back(now_us() - start);
    }
    kvA_TRJ_Close(handle, status);
    return median(times);
  }

  /// The median time that pathdesk takes to put the coordinates of a frame on its model, once they are there.
  double applying_us() {
    const auto* shown = model_.model(model_.current_model());
    std::vector<std::int32_t> objects;
    for (std::int32_t k = 0; k < atoms; ++k) objects.push_back(shown->atom_id(static_cast<std::size_t>(k)));
    std::vector<double> times;
    for (std::int32_t frame = 1; frame <= frames; ++frame) {
      const OperationCall call{*find_operation("kvD_SetXYZ"), {atoms, objects, coordinates(frame)}};
      const auto start = now_us();
      benchmark::DoNotOptimize(server_.serve(call));
      times.push_back(now_us() - start);
    }
    return median(times);
  }

  bool ready = false;

 private:
  std::string problem_;
  PrivateDirectory directory_{problem_};
  std::string trajectory_;
  DataModel model_;
  GraphStore graphs_;
  OperationServer server_;
  const std::array<std::string, 4> panel_{"CURRENT_FRAME_NUMBER", "CURRENT_FRAME_TIME", "FRAME_STEP_FORWARDS",
                                          "FRAME_STEP_BACKWARDS"};
  InterfaceEvents events() {
    InterfaceEvents all;
    all.values_changed = [this](const std::string&) { benchmark::DoNotOptimize(session.request(panel_)); };
    return all;
  }
  UserInterface ui_{events()};

 public:
  CoreSession session{server_, [](std::string_view) {}, [] { return false; }};
};

/// The time of a step, split in reading the frame, putting it on the model, and the wire with all else between the two.
/// Beside them the processor time of each program, which overlap.
void step_through_frames(benchmark::State& state) {
  SteppedRun run(state);
  if (!run.ready) return;
  clockid_t process_clock{};
  clock_getcpuclockid(run.session.process_id(), &process_clock);
  std::vector<double> all, process, desk;
  for (auto _ : state) {
    const auto process_before = processor_us(process_clock), desk_before = processor_us(CLOCK_THREAD_CPUTIME_ID);
    const auto start = now_us();
    if (run.step("HOLD") != 0) return state.SkipWithError("a step failed");
    all.push_back(now_us() - start);
    desk.push_back(processor_us(CLOCK_THREAD_CPUTIME_ID) - desk_before);
    process.push_back(processor_us(process_clock) - process_before);
  }
  const double step = median(all), read = run.reading_us(), apply = run.applying_us();
  state.counters["median_us"] = step;
  state.counters["read_us"] = read;
  state.counters["pathdesk_us"] = apply;
  state.counters["wire_us"] = step - read - apply;
  state.counters["processor_us_pathstat"] = median(process);
  state.counters["processor_us_pathdesk"] = median(desk);
}
BENCHMARK(step_through_frames)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
