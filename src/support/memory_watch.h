#pragma once

namespace pathstat {

/// From here on each `new` that finds no memory is remembered, whatever becomes of its std::bad_alloc: code that goes
/// on with less must not pass for code that has had all it asked for.
void watch_memory();

/// Remembers that memory was wanting where no `new` has asked for it.
void note_memory_shortage();

/// True if a `new` has found no memory, or a shortage was noted, since the last question.
bool take_memory_shortage();

}  // namespace pathstat
