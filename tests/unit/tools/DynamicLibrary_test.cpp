#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "platform/DynamicLibrary.h"
#include "platform/library_file.h"
#include "support.h"

// Files that cannot be loaded, named as what they are.

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

/// The beginning of a library of Linux.
std::string elf(char kind, char processor)
{
    std::string header(64, '\0');
    header.replace(0, 7,
                   "\x7F"
                   "ELF\x02\x01\x01");
    header[16] = kind;
    header[18] = processor;
    return header;
}

/// The beginning of a library of Windows.
std::string windows(char low, char high)
{
    std::string header(128, '\0');
    header.replace(0, 2, "MZ");
    header[0x3C] = 64;
    header.replace(64, 2, "PE");
    header[68] = low;
    header[69] = high;
    return header;
}

} // namespace

TEST(DynamicLibrary, SaysWhatAFileIsThatItCannotLoad)
{
    constexpr char library = 3;
    constexpr char arm = static_cast<char>(183);
    const TemporaryFolder folder;
    const std::pair<std::string, const char*> cases[] = {
        {"", "it is empty"},
        {"not a library", "it is not a library"},
        {elf(library, arm), "it is a library for 64-bit ARM on Linux; this program loads those for"},
        {elf(library, 3), "it is a library for 32-bit x86 on Linux"},
        {elf(library, 99), "it is a library for an unknown processor on Linux"},
        {windows('\x64', '\xAA'), "it is a library for 64-bit ARM on Windows"},
        {"\xCF\xFA\xED\xFE", "it is a library for an Apple computer on macOS"},
    };
    for (const auto& [content, reason] : cases) {
        write_text(folder / "file.cti", content);
        EXPECT_THAT(error_of([&] { const platform::DynamicLibrary loaded(folder / "file.cti"); }),
                    StartsWith(reason));
    }
    EXPECT_EQ("it is a folder", error_of([&] { const platform::DynamicLibrary loaded(folder.path()); }));
    EXPECT_THAT(error_of([&] { const platform::DynamicLibrary loaded(folder / "missing"); }),
                StartsWith("it cannot be read: "));
}

TEST(DynamicLibrary, IsNotWhatIsMadeForAnotherSystem)
{
    const TemporaryFolder folder;
    const bool is_linux = std::string(platform::own_system()) == "Linux";
    write_text(folder / "file.cti", is_linux ? windows('\x64', '\x86') : elf(3, 62));
    EXPECT_EQ(std::string("it is a library for 64-bit x86 on ") + (is_linux ? "Windows" : "Linux") +
                  "; this program loads those for 64-bit x86 on " + platform::own_system(),
              error_of([&] { const platform::DynamicLibrary loaded(folder / "file.cti"); }));
}

TEST(DynamicLibrary, SaysWhenAFileIsCutOff)
{
    const TemporaryFolder folder;
    write_text(folder / "file.cti", read_text(ZV_GRABBER_LIBRARY).substr(0, 20000));
    const std::string reason = error_of([&] { const platform::DynamicLibrary loaded(folder / "file.cti"); });
#ifndef _WIN32 // each system has its own words
    EXPECT_EQ("it is cut off", reason);
#else
    EXPECT_NE("no error", reason);
#endif
}

} // namespace zvgentl::test
