#include "trajectory/binary_trajectory.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace pathstat {
namespace {

using namespace binary_status;

constexpr std::int32_t newest_version = 2010;

/// The head and the place of the first frame; the file is open.
bool begin_reading(TrjStruct& trj) {
  if (!read_binary_header(trj.reader, trj.header)) return false;
  const auto& header = trj.header;
  trj.frame = BinaryFrame(FrameLayout(header.version(), header.flags), header.version(), header.movable);
  trj.frame_starts = {trj.reader.position()};
  return true;
}

std::int32_t open_for_reading_as(TrjStruct& trj) {
  if (trj.reader.open(trj.file_name) != RecordStatus::ok) return not_opened;
  return begin_reading(trj) ? 0 : not_opened;
}

std::int32_t open_for_creating(TrjStruct& trj) {
  if (trj.writer.create(trj.file_name) != RecordStatus::ok) return not_opened;
  trj.frame = BinaryFrame(FrameLayout::with_every_record(newest_version), newest_version, 0);
  return 0;
}

std::int32_t open_for_appending(TrjStruct& trj) {
  // A file that is not there has no head; it is not created, so that a failed open leaves nothing behind.
  if (trj.reader.open(trj.file_name) != RecordStatus::ok) return errno == ENOENT ? append_no_header : not_opened;
  if (!begin_reading(trj)) return append_no_header;
  if (trj.header.version() != newest_version) return append_old_version;
  trj.reader = RecordReader();
  if (trj.writer.append(trj.file_name) != RecordStatus::ok) return not_opened;
  trj.frame.set(AtomGroup::positions, {});
  trj.header_written = true;
  return 0;
}

/// Enters a trajectory in the list if `begin` succeeds with it.
template <class Begin>
void open_with(std::int32_t& handle, std::int32_t& status, Begin begin) try {
  handle = 0;
  std::list<TrjStruct> opened(1);
  status = begin(opened.front());
  if (status != 0) return;
  handle = opened.front().handle = kvA_TRJ_NextId++;
  kvA_TRJ_TrjList.splice(kvA_TRJ_TrjList.end(), opened);
} catch (const std::bad_alloc&) {
  status = not_opened;
}

std::int64_t known_frames(const TrjStruct& trj) { return static_cast<std::int64_t>(trj.frame_starts.size()); }

/// Learns where the frame starts by passing the frames before it.
bool locate(TrjStruct& trj, std::int32_t frame) {
  if (frame < 1) return false;
  if (frame > known_frames(trj)) trj.reader.seek(trj.frame_starts.back());
  while (frame > known_frames(trj)) {
    if (trj.frame.pass(trj.reader) != RecordStatus::ok) return false;
    trj.frame_starts.push_back(trj.reader.position());
  }
  return true;
}

std::int32_t read_located(TrjStruct& trj, std::int32_t frame) {
  const auto start = trj.frame_starts[static_cast<std::size_t>(frame - 1)];
  trj.reader.seek(start);
  const auto result = trj.frame.read(trj.reader);
  trj.ended_inside_frame =
      result == RecordStatus::cut || (result == RecordStatus::end && trj.reader.position() != start);
  if (result == RecordStatus::ok) {
    trj.current_frame = frame;
    if (frame == known_frames(trj)) trj.frame_starts.push_back(trj.reader.position());
    return 0;
  }
  if (result != RecordStatus::end && result != RecordStatus::cut) return frame_damaged;
  // The last entry was taken for a frame that does not exist; the start of frame 1 stays known.
  if (trj.frame_starts.size() > 1) trj.frame_starts.pop_back();
  trj.current_frame = 0;
  return end_of_file;
}

std::int32_t write_header(TrjStruct& trj) {
  if (write_binary_header(trj.writer, trj.header) && trj.writer.flush() == RecordStatus::ok) {
    trj.header_written = true;
    return 0;
  }
  trj.writer.roll_back(0);
  return header_not_written;
}

std::int32_t write_frame(TrjStruct& trj) {
  const auto start = trj.writer.position();
  if (trj.frame.write(trj.writer, trj.header.flags) == RecordStatus::ok && trj.writer.flush() == RecordStatus::ok) {
    return 0;
  }
  trj.writer.roll_back(start);
  return frame_not_written;
}

}  // namespace

TrjStruct* binary_trajectory(std::int32_t handle) {
  const auto found = std::ranges::find(kvA_TRJ_TrjList, handle, &TrjStruct::handle);
  return found == kvA_TRJ_TrjList.end() ? nullptr : &*found;
}

void kvA_TRJ_Open(const std::string& name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  switch (mode) {
    case binary_mode::read:
      return kvA_TRJ_OpenRead(name, mode, handle, status);
    case binary_mode::create:
    case binary_mode::append:
      return kvA_TRJ_OpenWrite(name, mode, handle, status);
    default:
      handle = 0;
      status = bad_mode;
  }
}

void kvA_TRJ_OpenRead(const std::string& name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  open_with(handle, status, [&](TrjStruct& trj) {
    if (mode != binary_mode::read) return bad_mode;
    trj.mode = mode;
    trj.file_name = name;
    return open_for_reading_as(trj);
  });
}

void kvA_TRJ_OpenWrite(const std::string& name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  open_with(handle, status, [&](TrjStruct& trj) {
    if (mode != binary_mode::create && mode != binary_mode::append) return bad_mode;
    trj.mode = mode;
    trj.file_name = name;
    return mode == binary_mode::create ? open_for_creating(trj) : open_for_appending(trj);
  });
}

void open_binary_trajectory(std::span<const std::byte> content, std::int32_t& handle, std::int32_t& status) {
  open_with(handle, status, [&](TrjStruct& trj) {
    trj.mode = binary_mode::read;
    trj.reader = RecordReader(content);
    return begin_reading(trj) ? 0 : not_opened;
  });
}

void kvA_TRJ_Close(std::int32_t handle, std::int32_t& status) {
  TrjStruct* trj = binary_trajectory(handle);
  status = trj == nullptr ? no_such_handle : 0;
  if (status != 0) return;
  if (trj->writer.close() != RecordStatus::ok) status = frame_not_written;
  kvA_TRJ_TrjList.remove_if([&](const TrjStruct& open) { return open.handle == handle; });
}

void kvA_TRJ_ReadFrame(std::int32_t handle, std::int32_t frame, std::int32_t& status) try {
  TrjStruct* trj = binary_trajectory(handle);
  if (trj == nullptr) {
    status = no_such_handle;
  } else if (trj->mode != binary_mode::read) {
    status = not_for_reading;
  } else if (frame >= 1 && frame == trj->current_frame) {
    status = 0;
  } else {
    status = locate(*trj, frame) ? read_located(*trj, frame) : frame_not_located;
  }
} catch (const std::bad_alloc&) {
  status = frame_not_located;
}

void kvA_TRJ_WriteFrame(std::int32_t handle, std::int32_t& status) try {
  TrjStruct* trj = binary_trajectory(handle);
  status = trj == nullptr ? no_such_handle : trj->mode == binary_mode::read ? frame_not_written : 0;
  if (status == 0 && !trj->header_written) status = write_header(*trj);
  if (status == 0) status = write_frame(*trj);
} catch (const std::bad_alloc&) {
  status = frame_not_written;
}

}  // namespace pathstat
