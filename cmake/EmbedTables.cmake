# Turns tables of numbers into C++ arrays, so that a program holds them without reading a file.
#
#   cmake -DOUTPUT=FILE.cpp -DHEADER=FILE.h "-DTABLES=NAME:COLUMNS:FILE.txt|..." -P EmbedTables.cmake
#
# In a table white space parts the numbers, every line is a row, and '#' starts a comment. HEADER
# declares the arrays, inside the namespace Quilo, as `extern const double NAME[rows][COLUMNS]`.
set(text "// Made by: cmake/EmbedTables.cmake\n#include \"${HEADER}\"\n\nnamespace Quilo {\n")
string(REPLACE "|" ";" tables "${TABLES}")
foreach(table IN LISTS tables)
    string(REGEX MATCH "^([^:]+):([^:]+):(.+)$" whole "${table}")
    set(name ${CMAKE_MATCH_1})
    set(columns ${CMAKE_MATCH_2})
    set(file ${CMAKE_MATCH_3})
    file(READ "${file}" rows)
    string(REGEX REPLACE "#[^\n]*" "" rows "${rows}")
    string(REGEX REPLACE "[ \t\r]*\n[ \t\r\n]*" "\n" rows "\n${rows}")
    string(REGEX REPLACE "[ \t]+" ", " rows "${rows}")
    string(REGEX REPLACE "\n([^\n]+)" "\n    {\\1}," rows "${rows}")
    string(APPEND text "\nconst double ${name}[][${columns}] = {${rows}};\n")
endforeach()
file(WRITE "${OUTPUT}" "${text}\n}  // namespace Quilo\n")
