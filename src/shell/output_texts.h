#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace pathstat {

/// Byte between the texts of several definitions.
constexpr char definition_separator = 0x11;

/// Says where the value text and the range text of a request go. Each is kept terminated, and cut to its block's size
/// less one. An empty block leaves its text out.
void sch_RegisterOutputStrings(std::span<char> value, std::span<char> range);

/// The lengths that the texts would need, which may be more than their blocks hold.
void sch_GetFillLengths(std::int64_t& value, std::int64_t& range);

/// Puts both texts aside while it lives: a request that is served in the middle of another one registers texts of its
/// own, and the outer one then goes on where it was.
class OutputTextsAside {
 public:
  OutputTextsAside();
  ~OutputTextsAside();
  OutputTextsAside(const OutputTextsAside&) = delete;
  OutputTextsAside& operator=(const OutputTextsAside&) = delete;

 private:
  struct Texts;
  std::unique_ptr<Texts> kept_;
};

/// Appends one item. The twins take a field with all its blanks.
void kvZ_DefineValue(std::string_view text);
void kvZ_DefineRange(std::string_view text);
void kvz_definevalue_(std::string_view text);
void kvz_definerange_(std::string_view text);

/// Collects list items, with "," between them and "\," for a comma inside; ...FromList then defines one item of them
/// and starts a new list. The twins drop trailing blanks.
void kvZ_AddToValueList(std::string_view text);
void kvZ_AddToRangeList(std::string_view text);
void kvz_addtovaluelist_(std::string_view text);
void kvz_addtorangelist_(std::string_view text);
void kvZ_DefineValueFromList();
void kvZ_DefineRangeFromList();
void kvz_definevaluefromlist_();
void kvz_definerangefromlist_();

}  // namespace pathstat
