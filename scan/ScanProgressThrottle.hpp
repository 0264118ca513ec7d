#pragma once
// One worker's throttle: progress at most every 0.25 s, partial trees at most every
// 0.4 s and only when partials are wanted and new bytes were measured.

namespace veldan {

class ScanProgressThrottle {
public:
    static constexpr double progressInterval = 0.25;
    static constexpr double partialInterval = 0.4;

    struct Due {
        bool progress = false;
        bool partial = false;
    };

    explicit ScanProgressThrottle(bool publishPartials);

    Due fileUpdates(bool hasBytes);
    Due fileUpdates(bool hasBytes, double now);

private:
    bool publishPartials_;
    double lastUpdate_;
    double lastPartialUpdate_;
};

}  // namespace veldan
