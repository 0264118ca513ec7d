#include "platform/MediaAuthorization.hpp"

namespace veldan::platform {

MediaAuthorization photoLibraryAuthorization() {
    return MediaAuthorization::authorized;
}
MediaAuthorization musicLibraryAuthorization() {
    return MediaAuthorization::authorized;
}

}  // namespace veldan::platform
