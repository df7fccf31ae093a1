#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "desk/export/exported_frame.h"
#include "desk/export/frame_source.h"

namespace pathstat::desk {

/// Writes frames into a file beside its place, which gets its name when all are in it.
class ExportWriter {
 public:
  ExportWriter() = default;
  virtual ~ExportWriter() = default;
  ExportWriter(const ExportWriter&) = delete;
  ExportWriter& operator=(const ExportWriter&) = delete;

  /// @return what went wrong, or nothing
  virtual std::string write(const ExportedFrame& frame) = 0;
  /// Completes the file. @param last  the frame that was written last
  /// @return what went wrong, or nothing; without a call nothing of the file is left
  virtual std::string finish(const ExportedFrame& last) = 0;
};

/// The formats that can be written, as a sentence has them: ".pdb, .xyz, ...".
std::string export_formats();
/// True for a file that holds one frame alone.
bool holds_one_frame(const std::filesystem::path& path);

struct MadeWriter {
  std::unique_ptr<ExportWriter> writer;
  std::string problem;
};

/// A writer by the extension of the file's name. A binary trajectory (.trj) gets its model beside it (.qfx), and from
/// another binary one all values of its frames.
/// @param source  where the frames come from, or null
MadeWriter make_export_writer(const std::filesystem::path& path, const FrameSource* source);

}  // namespace pathstat::desk
