#pragma once
// The user's well-known folders: home and the XDG base directories.
//
// Contract: read from the environment on every call (tests point HOME and XDG_*_HOME
// at temporary folders); thread-safe as long as nobody changes the environment.

#include <string>

namespace veldan::platform {

// $HOME when it is an absolute path, else the password database entry, else "/".
std::string homeFolder();

// $XDG_CACHE_HOME, $XDG_STATE_HOME, $XDG_DATA_HOME and $XDG_CONFIG_HOME. A relative or
// empty value is ignored, as the XDG rules require, and the default under the home
// folder is used (~/.cache, ~/.local/state, ~/.local/share, ~/.config).
std::string cacheHome();
std::string stateHome();
std::string dataHome();
std::string configHome();

// The Downloads folder: XDG_DOWNLOAD_DIR from $XDG_CONFIG_HOME/user-dirs.dirs (the file
// xdg-user-dirs writes; "$HOME/..." or an absolute path in double quotes, with backslash
// escapes), else ~/Downloads. Symbolic links are not resolved here.
std::string downloadsFolder();

// The system's folder for temporary files: $TMPDIR when absolute, else "/tmp".
std::string temporaryFolder();

}  // namespace veldan::platform
