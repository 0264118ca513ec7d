#include "scan/ScanSettings.hpp"

#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

ScanSettings ScanSettings::current() {
    return ScanSettings{platform::standardizePath(platform::homeFolder()),
                        platform::photoLibraryAuthorization(),
                        platform::musicLibraryAuthorization()};
}

}  // namespace veldan
