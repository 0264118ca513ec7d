#pragma once
// What a scan needs to know about the user and the platform, read once per scan so that
// workers never touch the environment and tests can set each value.

#include <string>

#include "platform/MediaAuthorization.hpp"

namespace veldan {

struct ScanSettings {
    std::string home;  // the user's home folder, standardized
    platform::MediaAuthorization photos = platform::MediaAuthorization::authorized;
    platform::MediaAuthorization music = platform::MediaAuthorization::authorized;

    static ScanSettings current();
};

}  // namespace veldan
