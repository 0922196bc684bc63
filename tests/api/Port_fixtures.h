#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "GenTL/GenTL.h"

#include "api/lines.h"

// A tree with one open module of each kind, each of them a port.

namespace zvtest {

/// System, interface, device, remote device, stream and buffer are open; so is an event, which is not a port.
class OpenPorts : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        if (HasFatalFailure())
            return;
        announce();
        register_event();
        forget();
    }

    struct Port {
        PORT_HANDLE handle;
        const char* kind; // as log lines name it
    };
    std::vector<Port> ports() const
    {
        return {
            {tl, "TLSystem"}, {iface, "TLInterface"}, {dev, "TLDevice"},
            {port, "Device"}, {ds, "TLDataStream"},   {buffers[0]->handle, "TLBuffer"},
        };
    }
    /// The ports that lead to the grabber library, and the handle that it knows them by.
    struct LibraryPort {
        PORT_HANDLE handle;
        const char* kind;
        uint32_t library;
        std::string side; // "Grabber" or "Camera", as the register functions are named
    };
    std::vector<LibraryPort> library_ports() const
    {
        return {
            {iface, "TLInterface", grabber(), "Grabber"},
            {dev, "TLDevice", grabber(), "Grabber"},
            {ds, "TLDataStream", camera(), "Camera"},
            {port, "Device", camera(), "Camera"},
        };
    }
    /// The ports that the producer serves itself.
    std::vector<PORT_HANDLE> own_ports() const { return {tl, buffers[0]->handle}; }
};

} // namespace zvtest
