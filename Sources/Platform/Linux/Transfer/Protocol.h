#pragma once

#include <charconv>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

/// The protocol between URLSession and the program Transfer, which makes one transfer and ends. The request comes as
/// standard input, the body goes to standard output as it arrives, and the HTTP status to a descriptor of its own at
/// the end. The program ends with EXIT_SUCCESS when the answer came whole.
namespace Linux::TransferProtocol {

inline constexpr char programName[] = "Transfer"; // beside the executable
inline constexpr int requestDescriptor = 0;
inline constexpr int bodyDescriptor = 1;
inline constexpr int statusDescriptor = 3;

struct Request {
    std::string address;
    double timeout; // seconds without a byte after which the transfer fails
};

/// The address, a line feed, the timeout in decimal.
inline std::string textOfRequest(const Request& request) {
    char seconds[32] = {};
    std::to_chars(std::begin(seconds), std::end(seconds), request.timeout);
    return request.address + "\n" + seconds;
}

inline std::optional<Request> requestOfText(std::string_view text) {
    const auto lineEnd = text.find('\n');
    double seconds = 0;
    if (lineEnd == text.npos ||
        std::from_chars(text.data() + lineEnd + 1, text.data() + text.size(), seconds).ec != std::errc()) {
        return std::nullopt;
    }
    return Request{std::string(text.substr(0, lineEnd)), seconds};
}

} // namespace Linux::TransferProtocol
