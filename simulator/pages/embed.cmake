# Writes a C++ file with the bytes of other files in it: cmake -D OUT=... -D "FILES=a;b" -P embed.cmake
set(types html text/html css text/css js text/javascript json application/json svg image/svg+xml)
set(texts "")
set(entries "")
set(index 0)
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  get_filename_component(extension ${file} LAST_EXT)
  string(SUBSTRING ${extension} 1 -1 extension)
  list(FIND types ${extension} at)
  if(at EQUAL -1)
    message(FATAL_ERROR "No content type is known for ${file}")
  endif()
  math(EXPR at "${at} + 1")
  list(GET types ${at} type)
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${hex}")
  string(REGEX REPLACE "((\\\\x[0-9a-f][0-9a-f])(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?(\\\\x[0-9a-f][0-9a-f])?)"
                       "    \"\\1\"\n" lines "${bytes}")
  string(APPEND texts "constexpr char bytes${index}[] =\n${lines}    \"\";\n")
  string(APPEND entries "    {\"${name}\", \"${type};charset=UTF-8\", {bytes${index}, sizeof bytes${index} - 1}},\n")
  math(EXPR index "${index} + 1")
endforeach()
file(WRITE ${OUT} "// Made of the files of simulator/pages and simulator/admin.
#include \"simulator/pages/embedded_files.h\"

namespace vantry_sim {
namespace {

${texts}
constexpr EmbeddedFile files[] = {
${entries}};

}  // namespace

const EmbeddedFile* FindEmbeddedFile(std::string_view name) {
  for (const EmbeddedFile& file : files) {
    if (file.name == name) return &file;
  }
  return nullptr;
}

}  // namespace vantry_sim
")
