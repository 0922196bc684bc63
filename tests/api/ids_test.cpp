#include "api/lines.h"

// Functions of several families that differ only in their texts: those that give the ID at an index
// (TLGetInterfaceID, IFGetDeviceID and DevGetDataStreamID), and those that give the parent.

namespace zvtest {

namespace {

struct IdFunction {
    const char* name;
    GC_ERROR (*call)(void* handle, uint32_t index, char* id, size_t* size);
    const char* id;            // at index 0, the only one
    const char* filled;        // the line of an ID that was copied
    const char* named;         // how the exit line names it
    const char* too_small;     // recorded when there is no room
    const char* invalid_index; // logged before the index
    bool is_index_recorded;
};

std::ostream& operator<<(std::ostream& out, const IdFunction& function) { return out << function.name; }

const IdFunction id_functions[] = {
    {"TLGetInterfaceID", TLGetInterfaceID, "FG0", "New grabber id was filled=FG0", "Interface ID=FG0",
     "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold Interface Id data",
     "Invalid inteface index ", false},
    {"IFGetDeviceID", IFGetDeviceID, "Device00", "New camera id was filled=Device00", "Device ID=Device00",
     "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold Camera Id data",
     "GC_ERR_INVALID_INDEX: invalid device index ", true},
    {"DevGetDataStreamID", DevGetDataStreamID, "Stream000", "New streams id was filled=Stream000",
     "Device ID=Stream000", // Contract: also of a stream.
     "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold stream Id data", "Invalid stream index ",
     true},
};

class IdAtAnIndex : public OpenDevice, public testing::WithParamInterface<IdFunction> {
protected:
    const std::string expected{GetParam().id};
    std::array<char, 16> id{};
    size_t size{16};

    void SetUp() override
    {
        OpenDevice::SetUp();
        id.fill('\xA5');
        forget();
    }

    void* handle() const
    {
        const std::string name = GetParam().name;
        return name == "TLGetInterfaceID" ? tl : name == "IFGetDeviceID" ? iface : dev;
    }
    /// Indexes are read as signed numbers, and of a camera's streams only those above 0 are missing.
    bool finds_negative_indexes() const { return GetParam().call == DevGetDataStreamID; }
    GC_ERROR ask(uint32_t index = 0) { return GetParam().call(handle(), index, id.data(), &size); }
    ExpectedLine enter(uint32_t index, size_t room) const
    {
        return info_line(std::string("Enter ") + GetParam().name + ", handle=0x" + hex16(handle()) +
                         ", index=" + std::to_string(static_cast<int>(index)) +
                         ", size=" + std::to_string(room));
    }
    ExpectedLine exit() const
    {
        return info_line(std::string("Exit ") + GetParam().name +
                         ", size=" + std::to_string(expected.size() + 1) + ", " + GetParam().named);
    }
};

TEST_P(IdAtAnIndex, IsCopied)
{
    EXPECT_EQ(GC_ERR_SUCCESS, ask());
    EXPECT_EQ(expected, id.data());
    EXPECT_EQ(expected.size() + 1, size);
    EXPECT_EQ('\xA5', id[size]);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(enter(0, 16), info_line(GetParam().filled), exit());
}

TEST_P(IdAtAnIndex, FitsExactly)
{
    size = expected.size() + 1;
    EXPECT_EQ(GC_ERR_SUCCESS, ask());
    EXPECT_EQ(expected, id.data());
}

TEST_P(IdAtAnIndex, AnswersOnlyItsSizeWithoutABuffer)
{
    for (char* nowhere : {static_cast<char*>(nullptr), all_ones<char*>()}) {
        forget();
        size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, GetParam().call(handle(), 0, nowhere, &size));
        EXPECT_EQ(expected.size() + 1, size);
        EXPECT_LOG_LINES(enter(0, 0), exit());
    }
}

TEST_P(IdAtAnIndex, IsNotCopiedIntoTooLittleRoom)
{
    for (const size_t room : {expected.size(), size_t{1}, size_t{0}}) {
        forget();
        size = room;
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, ask());
        EXPECT_EQ(expected.size() + 1, size);
        EXPECT_EQ('\xA5', id[0]);
        EXPECT_LOG_LINES(enter(0, room), error_line(GetParam().too_small),
                         FAILED_WITH(GC_ERR_BUFFER_TOO_SMALL));
    }
    EXPECT_EQ(GetParam().too_small, last_error());
}

TEST_P(IdAtAnIndex, IsMissingBeyondTheList)
{
    const std::string before = last_error();
    for (const uint32_t index : {1U, 2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        if (finds_negative_indexes() && index > 0x7FFFFFFFU)
            continue;
        forget();
        const std::string text = GetParam().invalid_index + std::to_string(index);
        EXPECT_EQ(GC_ERR_INVALID_INDEX, ask(index));
        EXPECT_LOG_LINES(enter(index, 16), error_line(text), FAILED_WITH(GC_ERR_INVALID_INDEX));
        EXPECT_EQ(GetParam().is_index_recorded ? text : before, last_error());
    }
    EXPECT_EQ(16U, size);
    EXPECT_EQ('\xA5', id[0]);
}

TEST_P(IdAtAnIndex, IsThatOfTheOnlyStreamAtNegativeIndexes)
{
    if (!finds_negative_indexes())
        return;
    for (const uint32_t index : {0x80000000U, 0xFFFFFFFFU}) {
        size = 16;
        EXPECT_EQ(GC_ERR_SUCCESS, ask(index));
        EXPECT_EQ(expected, id.data());
        EXPECT_TRUE(logged(enter(index, 16)));
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, IdAtAnIndex, testing::ValuesIn(id_functions),
                         testing::PrintToStringParamName());

class Parents : public OpenDevice {};

TEST_F(Parents, AreGivenToInterfacesAndDevices)
{
    void* parent = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetParentTL(iface, &parent));
    EXPECT_EQ(tl, parent);
    EXPECT_EQ(GC_ERR_SUCCESS, DevGetParentIF(dev, &parent));
    EXPECT_EQ(iface, parent);
    EXPECT_EQ((std::vector<std::string>{"Enter IFGetParentTL", "Exit IFGetParentTL", "Enter DevGetParentIF",
                                        "Exit DevGetParentIF"}),
              logged_messages());
}

} // namespace

} // namespace zvtest
