# Writes a library's string table as C++ for platforms without resources: the LANGUAGE and
# STRINGTABLE entries of a Windows resource script become entries that the library registers
# with qrnplatform::Resources when it is loaded. Run as a script:
#   cmake -DRC=<file.rc> -DOUT=<file.cpp> -P QrnStringTable.cmake
file(STRINGS "${RC}" lines ENCODING UTF-8)
set(language 0)
set(entries "")
foreach(line IN LISTS lines)
  if(line MATCHES "^[ \t]*LANGUAGE[ \t]+(0x[0-9A-Fa-f]+|[0-9]+)[ \t]*,[ \t]*(0x[0-9A-Fa-f]+|[0-9]+)")
    math(EXPR language "(${CMAKE_MATCH_2} << 10) | ${CMAKE_MATCH_1}" OUTPUT_FORMAT HEXADECIMAL)
  elseif(line MATCHES "^[ \t]*([0-9]+)[ \t]*,?[ \t]*\"(.*)\"[ \t]*$")
    string(APPEND entries "    {${language}, ${CMAKE_MATCH_1}, L\"${CMAKE_MATCH_2}\"},\n")
  endif()
endforeach()
if(entries STREQUAL "")
  message(FATAL_ERROR "${RC} has no string table entries")
endif()
file(WRITE "${OUT}.tmp" "// Made from ${RC} by QrnStringTable.cmake.
#include \"qrngl/resources/StringTable.h\"

#include \"qrnplatform/Resources.h\"

namespace {

const qrnplatform::Resources::StringEntry kStrings[] = {
${entries}};

struct Registration {
    Registration() {
        qrnplatform::Resources::registerStrings(qrngl::libraryModule(), kStrings,
                                                sizeof kStrings / sizeof kStrings[0]);
    }
} registration;

} // namespace
")
file(COPY_FILE "${OUT}.tmp" "${OUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUT}.tmp")
