#include <algorithm>
#include <new>

#include "structure/model_file.h"
#include "structure/model_numbers.h"

namespace pathstat {

namespace {

constexpr std::string_view type_letters = " IOFDVIOFDVC";
constexpr std::int32_t fold_column = 78;
constexpr std::size_t flush_bytes = 1 << 16;

constexpr bool is_array_type(std::int32_t type) {
  return type >= attribute_int_array && type <= attribute_vector_array;
}

/// Text on its way to a handle's stream, in pieces that stay small.
class Output {
 public:
  explicit Output(QFXio& file) : file_(file) {}

  std::string& text() { return text_; }
  void flush_if_full() {
    if (text_.size() >= flush_bytes) flush();
  }
  /// @return 0, or 1 if anything could not be written
  std::int32_t flush() {
    if (std::fwrite(text_.data(), 1, text_.size(), file_.stream) != text_.size()) failed_ = true;
    text_.clear();
    return failed_ ? 1 : 0;
  }

 private:
  QFXio& file_;
  std::string text_;
  bool failed_ = false;
};

void append_object(std::string& text, const QFXio& file, std::int32_t id, std::string_view class_name,
                   std::string_view label) {
  text.append(static_cast<std::size_t>(file.depth), ' ').push_back('(');
  append_number(text, id);
  text.append(1, ' ').append(class_name);
  if (!label.empty()) text.append(1, ' ').append(label);
}

std::int32_t append_head(std::string& text, const QFXio& file, std::string_view name, std::int32_t type,
                         bool& is_array) {
  is_array = is_array_type(type);
  const bool quoted = name.find(' ') != std::string_view::npos;
  text.append(static_cast<std::size_t>(file.depth), ' ').append("(A ");
  text.append(1, type_letters[static_cast<std::size_t>(type)]).append(1, ' ');
  text.append(quoted ? "\"" : "").append(name).append(quoted ? "\" " : " ");
  if (is_array) text.push_back('(');
  return file.depth + 4 + static_cast<std::int32_t>(name.size()) + (quoted ? 3 : 1) + (is_array ? 1 : 0);
}

bool can_start(const QFXio& file, std::int32_t type) {
  return FIL_QFXioIsWriting(file) && type >= attribute_int && type <= attribute_text;
}

void append_tail(std::string& text, bool is_array) { text.append(is_array ? "))\n" : ")\n"); }

void append_value(std::string& text, const std::string& value) { text.append(value); }
template <class Number>
void append_value(std::string& text, Number value) {
  append_number(text, value);
}

/// Values with one blank between them.
template <class Value>
void append_values(Output& out, std::span<const Value> values) {
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (k > 0) out.text().push_back(' ');
    append_value(out.text(), values[k]);
    out.flush_if_full();
  }
}

void append_vectors(Output& out, std::span<const double> values) {
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (k % 3 == 0) out.text().append(k > 0 ? " (" : "(");
    append_number(out.text(), values[k]);
    out.text().push_back(k % 3 == 2 ? ')' : ' ');
    out.flush_if_full();
  }
}

/// Which of the alternatives of AttributeValues holds the values of a scalar type.
constexpr std::size_t alternative_of(std::int32_t type) {
  switch (type) {
    case attribute_int:
    case attribute_reference:
      return 0;
    case attribute_float:
      return 1;
    case attribute_text:
      return 3;
    default:
      return 2;
  }
}

constexpr std::int32_t scalar_of(std::int32_t type) { return is_array_type(type) ? type - 5 : type; }

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 16);
  for (const char c : text) {
    if (c == '\n' || c == '\b' || c == '"' || c == '\\') result.push_back('\\');
    result.push_back(c == '\n' ? 'n' : c == '\b' ? 'b' : c);
  }
  return result;
}

/// Where a piece of at most `budget` characters ends: behind its last blank, or at the budget.
std::size_t piece_length(std::string_view rest, std::size_t budget) {
  const auto blank = rest.substr(0, budget).rfind(' ');
  return blank == std::string_view::npos ? budget : blank + 1;
}

/// The reader takes leading blanks off a continuation, and then a backslash unless a double quote follows it. Text
/// that begins with what would be lost gets a backslash for that place in front of it.
bool needs_guard(std::string_view rest, bool quoted) {
  if (rest.front() == ' ') return true;
  const bool before_quote = rest.size() > 1 ? rest[1] == '"' : quoted;
  return rest.front() == '\\' && !before_quote;
}

void append_folded(Output& out, std::string_view rest, std::int32_t first_budget, std::int32_t depth, bool quoted) {
  auto budget = static_cast<std::size_t>(std::max(first_budget, 0));
  while (rest.size() > budget) {
    const std::size_t length = piece_length(rest, budget);
    out.text().append(rest.substr(0, length)).append("\\\n").append(static_cast<std::size_t>(depth) + 1, ' ');
    rest.remove_prefix(length);
    const bool guard = needs_guard(rest, quoted);
    if (guard) out.text().push_back('\\');
    // Two at least, however deep the objects: one would part a backslash from the quote behind it for ever.
    budget = static_cast<std::size_t>(std::max(fold_column - 1 - depth - (guard ? 1 : 0), 2));
    out.flush_if_full();
  }
  out.text().append(rest);
}

/// Runs a writing step on an open handle; without memory it fails as a full disk does.
template <class Step>
std::int32_t written(Step step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    return 1;
  }
}

}  // namespace

std::int32_t FIL_PushObject(QFXio& file, std::int32_t id, std::string_view class_name, std::string_view label) {
  if (!FIL_QFXioIsWriting(file)) return 1;
  return written([&] {
    Output out(file);
    append_object(out.text(), file, id, class_name, label);
    out.text().push_back('\n');
    ++file.depth;
    return out.flush();
  });
}

std::int32_t FIL_PopObject(QFXio& file) {
  if (!FIL_QFXioIsWriting(file) || file.depth < 1) return 1;
  return written([&] {
    Output out(file);
    out.text().append(static_cast<std::size_t>(file.depth) - 1, ' ').append(")\n");
    --file.depth;
    return out.flush();
  });
}

std::int32_t FIL_WriteObjRef(QFXio& file, std::int32_t id, std::string_view class_name, std::string_view label) {
  if (!FIL_QFXioIsWriting(file)) return 1;
  return written([&] {
    Output out(file);
    append_object(out.text(), file, id, class_name, label);
    out.text().append(")\n");
    return out.flush();
  });
}

std::int32_t FIL_StartAttr(QFXio& file, std::string_view name, std::int32_t type, bool& is_array) {
  is_array = false;
  if (!can_start(file, type)) return 0;
  std::int32_t column = 0;
  const std::int32_t status = written([&] {
    Output out(file);
    column = append_head(out.text(), file, name, type, is_array);
    return out.flush();
  });
  return status == 0 ? column : 0;
}

std::int32_t FIL_EndAttr(QFXio& file, bool is_array) {
  if (!FIL_QFXioIsWriting(file)) return 1;
  return written([&] {
    Output out(file);
    append_tail(out.text(), is_array);
    return out.flush();
  });
}

std::int32_t FIL_WriteAttr(QFXio& file, std::string_view name, std::int32_t type, const AttributeValues& values) {
  if (!can_start(file, type)) return 1;
  const bool vectors = scalar_of(type) == attribute_vector;
  const std::size_t numbers = std::visit([](auto span) { return span.size(); }, values);
  if (values.index() != alternative_of(scalar_of(type)) || (vectors && numbers % 3 != 0)) return 1;
  const bool several = (vectors ? numbers / 3 : numbers) > 1;
  if (several && type <= attribute_vector) type += attribute_int_array - attribute_int;
  return written([&] {
    Output out(file);
    bool is_array = false;
    append_head(out.text(), file, name, type, is_array);
    const char* const frame = type != attribute_text ? "" : several ? "(" : "\"";
    out.text().append(frame);
    if (vectors) {
      append_vectors(out, std::get<2>(values));
    } else {
      std::visit([&](auto span) { append_values(out, span); }, values);
    }
    if (*frame == '"') out.text().append(frame);
    append_tail(out.text(), is_array || *frame == '(');
    return out.flush();
  });
}

std::int32_t FIL_WriteAttrString(QFXio& file, std::string_view name, std::int32_t type, std::string_view text) {
  if (!FIL_QFXioIsWriting(file)) return 1;
  if (text.empty()) return 2;
  if (!can_start(file, type)) return 1;
  return written([&] {
    Output out(file);
    bool is_array = false;
    const std::int32_t column = append_head(out.text(), file, name, type, is_array);
    const std::string escapes = type == attribute_text ? escaped(text) : std::string();
    const std::string_view value = type == attribute_text ? std::string_view(escapes) : text;
    const bool quoted = !is_array && (type == attribute_text || value.find(' ') != std::string_view::npos);
    if (quoted) out.text().push_back('"');
    append_folded(out, value, fold_column - column - (quoted ? 1 : 0), file.depth, quoted);
    if (quoted) out.text().push_back('"');
    append_tail(out.text(), is_array);
    return out.flush();
  });
}

}  // namespace pathstat
