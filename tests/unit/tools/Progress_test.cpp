#include <memory>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "zvgentl/Progress.h"

namespace zvgentl::test {

TEST(Progress, IsSilentWhenNobodyWatches)
{
    const TemporaryFolder folder;
    const auto file = folder / "errors";
    {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.string().c_str(), "w"),
                                                                     std::fclose);
        tool::Progress progress(stream.get(), 10);
        progress.show(5, 0);
    }
    EXPECT_EQ("", read_text(file));
}

} // namespace zvgentl::test
