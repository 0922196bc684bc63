// What the port functions answer on the ports of open modules.
#include "Port_fixtures.h"

#include <functional>
#include <ostream>

namespace zvtest {

namespace {

/// A port function, called with arguments that are right.
struct PortFunction {
    const char* name;
    std::function<GC_ERROR(PORT_HANDLE)> call;

    friend std::ostream& operator<<(std::ostream& out, const PortFunction& function)
    {
        return out << function.name;
    }
};

GC_ERROR call_stacked(GC_ERROR (*function)(PORT_HANDLE, PORT_REGISTER_STACK_ENTRY*, size_t*),
                      PORT_HANDLE handle)
{
    uint32_t data = 0;
    PORT_REGISTER_STACK_ENTRY entry = {0x1000, &data, sizeof data};
    size_t count = 1;
    return function(handle, &entry, &count);
}

std::vector<PortFunction> port_functions()
{
    return {
        {"GCReadPort",
         [](PORT_HANDLE handle) {
             uint32_t data = 0;
             size_t size = sizeof data;
             return GCReadPort(handle, 0x1000, &data, &size);
         }                                                                                                },
        {"GCWritePort",
         [](PORT_HANDLE handle) {
             const uint32_t data = 0;
             size_t size = sizeof data;
             return GCWritePort(handle, 0x1000, &data, &size);
         }                                                                                                },
        {"GCReadPortStacked",  [](PORT_HANDLE handle) { return call_stacked(GCReadPortStacked, handle); } },
        {"GCWritePortStacked", [](PORT_HANDLE handle) { return call_stacked(GCWritePortStacked, handle); }},
        {"GCGetPortURL",
         [](PORT_HANDLE handle) {
             size_t size = 0;
             return GCGetPortURL(handle, nullptr, &size);
         }                                                                                                },
        {"GCGetNumPortURLs",
         [](PORT_HANDLE handle) {
             uint32_t count = 0;
             return GCGetNumPortURLs(handle, &count);
         }                                                                                                },
        {"GCGetPortURLInfo",
         [](PORT_HANDLE handle) {
             INFO_DATATYPE type = 0;
             size_t size = 0;
             return GCGetPortURLInfo(handle, 0, URL_INFO_URL, &type, nullptr, &size);
         }                                                                                                },
        {"GCGetPortInfo",
         [](PORT_HANDLE handle) {
             INFO_DATATYPE type = 0;
             size_t size = 0;
             return GCGetPortInfo(handle, PORT_INFO_MODULE, &type, nullptr, &size);
         }                                                                                                },
    };
}

class PortFunctions : public OpenPorts, public testing::WithParamInterface<PortFunction> {};

INSTANTIATE_TEST_SUITE_P(All, PortFunctions, testing::ValuesIn(port_functions()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(PortFunctions, AreNotImplementedForAnyKind)
{
    const PortFunction function = GetParam();
    for (const Port& port_of_kind : ports()) {
        SCOPED_TRACE(port_of_kind.kind);
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, function.call(port_of_kind.handle));
        EXPECT_LOGGED(port_error_exit(function.name, "GC_ERR_NOT_IMPLEMENTED", -1003));
        EXPECT_TRUE(fake.calls().empty());
    }
}

} // namespace

} // namespace zvtest
