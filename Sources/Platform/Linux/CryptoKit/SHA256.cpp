#include "Platform/CryptoKit/SHA256.h"

#include <openssl/evp.h>

namespace NS {

struct SHA256::Context {
    Context() { EVP_DigestInit_ex(state, EVP_sha256(), nullptr); }
    ~Context() { EVP_MD_CTX_free(state); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    EVP_MD_CTX* const state = EVP_MD_CTX_new();
};

SHA256::SHA256() : context_(std::make_unique<Context>()) {}

SHA256::~SHA256() = default;

void SHA256::update(const void* data, std::size_t size) {
    EVP_DigestUpdate(context_->state, data, size);
}

SHA256::Digest SHA256::finalize() {
    Digest digest = {};
    EVP_DigestFinal_ex(context_->state, digest.data(), nullptr);
    return digest;
}

} // namespace NS
