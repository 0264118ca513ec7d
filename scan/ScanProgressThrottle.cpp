#include "scan/ScanProgressThrottle.hpp"

#include "platform/Uptime.hpp"

namespace veldan {

ScanProgressThrottle::ScanProgressThrottle(bool publishPartials)
    : publishPartials_(publishPartials), lastUpdate_(0), lastPartialUpdate_(0) {}

ScanProgressThrottle::Due ScanProgressThrottle::fileUpdates(bool hasBytes) {
    return fileUpdates(hasBytes, platform::uptimeSeconds());
}

ScanProgressThrottle::Due ScanProgressThrottle::fileUpdates(bool hasBytes, double now) {
    Due due;
    if (now - lastUpdate_ >= progressInterval) {
        lastUpdate_ = now;
        due.progress = true;
    }
    if (publishPartials_ && hasBytes && now - lastPartialUpdate_ >= partialInterval) {
        lastPartialUpdate_ = now;
        due.partial = true;
    }
    return due;
}

}  // namespace veldan
