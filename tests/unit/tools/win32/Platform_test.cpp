#include <cstdio>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "platform/environment.h"
#include "platform/terminal.h"

#include "unit/tools/TemporaryFolder.h"
#include "zvgentl/Progress.h"

namespace zvgentl::test {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string line_of_cursor(std::FILE* console)
{
    std::fflush(console);
    HANDLE const screen = CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(screen, &info);
    std::string text(static_cast<std::size_t>(info.dwSize.X), '\0');
    DWORD count = 0;
    ReadConsoleOutputCharacterA(screen, text.data(), static_cast<DWORD>(text.size()),
                                COORD{0, info.dwCursorPosition.Y}, &count);
    CloseHandle(screen);
    return text;
}

constexpr const char* own_console = "ZV_TEST_HAS_ITS_OWN_CONSOLE";

/// Runs the same test in a new process with a console that nobody else uses, and gives its exit code.
DWORD run_with_a_console(const std::string& test)
{
    const ScopedVariable variable(own_console, "1");
    std::string line = "unit_tools --gtest_filter=" + test;
    std::string program(MAX_PATH, '\0');
    GetModuleFileNameA(nullptr, program.data(), MAX_PATH);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    DWORD code = 99;
    if (CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                       nullptr, &startup, &started) == 0)
        return code;
    WaitForSingleObject(started.hProcess, INFINITE);
    GetExitCodeProcess(started.hProcess, &code);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return code;
}

} // namespace

TEST(Terminal, IsNeitherAFileNorTheNullDevice)
{
    const TemporaryFolder folder;
    const File file(std::fopen((folder / "file").string().c_str(), "w"));
    EXPECT_FALSE(platform::is_terminal(file.get()));
    const File nothing(std::fopen("NUL", "w"));
    EXPECT_FALSE(platform::is_terminal(nothing.get()));
}

TEST(Terminal, ShowsTheProgress)
{
    if (platform::environment(own_console).empty()) {
        EXPECT_EQ(0U, run_with_a_console("Terminal.ShowsTheProgress"));
        return;
    }
    const File console(std::fopen("CONOUT$", "r+"));
    ASSERT_NE(nullptr, console);
    tool::Progress progress(console.get(), 20);
    progress.show(1, 0);
    EXPECT_NE(std::string::npos, line_of_cursor(console.get()).find("1/20 frames"));
}

TEST(KeepBytes, LeavesTheEndsOfLinesAlone)
{
    const TemporaryFolder folder;
    const auto name = folder / "file";
    File file(std::fopen(name.string().c_str(), "w"));
    platform::keep_bytes(file.get());
    std::fputs("a\nb\r\n", file.get());
    file.reset();
    EXPECT_EQ("a\nb\r\n", read_text(name));
}

} // namespace zvgentl::test
