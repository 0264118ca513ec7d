#include "scan/ScanIssueReason.hpp"

#include <cerrno>

namespace veldan::ScanIssueReason {

std::string_view forErrno(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return accessDenied;
        case ENOENT:
        case ENOTDIR:
        case ESTALE:
            return vanished;
        default:
            return couldNotRead;
    }
}

}  // namespace veldan::ScanIssueReason
