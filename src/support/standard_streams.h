#pragma once

namespace pathstat {

/// Opens those of the standard streams that are closed, on nothing: a file that is opened later never takes their
/// place, and what is printed never goes into it.
void open_standard_streams();

}  // namespace pathstat
