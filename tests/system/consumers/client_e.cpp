#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "system/consumers/Client.h"

// A consumer that takes the descriptions of all six kinds of module, reads every feature, writes what it can,
// and then streams with what it has set.

namespace {

using namespace GenTL;
using namespace zvclient;

class ClientE : Client {
public:
    using Client::Client;

    void run()
    {
        open_system(1000);
        use_features("system", m_system);
        for (const std::string& id : interface_ids()) {
            open_interface(id, 1000);
            use_features("interface", m_interface);
            for (const std::string& device : device_ids())
                use_device(device);
            need(gentl.IFClose(m_interface), "IFClose");
        }
        need(gentl.TLClose(m_system), "TLClose");
        need_true(m_cameras == 3, "there are not three cameras");
    }

private:
    std::string text(const char* call, const TextQuery& query) const override
    {
        return text_after_its_size(call, query, 0);
    }

    void use_features(const char* name, PORT_HANDLE handle) const
    {
        const ExactPort port{gentl, handle};
        const auto features = features_of(describe(port), port);
        const int read = features->read_every();
        const int written = features->write_every();
        std::cout << name << ": " << read << " features read, " << written << " written\n";
    }

    void use_device(const std::string& id)
    {
        open_device(id, DEVICE_ACCESS_EXCLUSIVE);
        use_features("device", m_device);
        use_features("remote device", m_remote);
        open_stream(stream_id());
        use_features("stream", m_stream);
        acquire();
        need(gentl.DSClose(m_stream), "DSClose");
        need(gentl.DevClose(m_device), "DevClose");
        ++m_cameras;
    }

    void acquire()
    {
        const ExactPort port{gentl, m_remote};
        const auto camera = features_of(describe(port), port);
        camera->set("ExposureTime", "10000");
        m_payload = static_cast<std::size_t>(camera->integer("PayloadSize"));
        for (auto& frame : make_memory(4)) {
            const BUFFER_HANDLE buffer = announce(frame, frame.data());
            const ExactPort port_of_buffer{gentl, buffer};
            need_true(features_of(describe(port_of_buffer), port_of_buffer)->is_empty(),
                      "a buffer has features");
            queue(buffer);
        }
        const EVENT_HANDLE event = register_event();
        start();
        FrameCheck check;
        receive(10, event, 1000,
                [&](const EVENT_NEW_BUFFER_DATA& data) { check.expect_newer(data.pUserPointer, m_payload); });
        stop();
        unregister_event();
        flush(ACQ_QUEUE_ALL_DISCARD);
        revoke_the_first_until_none_is_left();
    }

    int m_cameras{0};
};

} // namespace

void zvclient::run_client_e(const Functions& gentl) { ClientE{gentl}.run(); }
