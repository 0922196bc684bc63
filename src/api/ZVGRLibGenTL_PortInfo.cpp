#include <optional>
#include <string>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/InfoTable.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "api/producer_info.h"
#include "log/Log.h"
#include "port/Port.h"
#include "port/routing.h"

// Port functions that describe a port: its URL and its information.

namespace GenTL {

using namespace zvgentl;

namespace {

/// What a port says about itself, the same for every kind of module: also that it can be written and has both
/// byte orders, whether that is true or not.
constexpr InfoRow<Port> port_info[] = {
    {PORT_INFO_ID, [](const Port& port) { return InfoValue::string(port.getId()); }},
    {PORT_INFO_VENDOR, [](const Port&) { return InfoValue::string(producer_vendor); }},
    {PORT_INFO_MODEL, [](const Port&) { return InfoValue::string(producer_model); }},
    {PORT_INFO_TLTYPE, [](const Port&) { return InfoValue::string(TLTypeMixedName); }},
    {PORT_INFO_MODULE, [](const Port& port) { return InfoValue::string(port.kind_name()); }},
    {PORT_INFO_LITTLE_ENDIAN, [](const Port&) { return InfoValue::bool8(true); }},
    {PORT_INFO_BIG_ENDIAN, [](const Port&) { return InfoValue::bool8(true); }},
    {PORT_INFO_ACCESS_READ, [](const Port&) { return InfoValue::bool8(true); }},
    {PORT_INFO_ACCESS_WRITE, [](const Port&) { return InfoValue::bool8(true); }},
    {PORT_INFO_ACCESS_NA, [](const Port&) { return InfoValue::bool8(false); }},
    {PORT_INFO_ACCESS_NI, [](const Port&) { return InfoValue::bool8(false); }},
    {PORT_INFO_VERSION, [](const Port&) { return InfoValue::string("1.0"); }},
    {PORT_INFO_PORTNAME, [](const Port&) { return InfoValue::string("Device"); }},
};

/// How GCGetPortURLInfo answers when the grabber library gives no URL: each kind of port in its own words.
GC_ERROR fail_without_url(const ApiCall& call, const Port& port)
{
    if (port.kind() == ModuleKind::stream) {
        call.log_info(At{808}, "GCGetPortURLInfo [GC_ERR_NOT_AVAILABLE]: getting xml string failed");
        return GC_ERR_NOT_AVAILABLE;
    }
    if (port.kind() == ModuleKind::remote_device) {
        call.log_info(At{810}, "GCGetPortURLInfo [GC_ERR_NOT_AVAILABLE]: getting xml string address failed");
        return GC_ERR_NOT_AVAILABLE;
    }
    call.log_error(At{812}, "info= %d, getting xml string failed", int{URL_INFO_URL});
    return call.fail(At{813}, GC_ERR_NOT_AVAILABLE);
}

/// Contract: an ID is given in the form that the consumer left in the type, unlike everything else. Nothing
/// for a form that it does not have. Pinned by PortInformation.GivesAnIdInTheFormOfTheIncomingType.
std::optional<InfoValue> id_in_form(INFO_DATATYPE form, InfoValue id)
{
    if (form == INFO_DATATYPE_STRING)
        return id;
    if (form == INFO_DATATYPE_BOOL8)
        return InfoValue::bool8(false);
    return std::nullopt;
}

} // namespace

GC_API GCGetPortURL(PORT_HANDLE hPort, char* sURL, size_t* piSize)
try {
    const ApiCall call{"GCGetPortURL"};
    call.log(At{820}, "Enter GCGetPortURL, port handle=0x%016llX", address(hPort));
    if (!call.library_is_open(At{822}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piSize))
        return call.fail(At{825}, GC_ERR_INVALID_PARAMETER);
    const Port port = find_port(hPort);
    if (!port) {
        call.log_error(At{827}, "case %s: GC_ERR_NOT_IMPLEMENTED", port.kind_name());
        return GC_ERR_NOT_IMPLEMENTED;
    }
    const std::optional<std::string> url = url_of(port);
    if (!url) {
        call.log_error(At{832}, "Getting xml url failed for %s", port.kind_name());
        return call.fail(At{833}, GC_ERR_NOT_AVAILABLE);
    }

    // Contract: two zeros end the URL, where GCGetPortURLInfo has one. Pinned by
    // PortUrls.NeedOneByteMoreOnTheirOwn.
    const InfoValue value = InfoValue::string(*url + '\0');
    INFO_DATATYPE type = INFO_DATATYPE_STRING;
    const InfoOutput output{&type, sURL, piSize};
    const GC_ERROR error = output.write(value, call, URL_INFO_URL, NumberLog::silent);
    if (error != GC_ERR_SUCCESS)
        return error;
    call.log(At{843}, "Found url %s for %s", url->c_str(), port.kind_name());
    return call.succeed(At{844}, "Exit GCGetPortURL");
} catch (...) {
    return after_exception("GCGetPortURL");
}

GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs)
try {
    const ApiCall call{"GCGetNumPortURLs"};
    call.log(At{850}, "Enter GCGetNumPortURLs, handle=0x%016llX", address(hPort));
    if (!call.library_is_open(At{852}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piNumURLs)) // without a log line
        return GC_ERR_INVALID_PARAMETER;
    const Port port = find_port(hPort);
    call.log_info(At{857}, "Get URL count for device type %s", port.kind_name());
    if (!port) {
        *piNumURLs = 0;
        call.log_error(At{860}, "case %s: GC_ERR_NOT_IMPLEMENTED", port.kind_name());
        return call.fail(At{862}, GC_ERR_NOT_IMPLEMENTED);
    }
    *piNumURLs = 1;
    return call.succeed(At{865}, "Exit URL count=%d", static_cast<int>(*piNumURLs));
} catch (...) {
    return after_exception("GCGetNumPortURLs");
}

GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"GCGetPortURLInfo"};
    call.log(At{880}, "Enter GCGetPortURLInfo, handle=0x%016llX, URL index=%d, info=%d, size=%d",
             address(hPort), static_cast<int>(iURLIndex), iInfoCmd, logged_size(piSize));
    if (!call.library_is_open(At{882}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{885}, GC_ERR_INVALID_PARAMETER);
    if (iURLIndex != 0) {
        // Contract: the text names another code than the one returned. Pinned by
        // GCGetPortURLInfo.RefusesOtherUrls.
        call.log_error(At{888}, "GCGetPortURLInfo [GC_ERR_INVALID_PARAMETER]: Invalid URL index=%d",
                       static_cast<int>(iURLIndex));
        return GC_ERR_INVALID_INDEX;
    }
    const Port port = find_port(hPort);
    call.log_info(At{893}, "Get URL info for device type %s", port.kind_name());
    if (!port) {
        call.log_error(At{895}, "case %s: GC_ERR_NOT_IMPLEMENTED", port.kind_name());
        return call.fail(At{896}, GC_ERR_NOT_IMPLEMENTED);
    }
    if (iInfoCmd != URL_INFO_URL)
        return output.refuse(call, At{898}, At{899}, iInfoCmd);

    // Contract: also when there is no URL. Pinned by
    // PortUrls.AreNotAvailableAsInformationWhenTheLibraryRefuses.
    *piType = INFO_DATATYPE_STRING;
    const std::optional<std::string> url = url_of(port);
    if (!url)
        return fail_without_url(call, port);
    call.log(At{905}, "GCGetPortURLInfo URL=%s", url->c_str());
    const GC_ERROR error = output.write(InfoValue::string(*url), call, iInfoCmd, NumberLog::silent);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{907}, "Exit GCGetPortURLInfo");
} catch (...) {
    return after_exception("GCGetPortURLInfo");
}

GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                     size_t* piSize)
try {
    const ApiCall call{"GCGetPortInfo"};
    call.log(At{910}, "Enter GCGetPortInfo, info=%d, buffer size=%d", iInfoCmd, logged_size(piSize));
    if (!call.library_is_open(At{912}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{915}, GC_ERR_INVALID_PARAMETER);
    const Port port = find_port(hPort);
    if (!port) // without a log line
        return GC_ERR_INVALID_HANDLE;
    const auto* const row = find_row(port_info, iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{917}, At{918}, iInfoCmd);

    std::optional<InfoValue> value = row->value(port);
    if (iInfoCmd == PORT_INFO_ID)
        value = id_in_form(*piType, *value);
    if (!value) { // without a log line
        *piSize = 0;
        return GC_ERR_NOT_IMPLEMENTED;
    }
    const size_t room = *piSize;
    const GC_ERROR error = output.write(*value, call, iInfoCmd, NumberLog::silent);
    if (error == GC_ERR_BUFFER_TOO_SMALL && !value->is_string())
        call.log_info(At{925}, "GCGetPortInfo - GC_ERR_BUFFER_TOO_SMALL, handle=%s, info= %d, size=%d",
                      port.kind_name(), iInfoCmd, low32_signed(room));
    if (error != GC_ERR_SUCCESS)
        return error;
    return call.succeed(At{929}, "Exit GCGetPortInfo, handle=%s, info= %d", port.kind_name(), iInfoCmd);
} catch (...) {
    return after_exception("GCGetPortInfo");
}

} // namespace GenTL
