#include "platform/Uuid.hpp"

#include <sys/random.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>

namespace veldan::platform {

std::string randomUuid() {
    std::array<uint8_t, 16> bytes{};
    // The kernel's generator directly: OpenSSL's keeps state per thread, which the
    // serial queues' threads would leave behind when they end after OpenSSL's own
    // clean-up at exit.
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        std::random_device device;
        for (auto& byte : bytes)
            byte = static_cast<uint8_t>(device());
    }
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3f) | 0x80);
    char text[37];
    std::snprintf(text, sizeof text,
                  "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", bytes[0],
                  bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7], bytes[8],
                  bytes[9], bytes[10], bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
    return text;
}

}  // namespace veldan::platform
