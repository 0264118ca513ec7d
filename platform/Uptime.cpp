#include "platform/Uptime.hpp"

#include <time.h>

namespace veldan::platform {

double uptimeSeconds() {
    struct timespec now {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace veldan::platform
