#include "hostile/input.h"
#include "logger/SettingsText.h"

using namespace zvlog;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = zvhostile::text_of(data, size);
    for (const char* const key : {"GenTL.Stream.BufferAllocMin", "a", "b"}) {
        if (find_setting(text, key).is_present)
            continue;
        const std::string longer = with_setting_added(text, key, 7, "what it means");
        zvhostile::require(longer.size() < text.size() + 1000, "one key adds little");
        zvhostile::require(find_setting(longer, key).number == 7U, "a key that was added is found");
    }
    // A key as somebody else might name it.
    const std::string key = text.substr(0, text.find('='));
    if (is_storable_key(key))
        zvhostile::require(find_setting(with_setting_added("", key, 8, ""), key).number == 8U,
                           "a storable key is stored");
    return 0;
}
