#include "hostile/input.h"
#include "simulator/Configuration.h"

using namespace zvsim;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Environment environment;
    environment.file.path = "/grabbers.yaml";
    environment.file.text = zvhostile::text_of(data, size);
    const auto configuration = Configuration::make(environment);
    zvhostile::require(configuration->errors.empty() || configuration->grabbers.empty(),
                       "errors leave no grabbers");
    zvhostile::require(configuration->errors.size() < 100, "errors are limited in number");
    for (const std::string& error : configuration->errors)
        zvhostile::require(error.size() < 10000 && error.find('\n') == std::string::npos,
                           "an error is one line");
    return 0;
}
