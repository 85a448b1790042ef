// Hashes a file as the updater hashes a disk image. Prints the digest, and how many KB of memory that took at its peak.
// usage: HashFile FILE
#include "Platform/CryptoKit/SHA256.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

/// A figure of this process's memory, in KB.
long memory(const char* name) {
    long value = 0;
    if (std::FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, status)) {
            if (std::strncmp(line, name, std::strlen(name)) == 0) {
                std::sscanf(line + std::strlen(name), ": %ld", &value);
            }
        }
        std::fclose(status);
    }
    return value;
}

} // namespace

int main(int argc, char** argv) {
    std::FILE* file = argc == 2 ? std::fopen(argv[1], "rb") : nullptr;
    if (!file) {
        return 1;
    }
    const long before = memory("VmRSS");
    std::setvbuf(file, nullptr, _IONBF, 0);
    NS::SHA256 hash;
    std::vector<std::uint8_t> piece(std::size_t{64} << 10);
    while (const auto count = std::fread(piece.data(), 1, piece.size(), file)) {
        hash.update(piece.data(), count);
    }
    for (const auto byte : hash.finalize()) {
        std::printf("%02x", byte);
    }
    std::printf(" %ld\n", memory("VmHWM") - before);
    return std::fclose(file);
}
