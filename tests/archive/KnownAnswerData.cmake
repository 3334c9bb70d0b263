# Writes OUTPUT, a C++ include that holds each file of the known-answer data as a byte vector:
#   cmake -DDATA=<folder> -DOUTPUT=<file> -DFILES=name=identifier,... -P KnownAnswerData.cmake
# The bytes travel in the program, so that a test run under Wine needs no path to the sources.
file(WRITE "${OUTPUT}.new" "// Made from tests/archive/data by KnownAnswerData.cmake.\n")
string(REPLACE "," ";" FILES "${FILES}")
foreach(pair ${FILES})
    string(REPLACE "=" ";" pair "${pair}")
    list(GET pair 0 name)
    list(GET pair 1 identifier)
    file(READ "${DATA}/${name}" hex HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
    file(APPEND "${OUTPUT}.new" "inline const std::vector<std::uint8_t> ${identifier} = {${bytes}};\n")
endforeach()
file(RENAME "${OUTPUT}.new" "${OUTPUT}")
