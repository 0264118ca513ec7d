#pragma once
// SHA-256 with incremental update (OpenSSL libcrypto, which uses the CPU's SHA
// extensions where present), and Base64 and hex texts of digests.
//
// Contract: one Sha256 object per thread at a time; finish() may be called once.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace veldan::platform {

using Sha256Digest = std::array<uint8_t, 32>;

class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void update(const void* data, size_t size);
    // The digest of everything fed so far; feeding may go on afterwards.
    Sha256Digest peek() const;
    Sha256Digest finish();

    static Sha256Digest of(std::string_view bytes);

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

std::string lowercaseHex(const Sha256Digest& digest);
// Standard Base64 with padding.
std::string base64(const uint8_t* data, size_t size);

}  // namespace veldan::platform
