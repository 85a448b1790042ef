#include "Platform/Foundation/JSONSerialization.h"

#include "Platform/Linux/Native.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace Linux {

namespace {

using JSON = nlohmann::json;

constexpr std::size_t maxNesting = 512;

/// Builds the value from the parser's events. Its methods return whether to go on.
class Builder : public nlohmann::json_sax<JSON> {
public:
    PropertyListValue take() { return std::move(root_); }

    bool null() override { return add(PropertyListValue()); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(std::int64_t value) override { return add(value); }
    bool number_unsigned(std::uint64_t value) override {
        const bool isSigned = value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()};
        return add(isSigned ? PropertyListValue(static_cast<std::int64_t>(value))
                            : PropertyListValue(static_cast<double>(value)));
    }
    bool number_float(double value, const std::string&) override { return add(value); }
    bool string(std::string& text) override { return add(std::move(text)); }
    bool binary(JSON::binary_t&) override { return false; } // JSON has none

    bool start_object(std::size_t) override { return open(/*isObject=*/true); }
    bool key(std::string& name) override {
        open_.back().key = std::move(name);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(/*isObject=*/false); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    /// An object or array that is not closed yet.
    struct Container {
        bool isObject = false;
        Array items;
        Dictionary entries;
        std::string key = {}; // of the next entry
    };

    bool open(bool isObject) {
        open_.push_back({.isObject = isObject, .items = {}, .entries = {}});
        return open_.size() <= maxNesting;
    }

    bool close() {
        Container closed = std::move(open_.back());
        open_.pop_back();
        return add(closed.isObject ? PropertyListValue(std::move(closed.entries))
                                   : PropertyListValue(std::move(closed.items)));
    }

    bool add(PropertyListValue value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (auto& container = open_.back(); container.isObject) {
            container.entries.insert_or_assign(std::move(container.key), std::move(value));
        } else {
            container.items.push_back(std::move(value));
        }
        return true;
    }

    PropertyListValue root_;
    std::vector<Container> open_;
};

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

std::optional<PropertyListValue> JSONSerialization::JSONObjectWithData(const std::string& data) {
    const bool endsEarly = data.find('\0') != data.npos; // the parser takes a null for the end of the text
    Builder builder;
    if (endsEarly || !JSON::sax_parse(data, &builder)) {
        return std::nullopt;
    }
    auto value = builder.take();
    const bool isContainer = value.array() || value.dictionary();
    return isContainer ? std::optional(std::move(value)) : std::nullopt;
}

} // namespace NS
