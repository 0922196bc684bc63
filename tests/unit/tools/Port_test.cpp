#include <algorithm>
#include <array>
#include <cstring>

#include <gtest/gtest.h>

#include "gentl/Error.h"
#include "gentl/Port.h"
#include "support.h"

namespace zvgentl::test {

using namespace GenTL;
using namespace tool;

namespace {

/// The state of the fake producer, global because C functions have no other place for it.
struct FakeProducer {
    std::array<unsigned char, 256> memory{};
    std::size_t most_at_once{256};
    std::size_t claimed{0}; // the size that is answered, unless 0
    GC_ERROR answer{GC_ERR_SUCCESS};
    std::string last_error;
    std::vector<std::string> calls;
    std::vector<std::string> urls;
};

FakeProducer fake;

/// Notes the access, and moves as much as the fake allows.
GC_ERROR access(const char* name, uint64_t address, void* to, const void* from, size_t* size)
{
    fake.calls.push_back(name + std::to_string(address) + "+" + std::to_string(*size));
    *size = std::min(*size, fake.most_at_once);
    if (fake.answer == GC_ERR_SUCCESS)
        std::memcpy(to, from, *size);
    *size = fake.claimed != 0 ? fake.claimed : *size;
    return fake.answer;
}

GC_ERROR GC_CALLTYPE succeed() { return GC_ERR_SUCCESS; }

GC_ERROR GC_CALLTYPE get_last_error(GC_ERROR* code, char* text, size_t* size)
{
    *code = fake.answer;
    *size = std::min(*size, fake.last_error.size() + 1);
    std::memcpy(text, fake.last_error.c_str(), *size);
    return GC_ERR_SUCCESS;
}

GC_ERROR GC_CALLTYPE read_port(PORT_HANDLE, uint64_t address, void* buffer, size_t* size)
{
    return access("read ", address, buffer, fake.memory.data() + address, size);
}

GC_ERROR GC_CALLTYPE write_port(PORT_HANDLE, uint64_t address, const void* buffer, size_t* size)
{
    return access("write ", address, fake.memory.data() + address, buffer, size);
}

GC_ERROR GC_CALLTYPE get_num_port_urls(PORT_HANDLE, uint32_t* count)
{
    *count = static_cast<uint32_t>(fake.urls.size());
    return fake.answer;
}

GC_ERROR GC_CALLTYPE get_port_url_info(PORT_HANDLE, uint32_t index, URL_INFO_CMD, INFO_DATATYPE* type,
                                       void* buffer, size_t* size)
{
    *type = INFO_DATATYPE_STRING;
    *size = fake.urls[index].size() + 1;
    if (buffer != nullptr)
        std::memcpy(buffer, fake.urls[index].c_str(), *size);
    return GC_ERR_SUCCESS;
}

Functions fake_functions()
{
    Functions functions;
    functions.GCInitLib = functions.GCCloseLib = succeed;
    functions.GCGetLastError = get_last_error;
    functions.GCReadPort = read_port;
    functions.GCWritePort = write_port;
    functions.GCGetNumPortURLs = get_num_port_urls;
    functions.GCGetPortURLInfo = get_port_url_info;
    return functions;
}

class PortOfAProducer : public testing::Test {
protected:
    PortOfAProducer() { fake = FakeProducer(); }

    std::string error_of_read()
    {
        std::array<char, 10> bytes{};
        return error_of([&] { port.read(0, bytes.data(), bytes.size()); });
    }

    Producer producer{fake_functions()};
    Port port{producer, &fake};
};

using Calls = std::vector<std::string>;

} // namespace

TEST_F(PortOfAProducer, ReadsInOneCallUnlessTheReadIsShort)
{
    std::memcpy(fake.memory.data() + 16, "description", 11);
    const std::pair<std::size_t, Calls> cases[] = {
        {256, {"read 16+11"}},
        {4, {"read 16+11", "read 20+7", "read 24+3"}},
    };
    for (const auto& [most_at_once, calls] : cases) {
        fake.most_at_once = most_at_once;
        fake.calls.clear();
        std::string text(11, '\0');
        port.read(16, text.data(), text.size());
        EXPECT_EQ("description", text);
        EXPECT_EQ(calls, fake.calls);
    }
}

TEST_F(PortOfAProducer, WritesTheRestOfAShortWrite)
{
    fake.most_at_once = 4;
    port.write(8, "0123456789", 10);
    EXPECT_EQ(0, std::memcmp(fake.memory.data() + 8, "0123456789", 10));
    EXPECT_EQ((Calls{"write 8+10", "write 12+6", "write 16+2"}), fake.calls);
}

TEST_F(PortOfAProducer, CallsNothingForNoBytes)
{
    port.read(0, nullptr, 0);
    port.write(0, nullptr, 0);
    EXPECT_EQ(Calls{}, fake.calls);
}

TEST_F(PortOfAProducer, EndsWhenNothingMovesOrMoreThanWasAskedFor)
{
    fake.most_at_once = 0;
    const std::string error = "GCReadPort failed with GC_ERR_IO (-1010): it transferred ";
    EXPECT_EQ(error + "0 of 10 bytes at 0x0", error_of_read());
    EXPECT_THROW(port.write(0, "1", 1), Error);
    fake.claimed = 11;
    EXPECT_EQ(error + "11 of 10 bytes at 0x0", error_of_read());
}

TEST_F(PortOfAProducer, FailsInTheProducersWordsUnlessTheyAreOld)
{
    const std::string error = "GCReadPort failed with GC_ERR_INVALID_ADDRESS (-1015)";
    fake.answer = GC_ERR_INVALID_ADDRESS;
    fake.last_error = "nothing is there";
    EXPECT_EQ(error + ": nothing is there", error_of_read());
    EXPECT_EQ(error, error_of_read());
    fake.last_error = "GCReadPort: nothing is there"; // no doubt about what this is about
    for (int read = 0; read < 2; ++read)
        EXPECT_EQ(error + ": GCReadPort: nothing is there", error_of_read());
}

TEST_F(PortOfAProducer, GivesAllItsUrlsUnlessTheyCannotBeCounted)
{
    EXPECT_EQ(Calls{}, port.urls());
    fake.urls = {"Local:a.xml;0;10", "http://maker.example/a.xml"};
    EXPECT_EQ(fake.urls, port.urls());
    fake.answer = GC_ERR_INVALID_HANDLE;
    EXPECT_THROW(port.urls(), Error);
}

} // namespace zvgentl::test
