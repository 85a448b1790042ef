// Any property list: what is read of it can be written, and reads the same again.

#include "Platform/Linux/Foundation/PropertyList.h"
#include "Require.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto node = NS::dictionaryPlist(std::string(bytes, bytes + size));
    if (!node) {
        return 0;
    }
    const auto value = NS::valueOfPlist(node.get());
    require(value.dictionary(), "a dictionary");
    const auto written = NS::plistOfValue(value);
    if (!written) {
        return 0; // data or dates in it, or nested too deeply
    }
    const auto readAgain = NS::dictionaryPlist(NS::xmlOfPlist(written.get()));
    require(readAgain != nullptr, "what was written can be read");
    return 0;
}
