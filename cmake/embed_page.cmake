# Writes the files of the folder PAGE as arrays of bytes into the C++ source OUT.
file(GLOB_RECURSE files RELATIVE ${PAGE} ${PAGE}/*)
list(SORT files)
set(arrays "")
set(rows "")
set(number 0)
foreach(name ${files})
  file(READ ${PAGE}/${name} hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  string(APPEND arrays "const unsigned char file_${number}[] = {${bytes}0};\n")
  string(APPEND rows "    {\"/${name}\", {reinterpret_cast<const char*>(file_${number}), sizeof file_${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUT} "#include \"desk/panel/embedded_page.h\"

namespace pathstat::desk {
namespace {

${arrays}
const EmbeddedFile files[] = {
${rows}};

}  // namespace

std::span<const EmbeddedFile> embedded_page() { return files; }

}  // namespace pathstat::desk
")
