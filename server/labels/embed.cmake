# Writes a C++ source that holds every labels/*.txt file as a string, keyed
# by language code (the file name without extension).
file(GLOB FILES ${DIR}/*.txt)
set(BODY "")
foreach(F ${FILES})
  get_filename_component(LANG ${F} NAME_WE)
  file(READ ${F} CONTENT HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," BYTES "${CONTENT}")
  string(APPEND BODY "    {\"${LANG}\", [] { static const char d[] = {${BYTES} 0}; return std::string_view(d, sizeof d - 1); }()},\n")
endforeach()
file(WRITE ${OUT} "// Generated from server/labels; do not edit.\n#include <map>\n#include <string>\n#include <string_view>\nnamespace veldrano::server {\nconst std::map<std::string, std::string_view>& EmbeddedLabelFiles() {\n  static const std::map<std::string, std::string_view> files = {\n${BODY}  };\n  return files;\n}\n}  // namespace veldrano::server\n")
