#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace NS {

/// SHA-256 over data that comes in pieces (CryptoKit's SHA256). From any thread, one at a time.
class SHA256 {
public:
    using Digest = std::array<std::uint8_t, 32>;

    SHA256();
    ~SHA256();
    SHA256(const SHA256&) = delete;
    SHA256& operator=(const SHA256&) = delete;

    void update(const void* data, std::size_t size);
    /// Once, at the end.
    Digest finalize();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

} // namespace NS
