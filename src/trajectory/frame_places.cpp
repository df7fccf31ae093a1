#include "trajectory/frame_places.h"

#include <algorithm>
#include <cstddef>

#include "coreapi/operations.h"
#include "support/identifier_index.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {

FramePlaces::FramePlaces(const OpenTrajectory& trajectory, std::span<const std::int32_t> atoms,
                         std::span<std::int32_t> places, const FramePlaceLabels& labels, std::int32_t& status) {
  trj_ivalue_(trajectory.handle(), trajectory_key::movable_atoms, moved_, status);
  if (status == 0 && moved_ < 0) status = 1;
  if (status != 0) return;
  const NamedBlock<std::int32_t> moved_ids(labels.moved_ids, moved_, status);
  if (status != 0) return;
  std::int32_t count = 0;
  if (moved_ > 0) trj_ivalue_(trajectory.handle(), trajectory_key::movable_ids, moved_ids.span(), count, status);
  if (status != 0) return;
  const IdentifierIndex in_frame(moved_ids.span(), status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> ids(labels.ids, std::ssize(atoms), status);
  if (status == 0) fixed_ = NamedBlock<std::int32_t>(labels.fixed, std::ssize(atoms), status);
  if (status != 0 || atoms.empty()) return;

  std::int32_t error = 0;
  kvd_id_(atoms, ids.span(), error);
  if (error != 0) status = 1;
  std::int32_t behind = 0;
  for (std::size_t k = 0; k < atoms.size(); ++k) {
    const std::int32_t place = in_frame.find(ids.span()[k]);
    places[k] = place >= 0 ? place : moved_ + behind;
    if (place < 0) fixed_.span()[static_cast<std::size_t>(behind++)] = atoms[k];
  }
  if (status == 0) fixed_.resize(behind, status);
  if (status == 0) check_fixed(labels.movable, status);
}

void FramePlaces::check_fixed(std::string_view label, std::int32_t& status) {
  if (fixed_.size() == 0) return;
  const NamedBlock<std::int32_t> movable(label, std::ssize(fixed_.span()), status);
  if (status != 0) return;
  std::int32_t error = 0;
  kvd_ismovable_(fixed_.span(), movable.span(), error);
  if (error != 0) status = 1;
  lacks_movable_ = std::ranges::any_of(movable.span(), [](std::int32_t flag) { return flag != 0; });
}

void FramePlaces::place_fixed(std::span<double> xyz, std::int32_t& status) const {
  if (fixed_.size() == 0) return;
  std::int32_t error = 0;
  kvd_xyz_(fixed_.span(), xyz.subspan(3 * static_cast<std::size_t>(moved_), 3 * fixed_.size()), error);
  if (error != 0) status = 1;
}

}  // namespace pathstat
