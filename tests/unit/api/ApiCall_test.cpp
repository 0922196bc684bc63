#include <stdexcept>

#include "api/ApiCall.h"
#include "support/fixtures.h"

// An exception with any text at the boundary, which no exported function can be made to throw.

namespace zvtest {

namespace {

class Exceptions : public OpenLibrary {};

TEST_F(Exceptions, StopAtTheBoundaryWithTheirTextAndAreNotRecorded)
{
    const std::string before = last_error();
    forget();
    try {
        throw std::runtime_error("broken %s");
    } catch (...) {
        EXPECT_EQ(GC_ERR_ERROR, zvgentl::after_exception("TLOpen"));
    }
    EXPECT_LOG_LINES({Priority::error,
                      "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), exception: broken %s", "TLOpen",
                      "ZVGRLibGenTL"});
    EXPECT_EQ(before, last_error());
}

} // namespace

} // namespace zvtest
