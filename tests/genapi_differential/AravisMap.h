#pragma once

#include <memory>
#include <string>

#include <arv.h>

#include "genapi_differential/Memory.h"
#include "genapi_differential/Subject.h"

namespace zvgenapi::differential {

/// libaravis. The memory must outlive it.
class AravisMap : public Subject {
public:
    /// Throws std::runtime_error if it does not take the description.
    AravisMap(const std::string& description, Memory& memory);

    Answer ask(const std::string& node, InterfaceType kind, Question question) override;
    Answer set(const std::string& node, InterfaceType kind, const Setting& setting) override;

private:
    struct Release {
        void operator()(gpointer object) const noexcept { g_object_unref(object); }
    };

    ArvGcNode* find(const std::string& name) const;
    AccessMode access(ArvGcNode* node, GError** error) const;

    std::unique_ptr<ArvDevice, Release> m_device;
    std::unique_ptr<ArvGc, Release> m_map;
};

} // namespace zvgenapi::differential
