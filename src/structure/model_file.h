#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// The structured model file: a line-oriented text of nested objects with typed attributes. The format knows nothing
/// of what classes and attribute names mean. A logical line may be folded over any number of physical lines and be of
/// any length; all work is linear in the length of the text.
namespace pathstat {

/// Types of an attribute's value. The array types stand for several values of the scalar type.
enum AttributeType : std::int32_t {
  attribute_int = 1,
  attribute_reference = 2,
  attribute_float = 3,
  attribute_double = 4,
  attribute_vector = 5,
  attribute_int_array = 6,
  attribute_reference_array = 7,
  attribute_float_array = 8,
  attribute_double_array = 9,
  attribute_vector_array = 10,
  attribute_text = 11,
};

/// Kinds of an item that the reader gives.
enum ItemKind : std::int32_t {
  item_attribute = 0,
  item_object = 1,
  item_reference = 2,
  item_format_error = 3,
  item_object_end = 4,
  item_end_of_file = 5,
};

/// States of a handle.
enum ModelFileState : std::int32_t { model_file_closed = 'c', model_file_reading = 'r', model_file_writing = 'w' };

/// A handle on one model file. The buffers belong to the reader.
struct QFXio {
  std::int32_t depth = 0;  ///< open objects of the writer
  std::FILE* stream = nullptr;
  std::int32_t state = model_file_closed;
  std::string name;
  std::int32_t line = 0;  ///< physical lines read so far

  std::vector<char> block;  ///< bytes of the stream not yet consumed stand from block_begin to block_end
  std::size_t block_begin = 0;
  std::size_t block_end = 0;
  std::string logical_line;
};

/// A new closed handle, or null without memory; FIL_QFXioDestroy ends its life.
QFXio* FIL_QFXioCreate(std::string_view name);
/// Closes the file if it is open and frees the handle; null is allowed.
void FIL_QFXioDestroy(QFXio* file);

/// An owner of a handle.
struct ModelFileCloser {
  void operator()(QFXio* file) const { FIL_QFXioDestroy(file); }
};
using ModelFile = std::unique_ptr<QFXio, ModelFileCloser>;

bool FIL_QFXioIsReading(const QFXio& file);
bool FIL_QFXioIsWriting(const QFXio& file);
bool FIL_QFXioIsClosed(const QFXio& file);

/// Open the file of a closed handle: 0, or 1 if the stream can't be opened or the handle is in use.
std::int32_t FIL_QFXioOpenRead(QFXio& file);
/// As FIL_QFXioOpenRead, looking for the file along the search path of its name.
std::int32_t FIL_QFXioOpenSearchRead(QFXio& file);
std::int32_t FIL_QFXioOpenWrite(QFXio& file);
std::int32_t FIL_QFXioOpenAppend(QFXio& file);
/// Closes the stream; 0, or 1 if written text could not be stored or the state is unknown.
std::int32_t FIL_QFXioClose(QFXio& file);

// Writing. All give 1 on a handle that isn't writing or whose stream fails, else 0, unless stated otherwise.

/// Starts an object; an empty label is left out.
std::int32_t FIL_PushObject(QFXio& file, std::int32_t id, std::string_view class_name, std::string_view label);
/// Ends the innermost object; 1 if none is open.
std::int32_t FIL_PopObject(QFXio& file);
/// Writes a reference to an object, which opens nothing.
std::int32_t FIL_WriteObjRef(QFXio& file, std::int32_t id, std::string_view class_name, std::string_view label);

/// Writes an attribute's head; is_array tells whether it opened an array.
/// @return the column reached, or 0 on a handle that isn't writing or an unknown type
std::int32_t FIL_StartAttr(QFXio& file, std::string_view name, std::int32_t type, bool& is_array);
/// Writes the closing parentheses and the line's end.
std::int32_t FIL_EndAttr(QFXio& file, bool is_array);

/// Values of an attribute: integers for types 1, 2, 6 and 7, floats for 3 and 8, doubles for 4, 5, 9 and 10 (three to
/// a vector), texts for 11.
using AttributeValues = std::variant<std::span<const std::int32_t>, std::span<const float>, std::span<const double>,
                                     std::span<const std::string>>;

/// Writes a whole attribute; two values or more make an array of a scalar type. Texts are neither escaped nor folded:
/// a text with quotes or newlines needs FIL_WriteAttrString, and in an array each text has to be a word.
/// @return 1 also if the values aren't of the type
std::int32_t FIL_WriteAttr(QFXio& file, std::string_view name, std::int32_t type, const AttributeValues& values);

/// Writes a value that is text already, folded near column 78; a value of type 11 is escaped.
/// @return 1 for a bad handle or type, 2 for an empty text
std::int32_t FIL_WriteAttrString(QFXio& file, std::string_view name, std::int32_t type, std::string_view text);

// Reading.

/// One item. The texts stand in the handle's buffer until the next item is read.
struct ModelItem {
  std::int32_t kind = item_format_error;
  std::int32_t id_or_type = 0;  ///< an attribute's type; the id of an object or reference
  std::string_view name{};      ///< an attribute's name; the class of an object or reference
  std::string_view value{};     ///< an attribute's value, for an array the text inside its parentheses; a label
};

/// Reads the next item without copying it. A handle that isn't reading gives the end of the file. A format error has
/// been shown by the message sink and does not stop the next line from being read.
ModelItem next_model_item(QFXio& file);

/// Reads one item into the caller's buffers as terminated texts: a name is cut to its buffer, the value buffer is
/// replaced by one of the logical line's length + 1 if that doesn't fit.
/// @return 0, or 1 at the end of the file and on a handle that isn't reading
std::int32_t FIL_ReadObjOrAttr(QFXio& file, std::int32_t& id_or_type, std::span<char> name, std::vector<char>& value,
                               std::int32_t& kind);

/// Takes a message of the reader: its key, and its arguments in order. All are of severity 2.
using ModelFileMessageArgument = std::variant<std::int32_t, std::string_view>;
using ModelFileMessageSink =
    std::function<void(std::string_view key, std::initializer_list<ModelFileMessageArgument> arguments)>;

/// Registers who shows the reader's messages, for all handles; an empty sink restores the start, which is the Core.
void set_model_file_messages(ModelFileMessageSink sink);

/// Copies a model file, item by item, to its name with ".new" behind it.
/// @param status  0, or 1 if a file can't be opened or the text is malformed
void kvD_TRJ_TestParsing(std::string_view file_name, std::int32_t& status);
/// The same for a blank-padded name.
void kvd_trj_testparsing_(std::string_view file_name, std::int32_t& status);

}  // namespace pathstat
