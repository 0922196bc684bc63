#include "simulator/pictures/system_files.h"

namespace zvsim {

std::FILE* open_file(const std::filesystem::path& file) { return _wfopen(file.c_str(), L"rb"); }

TIFF* open_tiff_file(const std::filesystem::path& file, const char* mode, TIFFOpenOptions* options)
{
    return TIFFOpenWExt(file.c_str(), mode, options);
}

} // namespace zvsim
