#include "simulator/pictures/system_files.h"

namespace zvsim {

std::FILE* open_file(const std::filesystem::path& file) { return std::fopen(file.c_str(), "rb"); }

TIFF* open_tiff_file(const std::filesystem::path& file, const char* mode, TIFFOpenOptions* options)
{
    return TIFFOpenExt(file.c_str(), mode, options);
}

} // namespace zvsim
