#include <cstdlib>
#include <string>
#include <vector>

#include "system/fixture.h"

// The ports that the producer serves itself, as a consumer loads a register description: the URL, then the
// memory that it names.

using namespace GenTL;
using namespace zvsystem;

namespace {

class OwnPorts : public LoadedProducer {
protected:
    std::string url(PORT_HANDLE port) const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        size_t size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCGetPortURLInfo(port, 0, URL_INFO_URL, &type, nullptr, &size));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        std::string text(size, '\0');
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCGetPortURLInfo(port, 0, URL_INFO_URL, &type, text.data(), &size));
        return text.c_str();
    }
    std::string plain_url(PORT_HANDLE port) const
    {
        char text[256];
        size_t size = sizeof text;
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCGetPortURL(port, text, &size));
        return text;
    }
    /// What the URL names, in one read.
    std::string description(PORT_HANDLE port) const
    {
        const std::string where = url(port);
        const size_t address = where.find(';') + 1;
        const size_t length = where.find(';', address) + 1;
        std::string bytes(std::strtoull(where.c_str() + length, nullptr, 16), '\0');
        size_t size = bytes.size();
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCReadPort(port, std::strtoull(where.c_str() + address, nullptr, 16),
                                                   bytes.data(), &size));
        EXPECT_EQ(bytes.size(), size);
        return bytes;
    }
};

TEST_F(OwnPorts, NameTheSystemsDescription)
{
    EXPECT_EQ("Local:ZV_SystemGenTL.xml;88888888;d3f", url(system->handle()));
    EXPECT_EQ(url(system->handle()), plain_url(system->handle()));
}

TEST_F(OwnPorts, ServeTheSystemsDescriptionInOneRead)
{
    const std::string text = description(system->handle());
    EXPECT_EQ(3391U, text.size());
    EXPECT_EQ(0U, text.find("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<RegisterDescription"));
    const std::string end = "\r\n</RegisterDescription>";
    EXPECT_EQ(end, text.substr(text.size() - end.size()));
}

TEST_F(OwnPorts, ServeABuffersDescriptionInOneRead)
{
    Camera camera(gentl, system->open_interface("FG0"), "Device00");
    camera.announce(1);
    EXPECT_EQ("Local:ZV_BufferGenTL.zip;88888888;280", url(camera.buffers()[0]));
    const std::string archive = description(camera.buffers()[0]);
    EXPECT_EQ(640U, archive.size());
    EXPECT_EQ("PK\3\4", archive.substr(0, 4));
}

TEST_F(OwnPorts, HaveNothingBeyondADescription)
{
    char byte = 0;
    size_t size = 1;
    EXPECT_EQ(GC_ERR_INVALID_ADDRESS, gentl.GCReadPort(system->handle(), 0x888895C7, &byte, &size));
}

} // namespace
