# Writes the files of a folder as C++ into one source file; run by the build:
#   cmake -D FOLDER=... -D NAMES=a;b -D OUTPUT=... -P EmbedFiles.cmake
set(contents "")
set(entries "")
foreach(name IN LISTS NAMES)
  file(READ ${FOLDER}/${name} bytes HEX)
  string(LENGTH "${bytes}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(MAKE_C_IDENTIFIER "content_${name}" variable)
  string(APPEND contents "constexpr char ${variable}[] = {${bytes}'\\0'};\n")
  string(APPEND entries "    {\"${name}\", {${variable}, ${size}}},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"virtualcharger/page/pagefiles.h\"

namespace {
${contents}
constexpr SPageFile kFiles[] = {
${entries}};
}  // namespace

const std::span<const SPageFile> kPageFiles = kFiles;
")
