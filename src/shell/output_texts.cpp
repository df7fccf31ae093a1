#include "shell/output_texts.h"

#include <algorithm>
#include <string>
#include <utility>

#include "support/text_field.h"

namespace pathstat {
namespace {

/// One of the two texts that answer a request.
class OutputText {
 public:
  void attach(std::span<char> block) {
    *this = OutputText();
    block_ = block;
    if (!block_.empty()) block_.front() = '\0';
  }

  std::int64_t length() const { return length_; }

  void define(std::string_view text) {
    if (block_.empty()) return;
    if (!first_) append(std::string_view(&definition_separator, 1));
    first_ = false;
    append(text);
  }

  void add_to_list(std::string_view text) {
    if (!list_.empty()) list_ += ',';
    for (const char letter : text) {
      if (letter == ',') list_ += '\\';
      list_ += letter;
    }
  }

  void define_from_list() {
    define(list_);
    list_.clear();
  }

 private:
  void append(std::string_view text) {
    const std::size_t used = std::min(static_cast<std::size_t>(length_), block_.size() - 1);
    const std::size_t fitting = std::min(text.size(), block_.size() - 1 - used);
    std::copy_n(text.begin(), fitting, block_.begin() + static_cast<std::ptrdiff_t>(used));
    block_[used + fitting] = '\0';
    length_ += static_cast<std::int64_t>(text.size());
  }

  std::span<char> block_;
  std::int64_t length_ = 0;
  bool first_ = true;
  std::string list_;
};

OutputText value_text;
OutputText range_text;

}  // namespace

struct OutputTextsAside::Texts {
  OutputText value = value_text;
  OutputText range = range_text;
};

OutputTextsAside::OutputTextsAside() : kept_(std::make_unique<Texts>()) {}

OutputTextsAside::~OutputTextsAside() {
  value_text = std::move(kept_->value);
  range_text = std::move(kept_->range);
}

void sch_RegisterOutputStrings(std::span<char> value, std::span<char> range) {
  value_text.attach(value);
  range_text.attach(range);
}

void sch_GetFillLengths(std::int64_t& value, std::int64_t& range) {
  value = value_text.length();
  range = range_text.length();
}

void kvZ_DefineValue(std::string_view text) { value_text.define(text); }
void kvZ_DefineRange(std::string_view text) { range_text.define(text); }
void kvz_definevalue_(std::string_view text) { kvZ_DefineValue(text); }
void kvz_definerange_(std::string_view text) { kvZ_DefineRange(text); }

void kvZ_AddToValueList(std::string_view text) { value_text.add_to_list(text); }
void kvZ_AddToRangeList(std::string_view text) { range_text.add_to_list(text); }
void kvz_addtovaluelist_(std::string_view text) { kvZ_AddToValueList(trimmed(text)); }
void kvz_addtorangelist_(std::string_view text) { kvZ_AddToRangeList(trimmed(text)); }

void kvZ_DefineValueFromList() { value_text.define_from_list(); }
void kvZ_DefineRangeFromList() { range_text.define_from_list(); }
void kvz_definevaluefromlist_() { kvZ_DefineValueFromList(); }
void kvz_definerangefromlist_() { kvZ_DefineRangeFromList(); }

}  // namespace pathstat
