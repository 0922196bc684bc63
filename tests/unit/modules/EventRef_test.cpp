#include <utility>

#include "unit/modules/Module_fixtures.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZV_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define ZV_ADDRESS_SANITIZER
#endif

#if defined(ZV_ADDRESS_SANITIZER)
extern "C" int __asan_address_is_poisoned(const volatile void* address); // NOLINT: the sanitizer's name
#endif

namespace zvtest {

namespace {

using zvgentl::EventList;
using zvgentl::EventModule;
using zvgentl::EventRef;

class EventRefTest : public LooseStream {
protected:
    EventModule* make() { return new EventModule(*stream, GenTL::EVENT_NEW_BUFFER); }
};

/// Destroyed events are poisoned under AddressSanitizer, which alone can tell them from live ones.
class EventRefLifetime : public EventRefTest {
protected:
    void SetUp() override
    {
        EventRefTest::SetUp();
#if !defined(ZV_ADDRESS_SANITIZER)
        GTEST_SKIP() << "only AddressSanitizer can tell a destroyed event from a live one";
#endif
    }

    static bool is_destroyed([[maybe_unused]] const EventModule* event)
    {
#if defined(ZV_ADDRESS_SANITIZER)
        return __asan_address_is_poisoned(event) != 0;
#else
        return false;
#endif
    }
};

TEST_F(EventRefTest, IsEmptyOrLeadsToItsEvent)
{
    EXPECT_FALSE(EventRef());
    EXPECT_FALSE(EventRef(nullptr));
    EventModule* const event = make();
    const EventRef first(event);
    EventRef copy(first);
    const EventRef moved(std::move(copy));
    EXPECT_FALSE(copy); // NOLINT(bugprone-use-after-move): empty is promised
    for (const EventRef* reference : {&first, &moved}) {
        EXPECT_TRUE(*reference);
        EXPECT_EQ(event, reference->get());
        EXPECT_EQ(event, &**reference);
        EXPECT_EQ(GenTL::EVENT_NEW_BUFFER, (*reference)->get_Type());
    }
}

TEST_F(EventRefLifetime, LastsAsLongAsTheLastReference)
{
    EventRef first(make());
    const EventModule* const event = first.get();
    EventRef second(first);
    first = EventRef();
    EXPECT_FALSE(is_destroyed(event));
    EventRef third(std::move(second));
    second = EventRef();
    EXPECT_FALSE(is_destroyed(event));
    third = EventRef();
    EXPECT_TRUE(is_destroyed(event));
}

TEST_F(EventRefLifetime, SurvivesAssignmentToItself)
{
    EventRef reference(make());
    const EventRef& itself = reference;
    reference = itself;
    EXPECT_FALSE(is_destroyed(reference.get()));
    EXPECT_TRUE(reference);
}

TEST_F(EventRefLifetime, EndsForTheEventThatIsReplaced)
{
    EventRef reference(make());
    const EventModule* const old = reference.get();
    reference = EventRef(make());
    EXPECT_TRUE(is_destroyed(old));
    EXPECT_FALSE(is_destroyed(reference.get()));
}

TEST_F(EventRefLifetime, OutlastsTheListOnlyInOtherHands)
{
    EventList& events = stream->get_Events();
    events.add(*stream, GenTL::EVENT_NEW_BUFFER);
    EventRef reference = events.find(GenTL::EVENT_NEW_BUFFER);
    const EventModule* event = reference.get();
    events.remove(GenTL::EVENT_NEW_BUFFER);
    EXPECT_FALSE(is_destroyed(event));
    reference = EventRef();
    EXPECT_TRUE(is_destroyed(event));

    events.add(*stream, GenTL::EVENT_NEW_BUFFER);
    event = events.find(GenTL::EVENT_NEW_BUFFER).get();
    EXPECT_FALSE(is_destroyed(event));
    events.clear();
    EXPECT_TRUE(is_destroyed(event));
}

} // namespace

} // namespace zvtest
