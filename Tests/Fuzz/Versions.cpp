// Any three versions, one in each line: the order between them is one, and that of another hand.

#include "Require.h"
#include "Updater.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

bool isNumber(const std::string& piece) {
    const bool isSigned = piece[0] == '+' || piece[0] == '-';
    return piece.size() > isSigned && piece.find_first_not_of("0123456789", isSigned) == piece.npos;
}

std::vector<long long> numbers(const std::string& version) {
    std::vector<long long> result;
    for (std::size_t begin = 0; begin < version.size();) {
        const auto end = std::min(version.find('.', begin), version.size());
        const auto piece = version.substr(begin, end - begin);
        begin = end + 1;
        if (piece.empty()) {
            continue;
        }
        errno = 0;
        const long long number = isNumber(piece) ? std::strtoll(piece.c_str(), nullptr, 10) : 0;
        result.push_back(errno == ERANGE ? 0 : number);
    }
    return result;
}

bool isNewerByAnotherHand(const std::string& candidate, const std::string& current) {
    const auto theirs = numbers(candidate);
    const auto ours = numbers(current);
    for (std::size_t i = 0; i < theirs.size() || i < ours.size(); ++i) {
        const long long a = i < theirs.size() ? theirs[i] : 0;
        const long long b = i < ours.size() ? ours[i] : 0;
        if (a != b) {
            return a > b;
        }
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::array<std::string, 3> versions;
    auto* version = versions.begin();
    for (const auto byte : std::string(bytes, bytes + size)) {
        if (byte != '\n') {
            *version += byte;
        } else if (++version == versions.end()) {
            break;
        }
    }
    const auto& [a, b, c] = versions;
    const bool ab = Updater::isNewer(a, b);
    const bool ba = Updater::isNewer(b, a);
    const bool bc = Updater::isNewer(b, c);
    const bool ac = Updater::isNewer(a, c);
    require(ab == isNewerByAnotherHand(a, b) && ba == isNewerByAnotherHand(b, a), "the same order by another hand");
    require(!Updater::isNewer(a, a), "newer than itself");
    require(!(ab && ba), "each newer than the other");
    require(!(ab && bc) || ac, "transitive");
    return 0;
}
