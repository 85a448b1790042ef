// Any Info.plist: where the library that reads preferences finds texts in it, they are read the same once it has
// written them.

#include "Platform/Foundation/PropertyListValue.h"
#include "Platform/Linux/Foundation/Plist.h"
#include "Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

const std::vector<std::string> wanted = {"CFBundleIdentifier", "CFBundleShortVersionString"};

/// A file in memory, for what is read from one.
std::optional<NS::Dictionary> read(const std::string& bytes) {
    static const int file = memfd_create("Info.plist", 0);
    require(ftruncate(file, 0) == 0 &&
                pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
            "a file in memory");
    static const auto url = NS::URL::fileURLWithPath("/proc/self/fd/" + std::to_string(file));
    return NS::dictionaryWithContentsOfURL(url, wanted);
}

const std::string* textIn(const NS::Dictionary& dictionary, const std::string& key) {
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? nullptr : entry->second.string();
}

void requireTextsOf(const NS::Dictionary& expected, const std::optional<NS::Dictionary>& found) {
    require(found.has_value(), "what was written can be read");
    for (const auto& key : wanted) {
        const auto* text = textIn(expected, key);
        const auto* same = textIn(*found, key);
        require(text ? same && *same == *text : !same, "the same text");
    }
}

std::string binaryOf(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node, &bytes, &size);
    const std::string binary(bytes, size);
    std::free(bytes);
    return binary;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(bytes, bytes + size);
    read(text);
    const auto node = Linux::dictionaryPlist(text);
    if (!node || (!text.starts_with("bplist") && text.find('\0') != text.npos)) { // which cuts the library's texts
        return 0;
    }
    const auto value = Linux::valueOfPlist(node.get());
    const auto written = Linux::plistOfValue(value);
    if (!written) {
        return 0; // data or dates in it, or nested too deeply
    }
    const auto xml = Linux::xmlOfPlist(written.get());
    if (std::ranges::any_of(xml, [](char c) { return c != '\n' && c != '\t' && (c < ' ' || c > '~'); })) {
        return 0; // the library writes what is no XML
    }
    requireTextsOf(*value.dictionary(), read(xml));
    requireTextsOf(*value.dictionary(), read(binaryOf(written.get())));
    return 0;
}
