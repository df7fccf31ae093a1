#include "desk/export/export_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "desk/export/text_formats.h"
#include "desk/model/model_export.h"
#include "desk/model/part_file.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

struct TextFormat {
  std::string_view extension;
  bool one_frame;
  std::string (*add)(const ExportedFrame& frame, std::string& text);
  void (*end)(const ExportedFrame& last, std::string& text);
};

constexpr auto no_end = [](const ExportedFrame&, std::string&) {};

constexpr std::array text_formats{
    TextFormat{".pdb", false, add_pdb, end_pdb}, TextFormat{".xyz", false, add_xyz, no_end},
    TextFormat{".gro", false, add_gro, no_end}, TextFormat{".cif", true, add_cif, no_end}};
constexpr std::string_view binary_extension = ".trj";

const TextFormat* text_format(const fs::path& path) {
  const auto extension = path.extension().string();
  const auto* found = std::find_if(text_formats.begin(), text_formats.end(),
                                   [&](const TextFormat& row) { return row.extension == extension; });
  return found == text_formats.end() ? nullptr : found;
}

class TextWriter : public ExportWriter {
 public:
  TextWriter(std::unique_ptr<PartFile> file, const TextFormat& format)
      : file_(std::move(file)), format_(format), stream_(std::fopen(file_->part().c_str(), "wbe")) {}
  ~TextWriter() override {
    if (stream_) std::fclose(stream_);
  }

  std::string write(const ExportedFrame& frame) override {
    text_.clear();
    if (stream_) {
      if (auto problem = format_.add(frame, text_); !problem.empty()) return problem;
    }
    return put();
  }

  std::string finish(const ExportedFrame& last) override {
    text_.clear();
    format_.end(last, text_);
    if (auto problem = put(); !problem.empty()) return problem;
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    return closed ? file_->keep() : trouble();
  }

 private:
  std::string put() {
    return stream_ && std::fwrite(text_.data(), 1, text_.size(), stream_) == text_.size() ? std::string{} : trouble();
  }
  std::string trouble() const {
    return fmt::format("{} cannot be written: {}", file_->path().string(), std::strerror(errno));
  }

  std::unique_ptr<PartFile> file_;
  const TextFormat& format_;
  std::FILE* stream_;
  std::string text_;
};

/// Values of the head and of frames that go from one binary trajectory into another, by their keys.
struct KeyRange {
  std::int32_t first, last;
};
constexpr KeyRange line_keys{4001, 4003}, run_flags{3001, 3007}, frame_integers{2011, 2016}, frame_numbers{1000, 1102};
constexpr KeyRange coordinates{1071, 1073};

class BinaryWriter : public ExportWriter {
 public:
  BinaryWriter(std::unique_ptr<PartFile> file, const FrameSource* source)
      : file_(std::move(file)), model_path_(fs::path(file_->path()).replace_extension(".qfx")), source_(source) {
    kvA_TRJ_Open(file_->part().string(), binary_mode::create, handle_, status_);
  }
  ~BinaryWriter() override {
    std::int32_t ignored = 0;
    if (handle_ != 0) kvA_TRJ_Close(handle_, ignored);
  }

  std::string write(const ExportedFrame& frame) override {
    if (status_ == 0 && frame.number == 1) set_head(frame);
    if (status_ == 0) set_frame(frame);
    if (status_ == 0) kvA_TRJ_WriteFrame(handle_, status_);
    return status_ == 0 ? std::string{} : trouble();
  }

  std::string finish(const ExportedFrame& last) override {
    kvA_TRJ_Close(handle_, status_);
    handle_ = 0;
    if (status_ != 0) return trouble();
    auto problem = write_model_file(last.model, model_path_.string());
    return problem.empty() ? file_->keep() : problem;
  }

 private:
  std::int32_t from() const { return source_ ? source_->binary_handle() : 0; }
  std::string trouble() const {
    return fmt::format("{} cannot be written (status {})", file_->path().string(), status_);
  }

  void set_integers(std::int32_t key, const std::vector<std::int32_t>& values) {
    if (status_ == 0) kvA_TRJ_SetValueInt(handle_, key, values, status_);
  }
  void set_doubles(std::int32_t key, std::span<const double> values) {
    if (status_ == 0) kvA_TRJ_SetValueDouble(handle_, key, values, status_);
  }

  void set_head(const ExportedFrame& frame) {
    const auto& model = frame.model;
    if (from() != 0) {
      copy_lines();
      copy_flags();
    } else {
      const std::array<std::string_view, 1> magic{"MDTR"};
      kvA_TRJ_SetValueChar(handle_, line_keys.first, magic, status_);
    }
    set_integers(2020, {static_cast<std::int32_t>(model.atoms())});
    set_integers(2018, {periodic_directions(model.periodic_type)});
    for (std::uint32_t k = 0; k < model.atoms(); ++k) {
      if (model.movable[k]) moving_.push_back(k);
    }
    if (moving_.empty()) {
      for (std::uint32_t k = 0; k < model.atoms(); ++k) moving_.push_back(k);
    }
    std::vector<std::int32_t> ids;
    for (const auto place : moving_) ids.push_back(model.ids[place]);
    set_integers(2008, ids);
  }

  void copy_lines() {
    const auto& head = binary_trajectory(from())->header;
    const std::array<std::string_view, 1> magic{head.magic};
    kvA_TRJ_SetValueChar(handle_, line_keys.first, magic, status_);
    for (const auto& [key, lines] : {std::pair{line_keys.first + 1, &head.titles}, {line_keys.last, &head.comments}}) {
      const std::vector<std::string_view> views(lines->begin(), lines->end());
      if (status_ == 0 && !views.empty()) kvA_TRJ_SetValueChar(handle_, key, views, status_);
    }
  }

  void copy_flags() {
    std::int32_t count = 0;
    for (auto key = run_flags.first; key <= run_flags.last && status_ == 0; ++key) {
      Logical flag = false;
      kvA_TRJ_ValueLogical(from(), key, std::span(&flag, 1), count, status_);
      if (status_ == 0) kvA_TRJ_SetValueLogical(handle_, key, std::span(&flag, 1), status_);
    }
  }

  void set_frame(const ExportedFrame& frame) {
    if (from() != 0) copy_values();
    if (frame.time) set_doubles(frame_numbers.first, std::span(&*frame.time, 1));
    const auto& [a, b, c] = frame.model.cell;
    // The one orientation of cells in these files: c on z, b in the yz plane.
    if (from() == 0 && frame.model.periodic_type != not_periodic)
      set_doubles(1058, std::array{a[0], b[1], c[2], b[2], a[2], a[1]});
    set_vectors(coordinates.first, frame.model.positions);
    const auto velocities = frame.model.vectors.find(velocity_name);
    if (velocities != frame.model.vectors.end()) set_vectors(coordinates.first + 1, velocities->second);
  }

  /// All numbers of the source's frame that its file has.
  void copy_values() {
    std::array<double, 6> values{};
    for (auto key = frame_numbers.first; key <= frame_numbers.last; ++key) {
      std::int32_t count = 0, status = 0;
      if (key >= coordinates.first && key <= coordinates.last) continue;
      kvA_TRJ_ValueDouble(from(), key, values, count, status);
      if (status == 0)
        kvA_TRJ_SetValueDouble(handle_, key, std::span(values).first(static_cast<std::size_t>(count)), status);
    }
    for (auto key = frame_integers.first; key <= frame_integers.last; ++key) {
      std::int32_t value = 0, count = 0, status = 0;
      kvA_TRJ_ValueInt(from(), key, std::span(&value, 1), count, status);
      if (status == 0) kvA_TRJ_SetValueInt(handle_, key, std::span(&value, 1), status);
    }
  }

  void set_vectors(std::int32_t key, const std::vector<Vector3>& vectors) {
    std::vector<double> numbers;
    numbers.reserve(3 * moving_.size());
    for (const auto place : moving_) numbers.insert(numbers.end(), vectors[place].begin(), vectors[place].end());
    set_doubles(key, numbers);
  }

  std::unique_ptr<PartFile> file_;
  fs::path model_path_;
  const FrameSource* source_;
  std::int32_t handle_ = 0;
  std::int32_t status_ = 0;
  std::vector<std::uint32_t> moving_;
};

}  // namespace

std::string export_formats() {
  std::string text;
  for (const auto& format : text_formats) text += fmt::format("{}, ", format.extension);
  return text + std::string(binary_extension);
}

bool holds_one_frame(const fs::path& path) {
  const auto* format = text_format(path);
  return format && format->one_frame;
}

MadeWriter make_export_writer(const fs::path& path, const FrameSource* source) {
  const auto* format = text_format(path);
  if (!format && path.extension() != binary_extension) {
    return {nullptr,
            fmt::format("{} is of no format that can be written; these are: {}", path.string(), export_formats())};
  }
  auto file = std::make_unique<PartFile>(path);
  if (auto problem = file->make(); !problem.empty()) return {nullptr, std::move(problem)};
  if (format) return {std::make_unique<TextWriter>(std::move(file), *format), {}};
  return {std::make_unique<BinaryWriter>(std::move(file), source), {}};
}

}  // namespace pathstat::desk
