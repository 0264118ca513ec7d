#pragma once
// Small helpers that build real file trees for tests. Each throws on failure: a test
// whose set-up failed must stop, not pass vacuously.

#include <cstdint>
#include <string>

namespace veldan::test {

void makeFolders(const std::string& path);  // mkdir -p
void writeFile(const std::string& path, const std::string& contents);
// A file of `bytes` bytes of a repeating pattern seeded by `seed`.
void writeFileOfSize(const std::string& path, int64_t bytes, unsigned seed = 1);
// A file with a logical size of `bytes` but no data blocks written.
void writeSparseFile(const std::string& path, int64_t bytes);
std::string readFile(const std::string& path);
void makeSymlink(const std::string& target, const std::string& link);
void makeHardLink(const std::string& existing, const std::string& link);
bool exists(const std::string& path);  // lstat succeeds
// st_blocks x 512 of the path, not following links.
int64_t allocatedBytes(const std::string& path);
// Removes the folder `path` with everything in it and makes a new empty folder there that
// got the same device and inode back, as ext4 hands freed numbers out again at once. False
// when the file system did not give the number back (tmpfs never does, and another
// process may take it first); the new folder is there either way.
bool recreateWithSameInode(const std::string& path);

}  // namespace veldan::test
