// Any manifest: what is read of it holds what the rest of the updater relies on.

#include "Require.h"
#include "Updater.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(bytes, bytes + size);
    const auto release = Updater::parseManifest(text);
    if (!release) {
        return 0;
    }
    require(std::ranges::none_of(release->sha256, [](char c) { return c >= 'A' && c <= 'Z'; }), "lower case");
    if (text.find('\0') != text.npos) {
        return 0; // in UTF-16 or UTF-32, where what follows is said otherwise
    }
    for (const char* key : {"latest", "version", "file", "sha256"}) {
        require(text.find(key) != text.npos || text.find("\\u") != text.npos, "a key that is not there");
    }
    const auto again = Updater::parseManifest(text + " \r\n\t");
    require(again && again->version == release->version && again->file == release->file &&
                again->sha256 == release->sha256 && again->size == release->size && again->notes == release->notes,
            "white space behind it changes nothing");
    require(!Updater::isNewer(release->version, release->version), "newer than itself");
    return 0;
}
