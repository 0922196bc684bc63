# Writes a register description as a C++ source with its bytes.
#
#     cmake -D INPUT=file -D OUTPUT=file.cpp -D NAME=variable [-D TEXT_SIZE=bytes] -P EmbedDescription.cmake
#
# With TEXT_SIZE the file is XML: its lines will end in CR LF, the last line end is left out, and tabs before the
# closing tag of the root pad it to that size. Without TEXT_SIZE the bytes are used as they are.

if(TEXT_SIZE)
    file(READ ${INPUT} text)
    string(REPLACE "\r\n" "\n" text "${text}")
    string(STRIP "${text}" text)
    string(REPLACE "\n" "\r\n" text "${text}")

    string(LENGTH "${text}" length)
    math(EXPR missing "${TEXT_SIZE} - ${length}")
    if(missing LESS 0)
        message(FATAL_ERROR "${INPUT} is too long: ${length} bytes instead of ${TEXT_SIZE}")
    endif()
    string(REPEAT "\t" ${missing} tabs)
    string(FIND "${text}" "\r\n</RegisterDescription>" end REVERSE)
    string(SUBSTRING "${text}" 0 ${end} before)
    string(SUBSTRING "${text}" ${end} -1 closing_tag)
    string(HEX "${before}${tabs}${closing_tag}" bytes)
else()
    file(READ ${INPUT} bytes HEX)
endif()

string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "    \\1\n"
    bytes "${bytes}")
get_filename_component(file_name ${INPUT} NAME)
file(WRITE ${OUTPUT} "// Written by the build from ${file_name}.
#include \"resources/descriptions.h\"

namespace zvgentl {

const unsigned char ${NAME}[] = {
${bytes}
};
static_assert(sizeof ${NAME} == ${NAME}_size, \"${file_name}: the size is part of the URL\");

} // namespace zvgentl
")
