// Any property list: what is read of it can be written, and reads the same again.

#include "Platform/Linux/Foundation/Plist.h"
#include "Require.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto node = Linux::dictionaryPlist(std::string(bytes, bytes + size));
    if (!node) {
        return 0;
    }
    const auto value = Linux::valueOfPlist(node.get());
    require(value.dictionary(), "a dictionary");
    const auto written = Linux::plistOfValue(value);
    if (!written) {
        return 0; // data or dates in it, or nested too deeply
    }
    const auto readAgain = Linux::dictionaryPlist(Linux::xmlOfPlist(written.get()));
    require(readAgain != nullptr, "what was written can be read");
    return 0;
}
