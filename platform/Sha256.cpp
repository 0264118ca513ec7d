#include "platform/Sha256.hpp"

#include <openssl/evp.h>

#include <stdexcept>
#include <vector>

namespace veldan::platform {

struct Sha256::Context {
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    EVP_MD_CTX* scratch = nullptr;  // for peek(), made on first use and reused
    ~Context() {
        EVP_MD_CTX_free(ctx);
        EVP_MD_CTX_free(scratch);
    }
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {
    // Failing here means libcrypto itself is broken: a bug, not a per-file failure.
    if (!context_->ctx || EVP_DigestInit_ex(context_->ctx, EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("SHA-256 is unavailable in libcrypto");
    }
}

Sha256::~Sha256() = default;

void Sha256::update(const void* data, size_t size) {
    if (size > 0) EVP_DigestUpdate(context_->ctx, data, size);
}

Sha256Digest Sha256::peek() const {
    if (!context_->scratch) context_->scratch = EVP_MD_CTX_new();
    Sha256Digest digest{};
    unsigned int length = 0;
    // Finishing a copy costs one or two blocks, whatever has been fed.
    if (!context_->scratch || EVP_MD_CTX_copy_ex(context_->scratch, context_->ctx) != 1 ||
        EVP_DigestFinal_ex(context_->scratch, digest.data(), &length) != 1) {
        throw std::runtime_error("SHA-256 state cannot be copied in libcrypto");
    }
    return digest;
}

Sha256Digest Sha256::finish() {
    Sha256Digest digest{};
    unsigned int length = 0;
    EVP_DigestFinal_ex(context_->ctx, digest.data(), &length);
    return digest;
}

Sha256Digest Sha256::of(std::string_view bytes) {
    Sha256 hash;
    hash.update(bytes.data(), bytes.size());
    return hash.finish();
}

std::string lowercaseHex(const Sha256Digest& digest) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(digest.size() * 2);
    for (uint8_t byte : digest) {
        out += digits[byte >> 4];
        out += digits[byte & 0x0f];
    }
    return out;
}

std::string base64(const uint8_t* data, size_t size) {
    std::vector<unsigned char> out(4 * ((size + 2) / 3) + 1);
    const int length = EVP_EncodeBlock(out.data(), data, static_cast<int>(size));
    return std::string(reinterpret_cast<const char*>(out.data()), static_cast<size_t>(length));
}

}  // namespace veldan::platform
