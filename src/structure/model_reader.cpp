#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include "coreapi/operations.h"
#include "structure/model_file.h"

namespace pathstat {

namespace {

// Blocks grow as far as the file goes on, so that a short file takes little.
constexpr std::size_t first_block_bytes = 1 << 12;
constexpr std::size_t most_block_bytes = 1 << 18;
constexpr std::int32_t severity = 2;

constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }
constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

void show_in_core(std::string_view key, std::initializer_list<ModelFileMessageArgument> arguments) {
  for (const auto& argument : arguments) {
    if (const auto* number = std::get_if<std::int32_t>(&argument)) {
      kvu_msg_argi_(*number);
    } else {
      kvu_msg_args_(std::get<std::string_view>(argument));
    }
  }
  std::int32_t error = 0;
  kvu_msg_display_(severity, key, error);
}

ModelFileMessageSink& messages() {
  static ModelFileMessageSink sink = show_in_core;
  return sink;
}

void report(const QFXio& file, std::string_view key, std::initializer_list<ModelFileMessageArgument> arguments) {
  messages()("FIL_ReadError", {file.line, std::string_view(file.name)});
  messages()(key, arguments);
}

/// Appends the next physical line to the logical line, without its end. False at the end of the file.
bool append_physical_line(QFXio& file) {
  bool found = false;
  while (true) {
    if (file.block_begin == file.block_end) {
      file.block.resize(std::clamp(2 * file.block.size(), first_block_bytes, most_block_bytes));
      file.block_begin = 0;
      file.block_end = std::fread(file.block.data(), 1, file.block.size(), file.stream);
      if (file.block_end == 0) break;
    }
    found = true;
    const char* const begin = file.block.data() + file.block_begin;
    const std::size_t there = file.block_end - file.block_begin;
    const auto* const line_end = static_cast<const char*>(std::memchr(begin, '\n', there));
    const std::size_t used = line_end != nullptr ? static_cast<std::size_t>(line_end - begin) : there;
    file.logical_line.append(begin, used);
    file.block_begin += line_end != nullptr ? used + 1 : used;
    if (line_end != nullptr) break;
  }
  if (found && file.line < INT_MAX) ++file.line;
  return found;
}

/// Takes a carriage return off a physical line that begins at `start`, and the backslash of one that goes on.
bool goes_on(std::string& line, std::size_t start) {
  if (line.size() > start && line.back() == '\r') line.pop_back();
  if (line.size() == start || line.back() != '\\') return false;
  line.pop_back();
  return true;
}

/// Gathers the next logical line. False at the end of the file.
bool next_logical_line(QFXio& file) {
  std::string& line = file.logical_line;
  line.clear();
  if (!append_physical_line(file)) return false;
  bool more = goes_on(line, 0);
  while (more) {
    const std::size_t start = line.size();
    if (!append_physical_line(file)) break;
    more = goes_on(line, start);
    std::size_t text = line.find_first_not_of(' ', start);
    if (text == std::string::npos) text = line.size();
    if (text < line.size() && line[text] == '\\' && (text + 1 == line.size() || line[text + 1] != '"')) ++text;
    line.erase(start, text - start);
  }
  return true;
}

/// Walks over one logical line. Quoted words lose their escapes where they stand.
class LineScanner {
 public:
  explicit LineScanner(std::string& line) : at_(line.data()), end_(line.data() + line.size()) {}

  bool at_end() {
    skip_blanks();
    return at_ == end_;
  }
  bool take(char c) {
    if (at_end() || *at_ != c) return false;
    ++at_;
    return true;
  }
  /// The offending character as a message shows it.
  std::string_view shown() { return at_end() ? std::string_view() : std::string_view(at_, 1); }

  /// A number with white space, or the line's end, behind it.
  bool number(std::int32_t& value) {
    skip_blanks();
    const char* const begin = at_ != end_ && *at_ == '+' ? at_ + 1 : at_;
    const auto [behind, error] = std::from_chars(begin, static_cast<const char*>(end_), value);
    if (error != std::errc{} || (behind != end_ && !is_space(*behind))) return false;
    at_ += behind - at_;
    return true;
  }

  bool word(std::string_view& word) {
    skip_blanks();
    if (at_ != end_ && (*at_ == '"' || *at_ == '\'')) return quoted_word(word);
    const char* const begin = at_;
    while (at_ != end_ && *at_ != ')' && !is_space(*at_)) ++at_;
    word = {begin, static_cast<std::size_t>(at_ - begin)};
    return !word.empty();
  }

  /// The text up to the parenthesis that matches one already taken, which is taken as well. False without a match;
  /// `inner` is then the rest of the line.
  bool enclosed(std::string_view& inner) {
    const char* const begin = at_;
    std::size_t open = 1;
    for (; at_ != end_; ++at_) {
      if (*at_ == '(') ++open;
      if (*at_ == ')' && --open == 0) break;
    }
    inner = {begin, static_cast<std::size_t>(at_ - begin)};
    if (at_ == end_) return false;
    ++at_;
    return true;
  }

 private:
  void skip_blanks() {
    while (at_ != end_ && is_blank(*at_)) ++at_;
  }

  bool quoted_word(std::string_view& word) {
    const char quote = *at_++;
    const char* const begin = at_;
    char* put = at_;
    for (; at_ != end_ && *at_ != quote; ++at_) {
      if (*at_ != '\\') {
        *put++ = *at_;
        continue;
      }
      if (++at_ == end_) return false;
      *put++ = *at_ == 'n' ? '\n' : *at_ == 'b' ? '\b' : *at_;
    }
    if (at_ == end_) return false;
    ++at_;
    word = {begin, static_cast<std::size_t>(put - begin)};
    return true;
  }

  char* at_;
  char* end_;
};

constexpr std::pair<char, std::int32_t> type_of_letter[] = {
    {'C', attribute_text},
    {'D', attribute_double},
    {'F', attribute_float},
    {'I', attribute_int},
    {'O', attribute_reference},
    {'S', attribute_int},
    {'T', 0},
    {'V', attribute_vector},
};

bool scan_type(LineScanner& scan, std::int32_t& type) {
  for (const auto& [letter, code] : type_of_letter) {
    if (!scan.take(letter)) continue;
    type = code;
    return true;
  }
  return false;
}

bool scan_array(QFXio& file, LineScanner& scan, ModelItem& item) {
  const bool matched = scan.enclosed(item.value);
  if (!matched || item.value.empty()) {
    report(file, "FIL_ReadObjOrAttr3",
           {static_cast<std::int32_t>(std::min<std::size_t>(item.value.size(), INT_MAX)), matched ? ")" : "("});
    return false;
  }
  const bool to_array = item.id_or_type >= attribute_int && item.id_or_type <= attribute_double;
  const bool nested = item.id_or_type == attribute_vector && item.value.find('(') != std::string_view::npos;
  if (to_array || nested) item.id_or_type += attribute_int_array - attribute_int;
  return true;
}

/// What follows the A of an attribute.
bool scan_attribute(QFXio& file, LineScanner& scan, ModelItem& item) {
  item.kind = item_attribute;
  if (!scan_type(scan, item.id_or_type)) {
    report(file, "FIL_ReadObjOrAttr2", {scan.shown()});
    return false;
  }
  if (!scan.word(item.name)) return false;
  const bool valued = scan.take('(') ? scan_array(file, scan, item) : scan.word(item.value);
  return valued && scan.take(')') && scan.at_end();
}

/// What follows the id of an object or reference. A line without a label, closed or not, starts an object.
bool scan_object(LineScanner& scan, ModelItem& item) {
  item.kind = item_object;
  if (!scan.word(item.name)) {
    std::puts("Expecting an object type");
    return false;
  }
  if (!scan.word(item.value)) {
    item.value = {};
    return true;
  }
  if (scan.take(')')) item.kind = item_reference;
  return scan.at_end();
}

bool scan_line(QFXio& file, LineScanner& scan, ModelItem& item) {
  if (scan.take(')')) {
    item.kind = item_object_end;
    return scan.at_end();
  }
  if (!scan.take('(')) {
    report(file, "FIL_ReadObjOrAttr1", {scan.shown()});
    return false;
  }
  if (scan.take('A')) return scan_attribute(file, scan, item);
  return scan.number(item.id_or_type) && scan_object(scan, item);
}

/// Copies a text as far as the buffer goes, and ends it.
void copy_terminated(std::string_view text, std::span<char> buffer) {
  if (buffer.empty()) return;
  const std::size_t length = std::min(text.size(), buffer.size() - 1);
  std::copy_n(text.begin(), length, buffer.begin());
  buffer[length] = '\0';
}

}  // namespace

ModelItem next_model_item(QFXio& file) {
  ModelItem item{.kind = item_end_of_file};
  if (!FIL_QFXioIsReading(file)) return item;
  try {
    if (!next_logical_line(file)) return item;
    LineScanner scan(file.logical_line);
    if (scan_line(file, scan, item)) return item;
  } catch (const std::bad_alloc&) {
  }
  return {.kind = item_format_error};
}

std::int32_t FIL_ReadObjOrAttr(QFXio& file, std::int32_t& id_or_type, std::span<char> name, std::vector<char>& value,
                               std::int32_t& kind) {
  const ModelItem item = next_model_item(file);
  kind = item.kind;
  if (kind == item_end_of_file) return 1;
  try {
    if (value.size() < file.logical_line.size() + 1) value = std::vector<char>(file.logical_line.size() + 1);
  } catch (const std::bad_alloc&) {
    kind = item_format_error;
  }
  if (kind == item_format_error) return 0;
  id_or_type = item.id_or_type;
  copy_terminated(item.name, name);
  copy_terminated(item.value, value);
  return 0;
}

void set_model_file_messages(ModelFileMessageSink sink) {
  messages() = sink ? std::move(sink) : ModelFileMessageSink(show_in_core);
}

}  // namespace pathstat
