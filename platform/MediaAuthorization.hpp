#pragma once
// Authorisation to read the photo and music libraries. Linux has no such gate, so both
// answer `authorized`; the scanner still honours any other answer (tests inject one).

namespace veldan::platform {

enum class MediaAuthorization { authorized, denied, notDetermined, restricted };

MediaAuthorization photoLibraryAuthorization();
MediaAuthorization musicLibraryAuthorization();

}  // namespace veldan::platform
