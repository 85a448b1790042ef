#include "Platform/Linux/Foundation/Plist.h"

#include "Platform/Linux/Foundation/BinaryPlist.h"
#include "Platform/Linux/Foundation/Files.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <locale.h>
#include <string_view>

namespace Linux {

namespace {

constexpr int maxContainers = 1000;
constexpr int maxBinaryNodes = 20000;
constexpr std::uint64_t maxBinaryText = std::uint64_t{16} << 20; // bytes, counted at each reference to them
constexpr int maxDepth = 100;

/// libplist reads and writes numbers in the locale of the thread, where 1.5 may be "1,5".
class CLocale {
public:
    CLocale() : previous_(uselocale(cLocale())) {}
    ~CLocale() { uselocale(previous_); }
    CLocale(const CLocale&) = delete;
    CLocale& operator=(const CLocale&) = delete;

private:
    static locale_t cLocale() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }
    locale_t previous_;
};

int occurrences(std::string_view text, std::string_view part) {
    int count = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

/// Counts opening tags without regard to closing tags and comments, so never too few.
bool isXMLWithinLimits(std::string_view bytes) {
    return occurrences(bytes, "<array") + occurrences(bytes, "<dict") <= maxContainers;
}

/// Walks a binary property list before libplist does. Objects that are referred to twice make a tree that doubles with
/// each level: for 24 arrays in 163 bytes libplist 2.2 takes 3.6 GB. Macs write preferences in this format, and people
/// copy them from there.
class BinaryTree {
public:
    explicit BinaryTree(std::string_view bytes) : plist_(bytes) {}

    bool isWithinLimits() { return isWithinLimits(plist_.top(), 0); }

private:
    bool isWithinLimits(const BinaryPlist::Object& object, int depth) {
        if (++nodes_ > maxBinaryNodes || depth > maxDepth) {
            return false;
        }
        if (object.kind < BinaryPlist::Data || object.kind == BinaryPlist::UID) {
            return true;
        }
        switch (object.kind) {
        case BinaryPlist::Array:
        case BinaryPlist::Set:
            return areWithinLimits(object, object.count, depth);
        case BinaryPlist::Dictionary:
            return areWithinLimits(object, 2 * object.count, depth);
        default:
            return isTextWithinLimits(object);
        }
    }

    /// libplist 2.2 ends the process when a key of UTF-16 has a null in it.
    bool isTextWithinLimits(const BinaryPlist::Object& object) {
        const auto text = plist_.content(object);
        if (!text) {
            return true; // it refuses that
        }
        text_ += text->size();
        if (text_ > maxBinaryText) {
            return false;
        }
        for (std::size_t at = 0; object.kind == BinaryPlist::UTF16 && at < text->size(); at += 2) {
            if ((*text)[at] == 0 && (*text)[at + 1] == 0) {
                return false;
            }
        }
        return true;
    }

    bool areWithinLimits(const BinaryPlist::Object& container, std::uint64_t references, int depth) {
        for (std::uint64_t index = 0; index < references; ++index) {
            if (!isWithinLimits(plist_.object(plist_.reference(container, index)), depth + 1)) {
                return false;
            }
        }
        return true;
    }

    const BinaryPlist plist_;
    int nodes_ = 0;
    std::uint64_t text_ = 0;
};

bool isWithinLimits(std::string_view bytes) {
    return BinaryPlist::isOne(bytes) ? BinaryTree(bytes).isWithinLimits() : isXMLWithinLimits(bytes);
}

Array arrayOfPlist(plist_t node) {
    Array result;
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        result.push_back(valueOfPlist(plist_array_get_item(node, i)));
    }
    return result;
}

Dictionary dictionaryOfPlist(plist_t node) {
    Dictionary result;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    while (true) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        if (!item) {
            break;
        }
        result.insert_or_assign(key, valueOfPlist(item));
        std::free(key);
    }
    std::free(iterator);
    return result;
}

std::string stringOfPlist(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string(text, length) : std::string();
}

template <class Number>
Number numberOfPlist(plist_t node, void (*get)(plist_t, Number*)) {
    Number result = 0;
    get(node, &result);
    return result;
}

/// libplist 2.2 gives the two's complement of negative numbers, and tells them from those above 2^63 only in writing.
PropertyListValue numberOfPlist(plist_t node) {
    const auto number = numberOfPlist(node, plist_get_uint_val);
    const bool isSigned = number <= std::uint64_t{std::numeric_limits<std::int64_t>::max()} ||
                          xmlOfPlist(node).find("<integer>-") != std::string::npos;
    return isSigned ? PropertyListValue(static_cast<std::int64_t>(number))
                    : PropertyListValue(static_cast<double>(number));
}

Plist plistOfValue(const PropertyListValue& value, int depth);

Plist plistOfArray(const Array& array, int depth) {
    Plist result(plist_new_array());
    for (const auto& value : array) {
        auto item = plistOfValue(value, depth);
        if (!item) {
            return nullptr;
        }
        plist_array_append_item(result.get(), item.release());
    }
    return result;
}

Plist plistOfDictionary(const Dictionary& dictionary, int depth) {
    Plist result(plist_new_dict());
    for (const auto& [key, value] : dictionary) {
        auto item = plistOfValue(value, depth);
        if (!item) {
            return nullptr;
        }
        plist_dict_set_item(result.get(), key.c_str(), item.release());
    }
    return result;
}

Plist plistOfValue(const PropertyListValue& value, int depth) {
    if (depth > maxDepth) {
        return nullptr;
    }
    if (const auto* array = value.array()) {
        return plistOfArray(*array, depth + 1);
    }
    if (const auto* dictionary = value.dictionary()) {
        return plistOfDictionary(*dictionary, depth + 1);
    }
    if (const auto* text = value.string()) {
        return Plist(plist_new_string(text->c_str()));
    }
    if (const auto* boolean = value.boolean()) {
        return Plist(plist_new_bool(*boolean));
    }
    if (const auto* real = value.real()) { // before integer(), which also takes reals that are whole
        return Plist(plist_new_real(*real));
    }
    if (const auto integer = value.integer()) {
        return Plist(plist_new_uint(static_cast<std::uint64_t>(*integer))); // libplist writes its sign
    }
    return nullptr;
}

} // namespace

Plist dictionaryPlist(const std::string& bytes) {
    if (!isWithinLimits(bytes)) {
        return nullptr;
    }
    const CLocale numbers;
    plist_t node = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    Plist result(node);
    return result && plist_get_node_type(node) == PLIST_DICT ? std::move(result) : nullptr;
}

std::string xmlOfPlist(plist_t node) {
    const CLocale numbers;
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    std::string result(text, length);
    plist_to_xml_free(text);
    return result;
}

PropertyListValue valueOfPlist(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return numberOfPlist(node, plist_get_bool_val) != 0;
    case PLIST_UINT:
        return numberOfPlist(node);
    case PLIST_REAL:
        return numberOfPlist(node, plist_get_real_val);
    case PLIST_STRING:
        return stringOfPlist(node);
    case PLIST_ARRAY:
        return arrayOfPlist(node);
    case PLIST_DICT:
        return dictionaryOfPlist(node);
    default:
        return {};
    }
}

Plist plistOfValue(const PropertyListValue& value) {
    return plistOfValue(value, 0);
}

std::optional<Dictionary> dictionaryWithContentsOfFile(const std::filesystem::path& file) {
    std::string bytes;
    if (readFile(file, bytes)) {
        return std::nullopt;
    }
    const auto node = dictionaryPlist(bytes);
    return node ? dictionaryOfPlist(node.get()) : std::optional<Dictionary>();
}

} // namespace Linux
