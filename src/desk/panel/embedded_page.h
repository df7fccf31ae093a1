#pragma once

#include <span>
#include <string_view>

namespace pathstat::desk {

/// One file of the page, as the build has put it into this program.
struct EmbeddedFile {
  std::string_view path;  ///< begins with a /
  std::string_view bytes;
};

std::span<const EmbeddedFile> embedded_page();

}  // namespace pathstat::desk
