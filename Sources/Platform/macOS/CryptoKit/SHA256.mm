#include "Platform/CryptoKit/SHA256.h"

#include <CommonCrypto/CommonDigest.h>
#include <algorithm>
#include <limits>

namespace NS {

struct SHA256::Context {
    CC_SHA256_CTX state;
};

SHA256::SHA256() : context_(std::make_unique<Context>()) {
    CC_SHA256_Init(&context_->state);
}

SHA256::~SHA256() = default;

// In pieces whose sizes fit the 32 bits that CommonCrypto counts them in.
void SHA256::update(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const auto count = static_cast<CC_LONG>(std::min<std::size_t>(size, std::numeric_limits<CC_LONG>::max()));
        CC_SHA256_Update(&context_->state, bytes, count);
        bytes += count;
        size -= count;
    }
}

SHA256::Digest SHA256::finalize() {
    static_assert(std::tuple_size_v<Digest> == CC_SHA256_DIGEST_LENGTH);
    Digest digest;
    CC_SHA256_Final(digest.data(), &context_->state);
    return digest;
}

} // namespace NS
