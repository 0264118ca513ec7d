#pragma once
// Seconds of a clock that never jumps (CLOCK_MONOTONIC), for throttling reports.

namespace veldan::platform {

double uptimeSeconds();

}  // namespace veldan::platform
