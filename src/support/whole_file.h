#pragma once

#include <functional>
#include <string>

#include "support/record_file.h"

namespace pathstat {

/// Writes a file of records beside its place and moves it there once it is whole: what stood there before is there
/// until then, and stays if anything fails.
/// @param fill  writes the records; where it finds no memory the file is given up
RecordStatus write_whole_file(const std::string& path, const std::function<RecordStatus(RecordWriter&)>& fill);

}  // namespace pathstat
