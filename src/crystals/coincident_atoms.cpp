#include "crystals/coincident_atoms.h"

#include <array>

#include "coreapi/messages.h"
#include "crystals/contact_finder.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

std::size_t place_of(std::int32_t number) { return static_cast<std::size_t>(number - 1); }

/// Shows a message the first time only.
class Once {
 public:
  explicit Once(bool report) : report_(report) {}
  template <class... Arguments>
  void show(std::string_view key, const Arguments&... arguments) {
    if (report_) show_message(key, arguments...);
    report_ = false;
  }

 private:
  bool report_;
};

/// The atoms at the positions of points, sought with the tolerance of a frame.
class Contacts {
 public:
  Contacts(const PeriodicFrame& frame, std::span<const double> fractions, std::int32_t& status)
      : frame_(frame),
        fractions_(fractions),
        links_("crystal/contacts", static_cast<std::int64_t>(fractions.size() / 3), status) {
    if (status == 0) kva_initfindcont_(fractions_, frame_.tolerance, links_.span(), status);
  }

  Vector3 fraction(std::int32_t atom) const {
    const auto at = fractions_.subspan(3 * place_of(atom)).first<3>();
    return {at[0], at[1], at[2]};
  }

  /// @param meet  bool(std::int32_t other); false ends the round
  template <class Meet>
  void visit(std::int32_t atom, Meet meet, std::int32_t& status) {
    visit_face_positions(frame_, fraction(atom), [&](const Vector3& point) {
      std::int32_t count = 0;
      kva_findcontact_(fractions_, links_.span(), point, atom, frame_.tolerance, list_, count, 0, status);
      for (const auto other : std::span(list_).first(static_cast<std::size_t>(count))) {
        if (!meet(other)) return false;
      }
      return status == 0;
    });
  }

 private:
  const PeriodicFrame& frame_;
  std::span<const double> fractions_;
  NamedBlock<std::int32_t> links_;
  std::array<std::int32_t, 200> list_{};
};

}  // namespace

void check_trans_dup_(const PeriodicFrame& frame, std::span<const double> fractions, std::span<const std::int32_t> ids,
                      std::span<const std::int32_t> types, std::span<const double> charges,
                      std::span<std::int32_t> links, std::int32_t report, std::int32_t& status) {
  Contacts contacts(frame, fractions, status);
  if (status != 0) return;
  Once over_specified(report == 1), charged(report == 1);
  bool any = false;
  for (std::size_t i = 0; i < links.size() && status == 0; ++i) {
    if (links[i] <= 0) continue;
    contacts.visit(
        static_cast<std::int32_t>(i + 1),
        [&](std::int32_t other) {
          const auto j = place_of(other);
          if (links[j] <= 0 || types[j] != types[i] || ids[j] >= ids[i]) return true;
          links[i] = -other;
          any = true;
          over_specified.show("CrystalOverSpecCell");
          if (charges[i] != 0) charged.show("CrystalWarnCharge");
          if (report == 1) show_message("CrystalTransCopy", ids[i], ids[j]);
          return false;
        },
        status);
  }
  if (any && report == 1) show_message("CrystalRemoveDup");
}

void check_over_spec_(const PeriodicFrame& frame, std::span<const double> fractions, std::int32_t n,
                      std::span<const std::int32_t> ids, std::span<const std::int32_t> types,
                      std::span<std::int32_t> parents, std::span<std::int32_t> links, std::int32_t report,
                      std::int32_t& status) {
  Contacts contacts(frame, fractions, status);
  if (status != 0) return;
  Once over_specified(report == 1), same_type(report == 1);
  bool any = false;
  for (std::int32_t atom = 1; atom <= n && status == 0; ++atom) {
    const auto i = place_of(atom);
    if (links[i] <= 0) continue;
    const std::int32_t own = parents[i];
    contacts.visit(
        atom,
        [&](std::int32_t other) {
          const auto j = place_of(other);
          if (links[j] <= 0 || parents[j] >= own) return true;
          any = true;
          over_specified.show("CrystalOverSpecSymm");
          if (types[j] != types[i]) {
            if (report == 1) show_message("CrystalSymmDiffCopy", ids[i], ids[j]);
            return true;
          }
          same_type.show("CrystalSymmCopy", ids[i], ids[j]);
          const bool has_better = parents[i] > n && parents[place_of(parents[i])] <= parents[j];
          links[i] = 0;
          if (!has_better) parents[i] = other;
          return true;
        },
        status);
  }
  if (any && report == 1) show_message("CrystalRemoveDup");
}

}  // namespace pathstat
