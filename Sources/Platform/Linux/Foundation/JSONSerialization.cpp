#include "Platform/Foundation/JSONSerialization.h"

#include <QUtf8StringView>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>

namespace NS {

namespace {

constexpr int deepestValue = 512;

/// Reads JSON as RFC 8259 writes it, in one pass. What it returns is nothing at the first fault.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    std::optional<Value> document() {
        skipSpace();
        if (!text_.starts_with('{') && !text_.starts_with('[')) {
            return std::nullopt;
        }
        auto result = value(0);
        skipSpace();
        return text_.empty() ? std::move(result) : std::nullopt;
    }

private:
    void skipSpace() { text_.remove_prefix(std::min(text_.find_first_not_of(" \t\n\r"), text_.size())); }

    bool take(std::string_view word) {
        const bool isThere = text_.starts_with(word);
        text_.remove_prefix(isThere ? word.size() : 0);
        return isThere;
    }

    std::optional<Value> value(int depth) {
        if (take("{")) {
            return depth < deepestValue ? dictionary(depth + 1) : std::nullopt;
        }
        if (take("[")) {
            return depth < deepestValue ? array(depth + 1) : std::nullopt;
        }
        if (take("\"")) {
            return string();
        }
        if (take("true")) {
            return true;
        }
        if (take("false")) {
            return false;
        }
        return take("null") ? Value() : number();
    }

    std::optional<Value> array(int depth) {
        Array result;
        skipSpace();
        if (take("]")) {
            return result;
        }
        do {
            skipSpace();
            auto item = value(depth);
            if (!item) {
                return std::nullopt;
            }
            result.push_back(std::move(*item));
            skipSpace();
        } while (take(","));
        return take("]") ? std::optional<Value>(std::move(result)) : std::nullopt;
    }

    std::optional<Value> dictionary(int depth) {
        Dictionary result;
        skipSpace();
        if (take("}")) {
            return result;
        }
        do {
            skipSpace();
            auto key = take("\"") ? string() : std::nullopt;
            skipSpace();
            if (!key || !take(":")) {
                return std::nullopt;
            }
            skipSpace();
            auto item = value(depth);
            if (!item) {
                return std::nullopt;
            }
            result.insert_or_assign(std::move(*key), std::move(*item));
            skipSpace();
        } while (take(","));
        return take("}") ? std::optional<Value>(std::move(result)) : std::nullopt;
    }

    /// What follows its opening quotation mark.
    std::optional<std::string> string() {
        std::string result;
        while (true) {
            std::size_t plain = 0;
            while (plain < text_.size() && text_[plain] != '"' && text_[plain] != '\\' && !isControl(text_[plain])) {
                ++plain;
            }
            result += text_.substr(0, plain);
            text_.remove_prefix(plain);
            if (take("\"")) {
                return result;
            }
            if (!take("\\") || !escape(result)) {
                return std::nullopt;
            }
        }
    }

    static bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20; }

    /// Adds the character that is written behind a backslash.
    bool escape(std::string& result) {
        if (take("u")) {
            return unicodeEscape(result);
        }
        constexpr std::string_view names = "\"\\/bfnrt";
        constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
        const auto at = text_.empty() ? names.npos : names.find(text_.front());
        if (at == names.npos) {
            return false;
        }
        text_.remove_prefix(1);
        result += characters[at];
        return true;
    }

    bool unicodeEscape(std::string& result) {
        const auto unit = fourDigits();
        if (!unit || (*unit >= 0xDC00 && *unit < 0xE000)) {
            return false;
        }
        if (*unit < 0xD800 || *unit >= 0xE000) {
            addCharacter(*unit, result);
            return true;
        }
        const auto low = take("\\u") ? fourDigits() : std::nullopt;
        if (!low || *low < 0xDC00 || *low >= 0xE000) {
            return false;
        }
        addCharacter(0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00), result);
        return true;
    }

    std::optional<std::uint32_t> fourDigits() {
        if (text_.size() < 4) {
            return std::nullopt;
        }
        std::uint32_t result = 0;
        const char* end = text_.data() + 4;
        if (std::from_chars(text_.data(), end, result, 16).ptr != end) {
            return std::nullopt;
        }
        text_.remove_prefix(4);
        return result;
    }

    static void addCharacter(std::uint32_t character, std::string& result) {
        const auto add = [&](std::uint32_t byte) { result += static_cast<char>(byte); };
        const auto addRest = [&](int shift) { add(0x80 | (character >> shift & 0x3F)); };
        if (character < 0x80) {
            add(character);
        } else if (character < 0x800) {
            add(0xC0 | character >> 6);
            addRest(0);
        } else if (character < 0x10000) {
            add(0xE0 | character >> 12);
            addRest(6);
            addRest(0);
        } else {
            add(0xF0 | character >> 18);
            addRest(12);
            addRest(6);
            addRest(0);
        }
    }

    std::optional<Value> number() {
        const auto start = text_;
        take("-");
        if (!take("0") && !takeDigits()) {
            return std::nullopt;
        }
        if (take(".") && !takeDigits()) {
            return std::nullopt;
        }
        if (take("e") || take("E")) {
            if (!take("+")) {
                take("-");
            }
            if (!takeDigits()) {
                return std::nullopt;
            }
        }
        const auto digits = start.substr(0, start.size() - text_.size());
        const auto integer = numberOf<std::int64_t>(digits);
        return integer ? integer : numberOf<double>(digits);
    }

    bool takeDigits() {
        const auto count = std::min(text_.find_first_not_of("0123456789"), text_.size());
        text_.remove_prefix(count);
        return count > 0;
    }

    /// Nothing when the type cannot hold it.
    template <class Number>
    static std::optional<Value> numberOf(std::string_view digits) {
        Number number = 0;
        const char* end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, number);
        return result.ec == std::errc() && result.ptr == end ? std::optional<Value>(number) : std::nullopt;
    }

    std::string_view text_;
};

} // namespace

std::optional<Value> JSONSerialization::JSONObjectWithData(const std::string& data) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::string_view text = data;
    if (!QUtf8StringView(text).isValidUtf8()) {
        return std::nullopt;
    }
    text.remove_prefix(text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0);
    return Reader(text).document();
}

} // namespace NS
