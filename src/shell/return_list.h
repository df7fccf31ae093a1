#pragma once

#include <string_view>

namespace pathstat {

/// Empties the list that a command returns.
void sch_InitializeReturnList();

/// Appends one item, behind a blank if it is not the first. A text that holds a blank stands between "{" and "}";
/// these two are written with "\" in front inside a text.
void kvZ_AddToReturnList(std::string_view text);
void kvz_addtoreturnlist_(std::string_view text);

/// Sends the list as the command's return text and empties it; an empty list is not sent.
void kvZ_SetReturnFromList();
void kvz_setreturnfromlist_();

}  // namespace pathstat
