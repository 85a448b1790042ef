// Any three versions, one in each line: the order between them is one, and that of another hand.

#include "Require.h"
#include "Updater.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool isNumber(const std::string& piece) {
    const bool isSigned = piece[0] == '+' || piece[0] == '-';
    return piece.size() > isSigned && piece.find_first_not_of("0123456789", isSigned) == piece.npos;
}

std::vector<long long> numbers(const std::string& version) {
    std::vector<long long> result;
    std::istringstream pieces(version);
    for (std::string piece; std::getline(pieces, piece, '.');) {
        if (piece.empty()) {
            continue;
        }
        errno = 0;
        const long long number = isNumber(piece) ? std::strtoll(piece.c_str(), nullptr, 10) : 0;
        result.push_back(errno == ERANGE ? 0 : number);
    }
    while (!result.empty() && result.back() == 0) {
        result.pop_back();
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
    std::istringstream lines(std::string(bytes, bytes + size));
    std::array<std::string, 3> versions;
    for (auto& version : versions) {
        std::getline(lines, version);
    }
    for (const auto& a : versions) {
        require(!Updater::isNewer(a, a), "newer than itself");
        for (const auto& b : versions) {
            require(Updater::isNewer(a, b) == isNewerByAnotherHand(a, b), "the same order by another hand");
            require(!(Updater::isNewer(a, b) && Updater::isNewer(b, a)), "each newer than the other");
        }
    }
    const auto& [a, b, c] = versions;
    require(!(Updater::isNewer(a, b) && Updater::isNewer(b, c)) || Updater::isNewer(a, c), "transitive");
    return 0;
}
