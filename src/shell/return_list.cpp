#include "shell/return_list.h"

#include <string>
#include <utility>

#include "shell/argument_host.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

std::string return_list;

}  // namespace

void sch_InitializeReturnList() { return_list.clear(); }

void kvZ_AddToReturnList(std::string_view text) {
  if (!return_list.empty()) return_list += ' ';
  const bool in_braces = text.find(' ') != text.npos;
  if (in_braces) return_list += '{';
  for (const char letter : text) {
    if (letter == '{' || letter == '}') return_list += '\\';
    return_list += letter;
  }
  if (in_braces) return_list += '}';
}
void kvz_addtoreturnlist_(std::string_view text) { kvZ_AddToReturnList(trimmed(text)); }

void kvZ_SetReturnFromList() {
  // Emptied first: while the text goes out, a nested command may start a list of its own.
  const std::string sent = std::exchange(return_list, {});
  if (!sent.empty()) argument_host().set_return(sent);
}
void kvz_setreturnfromlist_() { kvZ_SetReturnFromList(); }

}  // namespace pathstat
