#include <fstream>
#include <set>

#include "api/Function.h"

// The rules that hold for all exported functions, each over the whole table: what is refused before
// GCInitLib, without an argument and on a handle that does not fit. A refused call writes its enter line and
// what the table says, calls nobody, changes no output and no other text than the table says.

namespace zvtest {

namespace {

/// A function together with an argument that it needs.
struct NeededArgument {
    const Function* function;
    Needed argument;
};

const char* name_of(Needed argument)
{
    constexpr const char* names[] = {"code",   "id",     "memory",  "text", "size",  "type",
                                     "number", "handle", "entries", "room", "frames"};
    return names[static_cast<size_t>(argument)];
}

std::ostream& operator<<(std::ostream& out, const NeededArgument& needed)
{
    return out << needed.function->name << "_" << name_of(needed.argument);
}

std::vector<NeededArgument> needed_arguments()
{
    std::vector<NeededArgument> all;
    for (const Function& function : functions) {
        for (const Needed argument : function.needed)
            all.push_back({&function, argument});
    }
    return all;
}

template <class Condition>
std::vector<Function> functions_that(Condition condition)
{
    std::vector<Function> chosen;
    std::copy_if(functions.begin(), functions.end(), std::back_inserter(chosen), condition);
    return chosen;
}

template <class Info>
std::string printed_name(const Info& info)
{
    return testing::PrintToString(info.param);
}

int stranger; // whose address names nothing
const std::vector<void*> strangers{&stranger, all_ones<void*>()};
const std::vector<void*> missing_pointers{nullptr, all_ones<void*>()};

/// A call that has to be refused.
void expect_refused(const Function& function, Arguments& a, const Refusal& refusal, bool is_entered)
{
    FakeGrabberLibrary& fake = FakeGrabberLibrary::instance();
    FakeLoggerLibrary& log = FakeLoggerLibrary::instance();
    FakeSettings& settings = FakeSettings::instance();
    fake.clear_calls();
    log.clear_lines();
    settings.clear_reads();
    const std::vector<ExpectedLine> lines = function.lines(a, refusal, is_entered);
    const size_t elapsed_before = log.elapsed_calls();
    EXPECT_EQ(refusal.code, function.call(a));
    EXPECT_TRUE(a.are_untouched(refusal.written_number));
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_TRUE(settings.reads().empty());
    EXPECT_TRUE(logged_exactly(lines));
    EXPECT_EQ(function.is_timed ? 1U : 0U, log.elapsed_calls() - elapsed_before);

    log.set_level(Priority::information); // per-frame functions then take a shorter way
    EXPECT_EQ(refusal.code, function.call(a));
    EXPECT_TRUE(a.are_untouched(refusal.written_number));
    log.set_level(Priority::trace);
}

// Before GCInitLib.

class ClosedLibrary : public Library {
protected:
    static void expect_not_initialised(const Function& function, Arguments& a)
    {
        const Refusal refusal{
            GC_ERR_NOT_INITIALIZED, {error_line("No preceding call to GCInitLib")}, std::nullopt};
        expect_refused(function, a, refusal, !function.enters_late);
    }

    void* const m_some_handle{reinterpret_cast<void*>(0x1234)};
    const Handles m_handles{m_some_handle, m_some_handle, m_some_handle, m_some_handle,
                            m_some_handle, m_some_handle, m_some_handle};
};

class Guarded : public ClosedLibrary, public testing::WithParamInterface<Function> {};

TEST_P(Guarded, IsRefusedBeforeGCInitLib)
{
    Arguments a(GetParam(), m_handles);
    expect_not_initialised(GetParam(), a);
}

TEST_P(Guarded, IsRefusedAfterGCCloseLib)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GCInitLib());
    ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    Arguments a(GetParam(), m_handles);
    expect_not_initialised(GetParam(), a);
}

INSTANTIATE_TEST_SUITE_P(Functions, Guarded, testing::ValuesIn(functions_that([](const Function& function) {
                             return std::string(function.name) != "GCInitLib";
                         })),
                         name_of_function<testing::TestParamInfo<Function>>);

/// The enter line and the guard come first and read no pointer that is missing.
class GuardedArgument : public ClosedLibrary, public testing::WithParamInterface<NeededArgument> {};

TEST_P(GuardedArgument, IsNotReadBeforeGCInitLib)
{
    const auto& [function, argument] = GetParam();
    for (void* const missing : missing_pointers) {
        Arguments a(*function, m_handles);
        a.leave_out(argument, missing);
        if (function->order == Order::first)
            expect_refused(*function, a, function->missing, false);
        else
            expect_not_initialised(*function, a);
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, GuardedArgument, testing::ValuesIn(needed_arguments()),
                         printed_name<testing::TestParamInfo<NeededArgument>>);

// With everything open.

class EverythingOpen : public QueuedStream {
protected:
    Handles handles;

    void SetUp() override
    {
        QueuedStream::SetUp();
        register_event();
        handles = {tl, iface, dev, port, ds, announce().handle, event};
        char byte = 0;
        size_t size = 1;
        INFO_DATATYPE type = 0;
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, GCGetInfo(TL_INFO_ID, &type, &byte, &size));
        m_text = last_error();
    }

    void expect_refusal(const Function& function, Arguments& a, const Refusal& refusal, bool is_entered)
    {
        expect_refused(function, a, refusal, is_entered);
        m_text = refusal.recorded.value_or(m_text);
        EXPECT_EQ(m_text, last_error());
    }

    void expect_handle_refused(const Function& function, void* handle, HandleState state)
    {
        SCOPED_TRACE(hex16(handle));
        Arguments a(function, handles);
        a.handle = handle;
        expect_refusal(function, a, function.refusal(state), !function.enters_late);
    }

private:
    std::string m_text; // the last error
};

class MissingArgument : public EverythingOpen, public testing::WithParamInterface<NeededArgument> {
protected:
    const Function& function{*GetParam().function};

    /// A call on `handle`, which is refused for its missing argument if `is_seen`, and else for its handle.
    void expect_refusal_on(void* handle, bool is_seen, HandleState state)
    {
        SCOPED_TRACE(hex16(handle));
        for (void* const missing : missing_pointers) {
            Arguments a(function, handles);
            a.handle = handle;
            a.leave_out(GetParam().argument, missing);
            if (is_seen)
                expect_refusal(function, a, function.missing, function.order != Order::first);
            else
                expect_refusal(function, a, function.refusal(state), !function.enters_late);
        }
    }
};

TEST_P(MissingArgument, IsRefused)
{
    expect_refusal_on(handle_of(function.kind, handles), true, HandleState::open);
}

TEST_P(MissingArgument, IsRefusedInItsOrder)
{
    const Order order = function.order;
    expect_refusal_on(nullptr, order == Order::first || order == Order::before_handle, HandleState::null);
    for (void* const handle : strangers)
        expect_refusal_on(handle, order != Order::behind_handle, HandleState::unknown);
}

INSTANTIATE_TEST_SUITE_P(Functions, MissingArgument, testing::ValuesIn(needed_arguments()),
                         printed_name<testing::TestParamInfo<NeededArgument>>);

bool takes_any_kind(const Function& function)
{
    return function.kind == Kind::port || function.kind == Kind::source;
}

class FunctionOnAHandle : public EverythingOpen, public testing::WithParamInterface<Function> {
protected:
    const Function& function{GetParam()};
};

TEST_P(FunctionOnAHandle, RefusesNull) { expect_handle_refused(function, nullptr, HandleState::null); }

TEST_P(FunctionOnAHandle, RefusesWhatNamesNothing)
{
    for (void* const handle : strangers)
        expect_handle_refused(function, handle, HandleState::unknown);
}

TEST_P(FunctionOnAHandle, RefusesAHandleOfAnotherKind)
{
    if (takes_any_kind(function)) {
        expect_handle_refused(function, event, HandleState::unknown);
        return;
    }
    for (void* const handle : {tl, iface, dev, port, ds, handles.buffer, event}) {
        if (handle != handle_of(function.kind, handles))
            expect_handle_refused(function, handle, HandleState::unknown);
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, FunctionOnAHandle,
                         testing::ValuesIn(functions_that([](const Function& function) {
                             return function.kind != Kind::none;
                         })),
                         name_of_function<testing::TestParamInfo<Function>>);

/// What ends the life of handles, and how functions find them afterwards.
struct Ending {
    const char* name;
    void (*happen)(const Handles& handles);
    HandleState tl;
    HandleState iface;
    HandleState dev;
    HandleState port;
    HandleState ds;
    HandleState buffer;
    HandleState event;
};

/// Opens everything down to the device again, so that what was freed may come back.
void open_again(TL_HANDLE system)
{
    IF_HANDLE iface = nullptr;
    DEV_HANDLE dev = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, TLOpenInterface(system, "FG0", &iface));
    EXPECT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ(GC_ERR_SUCCESS, IFOpenDevice(iface, "Device00", DEVICE_ACCESS_EXCLUSIVE, &dev));
}

void open_system_again()
{
    TL_HANDLE system = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, TLOpen(&system));
    open_again(system);
}

using H = const Handles&;
constexpr HandleState open = HandleState::open;
constexpr HandleState closed = HandleState::closed;
constexpr HandleState unknown = HandleState::unknown;
constexpr HandleState nowhere = HandleState::without_system;

const Ending endings[] = {
    {"GCUnregisterEvent", [](H h) { EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(h.ds, EVENT_NEW_BUFFER)); },
     open, open, open, open, open, open, unknown},
    {"DSClose", [](H h) { EXPECT_EQ(GC_ERR_SUCCESS, DSClose(h.ds)); }, open, open, open, open, closed,
     unknown, unknown},
    {"DevClose", [](H h) { EXPECT_EQ(GC_ERR_SUCCESS, DevClose(h.dev)); }, open, open, closed, closed, closed,
     unknown, unknown},
    {"IFClose", [](H h) { EXPECT_EQ(GC_ERR_SUCCESS, IFClose(h.iface)); }, open, closed, closed, closed,
     closed, unknown, unknown},
    {"AnotherDeviceList",
     [](H h) {
         DEV_HANDLE dev = nullptr;
         FakeGrabberLibrary::instance().grabber(0).has_cameras(2);
         EXPECT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(h.iface, nullptr, 0));
         EXPECT_EQ(GC_ERR_SUCCESS, IFOpenDevice(h.iface, "Device00", DEVICE_ACCESS_EXCLUSIVE, &dev));
     },
     open, open, unknown, unknown, unknown, unknown, unknown},
    {"AnotherInterfaceList",
     [](H h) {
         FakeGrabberLibrary::instance().has_grabbers(3);
         EXPECT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(h.tl, nullptr, 0));
         open_again(h.tl);
     },
     open, unknown, unknown, unknown, unknown, unknown, unknown},
    {"TLClose", [](H h) { EXPECT_EQ(GC_ERR_SUCCESS, TLClose(h.tl)); }, nowhere, nowhere, nowhere, nowhere,
     nowhere, nowhere, nowhere},
    {"AnotherSystem",
     [](H h) {
         EXPECT_EQ(GC_ERR_SUCCESS, TLClose(h.tl));
         open_system_again();
     },
     unknown, unknown, unknown, unknown, unknown, unknown, unknown},
    {"AnotherSession",
     [](H) {
         EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib());
         EXPECT_EQ(GC_ERR_SUCCESS, GCInitLib());
         open_system_again();
     },
     unknown, unknown, unknown, unknown, unknown, unknown, unknown},
};

struct HandleAfter {
    void* handle;
    HandleState state;
};

/// The handles of `function`, with their states after `ending`.
std::vector<HandleAfter> handles_after(const Ending& ending, const Function& function, const Handles& handles)
{
    switch (function.kind) {
    case Kind::none:
        return {};
    case Kind::system:
        return {{handles.tl, ending.tl}};
    case Kind::iface:
        // Contract: a second close has an answer of its own. Pinned by
        // IFClose.CallsTheLibraryBeforeItLooksAtTheFlag.
        return {{handles.iface,
                 ending.iface == closed && std::string(function.name) == "IFClose" ? open : ending.iface}};
    case Kind::device:
        return {{handles.dev, ending.dev}};
    case Kind::stream:
        return {{handles.ds, ending.ds}};
    case Kind::event:
        return {{handles.event, ending.event}};
    default:
        return {{handles.tl, ending.tl},     {handles.iface, ending.iface}, {handles.dev, ending.dev},
                {handles.port, ending.port}, {handles.ds, ending.ds},       {handles.buffer, ending.buffer}};
    }
}

/// A function together with an ending of its handle.
struct EndedHandle {
    const Function* function;
    const Ending* ending;
};

std::ostream& operator<<(std::ostream& out, const EndedHandle& ended)
{
    return out << ended.function->name << "_after_" << ended.ending->name;
}

std::vector<EndedHandle> ended_handles()
{
    std::vector<EndedHandle> all;
    for (const Function& function : functions) {
        for (const Ending& ending : endings) {
            const auto after = handles_after(ending, function, {});
            if (std::any_of(after.begin(), after.end(),
                            [](const HandleAfter& one) { return one.state != open; }))
                all.push_back({&function, &ending});
        }
    }
    return all;
}

class StaleHandle : public EverythingOpen, public testing::WithParamInterface<EndedHandle> {};

TEST_P(StaleHandle, IsRefused)
{
    const auto& [function, ending] = GetParam();
    ending->happen(handles);
    for (const auto& [handle, state] : handles_after(*ending, *function, handles)) {
        if (state != open)
            expect_handle_refused(*function, handle, state);
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, StaleHandle, testing::ValuesIn(ended_handles()),
                         printed_name<testing::TestParamInfo<EndedHandle>>);

class FunctionOnABuffer : public EverythingOpen, public testing::WithParamInterface<Function> {};

TEST_P(FunctionOnABuffer, RefusesWhatIsNotABufferOfTheStream)
{
    const Announced& revoked = announce();
    ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, revoked.handle, nullptr, nullptr));
    for (void* const handle : {static_cast<void*>(nullptr), all_ones<void*>(), static_cast<void*>(&stranger),
                               tl, iface, dev, port, ds, event, revoked.handle}) {
        SCOPED_TRACE(hex16(handle));
        Arguments a(GetParam(), handles);
        a.buffer = handle;
        expect_refusal(GetParam(), a, *GetParam().bad_buffer, true);
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, FunctionOnABuffer,
                         testing::ValuesIn(functions_that([](const Function& function) {
                             return function.bad_buffer.has_value();
                         })),
                         name_of_function<testing::TestParamInfo<Function>>);

TEST(EveryFunction, IsInTheTableOnce)
{
    std::set<std::string> listed;
    for (const Function& function : functions)
        listed.insert(function.name);
    std::set<std::string> exported;
    std::ifstream list(ZV_EXPORT_LIST);
    for (std::string word; list >> word;) {
        if (word.front() != '"' && word != "LIBRARY" && word != "EXPORTS")
            exported.insert(word);
    }
    EXPECT_EQ(exported, listed);
    EXPECT_EQ(57U, exported.size());
    EXPECT_EQ(57U, functions.size());
}

} // namespace

} // namespace zvtest
