#pragma once
// A temporary folder for one test, removed with everything inside when the test ends.
// Removal works relative to folder descriptors, so trees deeper than PATH_MAX and
// folders without permissions go too, and it never follows a symbolic link out.

#include <string>
#include <string_view>

namespace veldan::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(std::string_view relative) const;

private:
    std::string path_;
};

// Removes `path` and everything below it without following links (test data only).
void removeTree(const std::string& path);

}  // namespace veldan::test
