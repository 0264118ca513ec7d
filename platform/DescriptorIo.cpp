#include "platform/DescriptorIo.hpp"

#include <unistd.h>

#include <cerrno>

namespace veldan::platform {

bool writeAll(int fd, std::string_view text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = ::write(fd, text.data() + written, text.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        written += static_cast<size_t>(n);
    }
    return true;
}

std::string readAll(int fd) {
    std::string text;
    char chunk[8192];
    for (;;) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        text.append(chunk, static_cast<size_t>(n));
    }
    return text;
}

}  // namespace veldan::platform
