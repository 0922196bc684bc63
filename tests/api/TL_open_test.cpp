#include "api/lines.h"
#include "support/FailingAllocations.h"

namespace zvtest {

namespace {

class TLOpen : public OpenLibrary {
protected:
    TL_HANDLE system{untouched<TL_HANDLE>()};
};

TEST_F(TLOpen, MakesASystem)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLOpen(&system));
    EXPECT_LOG_LINES(info_line("Enter TLOpen"), info_line("Exit TLOpen, systemHandle= 0x" + hex16(system)));
    EXPECT_NE(nullptr, system);
    EXPECT_FALSE(is_untouched(system));
    EXPECT_TRUE(fake.calls().empty()) << "it does not scan";
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(TLOpen, RefusesASecondSystemSilently)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::TLOpen(&system));
    const std::string before = last_error();
    forget();
    TL_HANDLE second = untouched<TL_HANDLE>();
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, GenTL::TLOpen(&second));
    EXPECT_TRUE(is_untouched(second));
    EXPECT_LOG_LINES(info_line("Enter TLOpen"));
    EXPECT_EQ(before, last_error());
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, TLGetNumInterfaces(system, &count));
}

TEST_F(TLOpen, WritesNullWhenThereIsNoMemory)
{
    log.set_level(Priority::error); // lines are made of memory as well
    {
        const auto faults = FailingAllocations::nth(1);
        EXPECT_EQ(GC_ERR_ERROR, GenTL::TLOpen(&system));
        EXPECT_TRUE(faults.struck());
    }
    EXPECT_EQ(nullptr, system);
    EXPECT_LOG_LINES(FAILED_WITH(GC_ERR_ERROR));
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLOpen(&system)) << "the failure left something behind";
}

class TLClose : public OpenSystem {};

TEST_F(TLClose, DestroysTheSystem)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLClose(tl));
    EXPECT_LOG_LINES(info_line("Enter TLClose"), info_line("Exit TLClose"));
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::TLClose(tl));
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLOpen(&tl));
}

TEST_F(TLClose, ClosesOpenGrabbersInTheOrderOfTheList)
{
    fake.has_grabbers(4); // and the demo grabber, which is hidden
    open_interface("FG2");
    open_interface("FG0");
    const uint32_t first = fake.grabber_handle(0);
    const uint32_t third = fake.grabber_handle(2);
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLClose(tl));
    EXPECT_EQ((Calls{call("ZVGR_Close", first), call("ZVGR_Close", third)}), fake.calls());
}

TEST_F(TLClose, IgnoresAGrabberThatDoesNotClose)
{
    open_interface("FG0");
    forget();
    fake.next("ZVGR_Close").answers_after_effect(any_failure);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLClose(tl));
    EXPECT_LOG_LINES(info_line("Enter TLClose"), info_line("Exit TLClose"));
}

TEST_F(TLClose, DoesNotCloseAGrabberThatIFCloseClosed)
{
    const IF_HANDLE iface = open_interface("FG0");
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLClose(tl));
    EXPECT_TRUE(fake.calls().empty());
}

} // namespace

} // namespace zvtest
