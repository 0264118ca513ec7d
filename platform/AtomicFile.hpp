#pragma once
// Replaces a file's contents all at once: readers (and a crash) see either the old file
// or the complete new one, never a half-written one.
//
// Contract: synchronous, on the caller's thread. Failures come back as data.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace veldan::platform {

// How much a write must survive. Both survive the writer being killed (the rename is
// atomic); only `flushed` also survives a power cut, at the price of waiting for the disk.
// A cache that is rebuilt by scanning again, and rejected whole when damaged, need not wait.
enum class Durability { flushed, regenerable };

// What a symbolic link at `path` means: the file the user named through it (`follow`), or,
// for a program's own files, a stray entry that is replaced and never written through.
enum class LinkAtPath { follow, replace };

// Writes `contents` to a temporary file beside `path`, flushes it to disk (unless it is
// `regenerable`) and renames it over `path`. A symbolic link is followed to the file it names
// unless `links` says `replace`. An existing file keeps its permission bits; a new one gets the
// usual ones (0666 less the umask). Returns the reason ("Permission denied", "Is a directory", "Not
// a regular file", ...) when the file could not be written; the temporary file is then removed and
// `path` is untouched.
std::optional<std::string> writeFileAtomically(const std::string& path, std::string_view contents,
                                               Durability durability = Durability::flushed,
                                               LinkAtPath links = LinkAtPath::follow);

// The same with contents produced in pieces: `produce` calls its argument with each piece
// and returns false to give up (the temporary file is removed and `path` is untouched).
using ContentSink = std::function<bool(std::string_view piece)>;
std::optional<std::string> writeFileAtomically(
    const std::string& path, const std::function<bool(const ContentSink&)>& produce,
    Durability durability = Durability::flushed, LinkAtPath links = LinkAtPath::follow);

}  // namespace veldan::platform
