#include "zvgentl/ErrorGuide.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <fmt/core.h>

#include "genapi/values.h"
#include "gentl/Error.h"
#include "gentl/texts.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

struct CodeRow {
    GC_ERROR code;
    const char* meaning;
    const char* remedy;
};

constexpr CodeRow code_rows[] = {
    {GC_ERR_SUCCESS, "The function did what was asked.", "Nothing has to be done."},
    {GC_ERR_ERROR, "Something failed for which there is no other code.",
     "Read the text of GCGetLastError and the log at the time of the failure."},
    {GC_ERR_NOT_INITIALIZED, "GCInitLib was not called, or GCCloseLib was called since.",
     "Call GCInitLib once after loading the producer, before any other function."},
    {GC_ERR_NOT_IMPLEMENTED, "The producer does not have this function, command or kind of event.",
     "Ask for something else: treat the value as missing. `zvgentl info` shows what a producer answers."},
    {GC_ERR_RESOURCE_IN_USE, "What is asked for is in use already, by this application or by another one.",
     "Close it where it is open, or use the handle that is open already."},
    {GC_ERR_ACCESS_DENIED, "The hardware or its driver does not allow the access.",
     "Check that no other program has the device open and that it is switched on and connected."},
    {GC_ERR_INVALID_HANDLE, "The handle is null, of another kind, or of something that was closed.",
     "Use handles only between opening and closing, and after closing a parent none of those below it."},
    {GC_ERR_INVALID_ID, "There is nothing with this ID.",
     "Update the list and ask for the IDs again; `zvgentl list` shows them."},
    {GC_ERR_NO_DATA, "There is no data to answer with.", "Try again after something has happened."},
    {GC_ERR_INVALID_PARAMETER, "An argument is null or has a value that is not allowed.",
     "Check the arguments of the call: pointers for results must not be null."},
    {GC_ERR_IO, "The communication with the device failed.",
     "Check cables, power and the state of the link, then open the device again."},
    {GC_ERR_TIMEOUT, "What was waited for did not happen in time.",
     "Check that the acquisition is started, that buffers are queued and that triggers arrive; or wait "
     "longer."},
    {GC_ERR_ABORT, "A wait was ended on purpose.",
     "Nothing has to be done if EventKill was called or the stream closed."},
    {GC_ERR_INVALID_BUFFER, "There are no buffers that can be used, or the buffer cannot be used.",
     "Announce and queue buffers that are at least as large as the payload."},
    {GC_ERR_NOT_AVAILABLE, "The value or resource exists, but cannot be had at the moment.",
     "Try again in another state: with the device open, or the acquisition started or stopped."},
    {GC_ERR_INVALID_ADDRESS, "There is no register at this address.",
     "Use the addresses of the register description; `zvgentl describe FEATURE` shows them."},
    {GC_ERR_BUFFER_TOO_SMALL, "The memory for the result is too small; the size that is needed was returned.",
     "Ask for the size first, with a null pointer for the result, and call again with as much memory."},
    {GC_ERR_INVALID_INDEX, "The index is not below the number of entries.",
     "Ask for the number again; indices count from 0."},
    {GC_ERR_PARSING_CHUNK_DATA, "The buffer holds no chunk data, or it is damaged.",
     "Check that chunk data is switched on in the camera and that the frame is complete."},
    {GC_ERR_INVALID_VALUE, "The value that was to be written is not allowed.",
     "Look up the range; `zvgentl describe FEATURE` shows it."},
    {GC_ERR_RESOURCE_EXHAUSTED, "A resource, such as handles or bandwidth, is used up.",
     "Close what is no longer needed."},
    {GC_ERR_OUT_OF_MEMORY, "There is not enough memory.", "Announce fewer or smaller buffers."},
    {GC_ERR_BUSY, "The module is working on something else.", "Try again a little later."},
};

// What our producer answers where the general meaning does not tell the cause. Sorted by function.
constexpr FunctionGuide function_rows[] = {
    {"DSAllocAndAnnounceBuffer", GC_ERR_RESOURCE_IN_USE,
     "The memory could not be allocated, or the grabber library did not accept the buffer.",
     "Ask for smaller or fewer buffers; STREAM_INFO_PAYLOAD_SIZE is the size of a frame."},
    {"DSAnnounceBuffer", GC_ERR_RESOURCE_IN_USE, "The grabber library did not accept the buffer.",
     "Check size and alignment of the memory: STREAM_INFO_PAYLOAD_SIZE and STREAM_INFO_BUF_ALIGNMENT."},
    {"DSFlushQueue", GC_ERR_NOT_IMPLEMENTED, "The operation is none that the producer knows.",
     "Use one of the operations ACQ_QUEUE_... of the standard."},
    {"DSGetBufferChunkData", GC_ERR_NOT_IMPLEMENTED, "Buffers of this producer hold no chunk data.",
     "Do without; STREAM_INFO_NUM_CHUNKS_MAX is 0."},
    {"DSGetBufferPartInfo", GC_ERR_INVALID_PARAMETER,
     "A pointer is null, or the index of the part is not 0: buffers have one part.", "Ask for part 0."},
    {"DSRevokeBuffer", GC_ERR_RESOURCE_IN_USE, "The buffer is in one of the queues of the acquisition.",
     "Stop the acquisition and call DSFlushQueue with ACQ_QUEUE_ALL_DISCARD first."},
    {"DSStartAcquisition", GC_ERR_INVALID_BUFFER, "No buffer is announced.",
     "Announce and queue at least STREAM_INFO_BUF_ANNOUNCE_MIN buffers."},
    {"DSStartAcquisition", GC_ERR_INVALID_PARAMETER, "The number of frames is 0.",
     "Ask for at least one frame, or for GENTL_INFINITE."},
    {"DSStartAcquisition", GC_ERR_RESOURCE_IN_USE,
     "The acquisition is running already, or the grabber library could not start it.",
     "Stop the acquisition first; if it was stopped, the log of the grabber library tells the cause."},
    {"DevClose", GC_ERR_ERROR, "The grabber library could not close the camera.",
     "Close its streams first; the log tells more."},
    {"DevOpenDataStream", GC_ERR_NOT_AVAILABLE, "The grabber library could not open the stream.",
     "Check that no other program streams from this camera."},
    {"EventGetData", GC_ERR_ABORT, "EventKill was called, or the event was unregistered.",
     "Nothing has to be done if that was intended."},
    {"EventGetData", GC_ERR_TIMEOUT, "No frame arrived in time.",
     "Check that the acquisition is started, that the camera is started by AcquisitionStart, that buffers "
     "are "
     "queued, and that triggers arrive (TriggerMode)."},
    {"EventGetData", GC_ERR_NOT_AVAILABLE, "The stream, the device or the interface of the event is closed.",
     "Unregister events before closing their stream."},
    {"GCGetPortURL", GC_ERR_NOT_AVAILABLE, "The grabber library does not give the place of the description.",
     "Check the link of the camera: `zvgentl list`."},
    {"GCInitLib", GC_ERR_RESOURCE_IN_USE, "GCInitLib was called before without GCCloseLib.",
     "Call it once in a process; libraries that share the producer must agree who does."},
    {"GCReadPort", GC_ERR_ACCESS_DENIED,
     "The grabber library could not read the register: there is none, it is write only, or the camera does "
     "not answer.",
     "Compare the address with the description (`zvgentl describe FEATURE`) and check the link."},
    {"GCReadPort", GC_ERR_INVALID_ADDRESS, "The address is outside the description of the module.",
     "The system and buffers have no registers but those that hold their description; `zvgentl info` shows "
     "its address and size."},
    {"GCReadPortStacked", GC_ERR_NOT_IMPLEMENTED, "The system and buffers have no stacked access.",
     "Use GCReadPort."},
    {"GCRegisterEvent", GC_ERR_INVALID_HANDLE, "The handle is not that of an open stream.",
     "Register events of streams; other modules of this producer have none."},
    {"GCRegisterEvent", GC_ERR_NOT_IMPLEMENTED, "A stream does not have events of this kind.",
     "Register EVENT_NEW_BUFFER."},
    {"GCWritePort", GC_ERR_ACCESS_DENIED,
     "The grabber library could not write the register: there is none, it is read only or locked, the value "
     "is not allowed, or the camera does not answer.",
     "Compare with the description (`zvgentl describe FEATURE`); stop the acquisition if the feature is "
     "locked."},
    {"GCWritePort", GC_ERR_INVALID_ADDRESS, "The address does not fit into 32 bits.",
     "Use the addresses of the description."},
    {"GCWritePort", GC_ERR_NOT_IMPLEMENTED, "The registers of the system and of buffers are read only.",
     "Write to the port of the interface, the device or the camera."},
    {"GCWritePortStacked", GC_ERR_NOT_IMPLEMENTED, "The system and buffers have no stacked access.",
     "Use the port of the interface, the device or the camera."},
    {"IFOpenDevice", GC_ERR_ACCESS_DENIED, "The grabber library could not open the camera.",
     "Check that no other program has it open, and that it is connected: `zvgentl list`."},
    {"IFOpenDevice", GC_ERR_INVALID_ID, "The interface has no camera with this ID.",
     "Call IFUpdateDeviceList after opening the interface, then ask for the IDs; `zvgentl list` shows them."},
    {"IFOpenDevice", GC_ERR_RESOURCE_IN_USE, "This application has the camera open already.",
     "Use the handle that it has, or close it with DevClose first."},
    {"IFUpdateDeviceList", GC_ERR_ERROR, "The grabber library could not look for cameras.",
     "Check the grabber and its driver; the log tells more."},
    {"IFUpdateDeviceList", GC_ERR_NOT_AVAILABLE, "A camera was found, but does not tell who it is.",
     "Check its cable and power, then update the list again."},
    {"TLOpen", GC_ERR_RESOURCE_IN_USE, "The system is open already.",
     "Open it once in a process and share the handle."},
    {"TLOpenInterface", GC_ERR_ACCESS_DENIED, "The grabber library could not open the grabber.",
     "Check that no other program has it open and that its driver is running."},
    {"TLOpenInterface", GC_ERR_INVALID_ID, "There is no grabber with this ID.",
     "Call TLUpdateInterfaceList and ask for the IDs; `zvgentl list` shows them."},
    {"TLOpenInterface", GC_ERR_RESOURCE_IN_USE, "This application has the interface open already.",
     "Use the handle, which this producer returns with the error, or close it with IFClose first."},
};

std::vector<std::string> words_of(const std::string& text)
{
    std::vector<std::string> words(1);
    for (const char letter : text)
        if (std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_' || letter == '-')
            words.back() += letter;
        else if (!words.back().empty())
            words.emplace_back();
    if (words.back().empty())
        words.pop_back();
    return words;
}

/// A negative number, or the 32 bits of one in hexadecimal, as the log writes it.
std::optional<GC_ERROR> number_of(const std::string& word)
{
    const char* const end = word.data() + word.size();
    if (word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X')) {
        std::uint32_t bits = 0;
        const auto [stopped, error] = std::from_chars(word.data() + 2, end, bits, 16);
        const bool is_number = error == std::errc() && stopped == end;
        return is_number && bits >= 0x80000000U ? std::optional(static_cast<GC_ERROR>(bits)) : std::nullopt;
    }
    GC_ERROR code = 0;
    const auto [stopped, error] = std::from_chars(word.data(), end, code);
    const bool is_code = error == std::errc() && stopped == end && (code < 0 || word == "0");
    return is_code ? std::optional(code) : std::nullopt;
}

std::optional<GC_ERROR> named(const std::string& word)
{
    const std::string wanted = lower_case(word);
    for (const CodeRow& row : code_rows) {
        const std::string name = lower_case(error_name(row.code));
        // "error" alone is a word of many messages
        if (wanted == name || (wanted != "error" && wanted != "success" && "gc_err_" + wanted == name))
            return row.code;
    }
    return std::nullopt;
}

/// The function that a word names, spelled as in the table; empty for another word. Functions that are not in
/// the table are known by their first letters.
std::string function_of(const std::string& word)
{
    for (const FunctionGuide& row : function_rows)
        if (lower_case(row.function) == lower_case(word))
            return row.function;
    for (const std::string prefix : {"GC", "TL", "IF", "Dev", "DS", "Event"}) {
        const bool has_more = word.size() > prefix.size() + 1 && word.compare(0, prefix.size(), prefix) == 0;
        if (has_more && std::isupper(static_cast<unsigned char>(word[prefix.size()])) != 0 &&
            std::islower(static_cast<unsigned char>(word[prefix.size() + 1])) != 0)
            return word;
    }
    return {};
}

ErrorGuide guide_of(GC_ERROR code, const std::vector<std::string>& functions)
{
    ErrorGuide guide{code, error_name(code), {}, {}, {}};
    const auto* const row = std::find_if(std::begin(code_rows), std::end(code_rows),
                                         [code](const CodeRow& candidate) { return candidate.code == code; });
    if (row != std::end(code_rows)) {
        guide.meaning = row->meaning;
        guide.remedy = row->remedy;
    } else if (code <= GC_ERR_CUSTOM_ID) {
        guide.meaning = "A code of the producer's own.";
        guide.remedy = "Look it up in the producer's manual; GCGetLastError may say more.";
    } else {
        guide.meaning = "The standard has no such code.";
        guide.remedy = "Read the text of GCGetLastError and the log of the producer.";
    }
    for (const FunctionGuide& candidate : function_rows) {
        const bool is_meant = functions.empty() || std::find(functions.begin(), functions.end(),
                                                             candidate.function) != functions.end();
        if (candidate.code == code && is_meant)
            guide.functions.push_back(candidate);
    }
    return guide;
}

[[noreturn]] void refuse(const std::string& text)
{
    std::vector<std::string> names;
    for (const CodeRow& row : code_rows)
        names.push_back(error_name(row.code));
    for (const FunctionGuide& row : function_rows)
        names.emplace_back(row.function);
    const auto similar = near_names(text, names);
    throw std::runtime_error("\"" + text +
                             "\" holds no error code and no function that has one of its own; " +
                             (similar.empty() ? "write a number such as -1004 or a name such as GC_ERR_IO"
                                              : "did you mean " + joined(similar, " or ") + "?"));
}

template <class Element>
void add_once(std::vector<Element>& list, const Element& element)
{
    if (std::find(list.begin(), list.end(), element) == list.end())
        list.push_back(element);
}

} // namespace

std::vector<ErrorGuide> explain(const std::string& text)
{
    std::vector<GC_ERROR> codes;
    std::vector<std::string> functions;
    for (const std::string& word : words_of(text)) {
        const auto number = number_of(word);
        const auto code = number ? number : named(word);
        if (code)
            add_once(codes, *code);
        else if (const std::string function = function_of(word); !function.empty())
            add_once(functions, function);
    }
    if (codes.empty() && lower_case(text) == "error")
        codes.push_back(GC_ERR_ERROR);
    if (codes.empty())
        for (const FunctionGuide& row : function_rows)
            if (std::find(functions.begin(), functions.end(), row.function) != functions.end())
                add_once(codes, row.code);
    if (codes.empty())
        refuse(text);
    std::vector<ErrorGuide> guides;
    guides.reserve(codes.size());
    for (const GC_ERROR code : codes)
        guides.push_back(guide_of(code, functions));
    return guides;
}

std::string to_text(const std::vector<ErrorGuide>& guides)
{
    std::string text;
    for (const ErrorGuide& guide : guides) {
        text += fmt::format("{}{} ({})\n  {}\n  {}\n", text.empty() ? "" : "\n", guide.name, guide.code,
                            guide.meaning, guide.remedy);
        for (const FunctionGuide& row : guide.functions)
            text += fmt::format("  {}:\n    {}\n    {}\n", row.function, row.cause, row.remedy);
    }
    return text;
}

} // namespace zvgentl::tool
