# Writes a text file as a C++ source with one string.
#
#     cmake -D INPUT=file -D OUTPUT=file.cpp -D NAME=variable -P EmbedTemplate.cmake
file(READ ${INPUT} bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "    \\1\n"
    bytes "${bytes}")
get_filename_component(file_name ${INPUT} NAME)
file(WRITE ${OUTPUT} "// Written by the build from ${file_name}.
#include \"simulator/features/Description.h\"

#include <iterator>

namespace zvsim {

namespace {

constexpr unsigned char bytes[] = {
${bytes}
};

} // namespace

std::string ${NAME}() { return {std::begin(bytes), std::end(bytes)}; }

} // namespace zvsim
")
