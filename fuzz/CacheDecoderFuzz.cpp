// Feeds arbitrary bytes to the saved-map decoder. Besides never crashing, hanging or
// leaking, whatever it accepts must encode again and decode to the same record.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "cache/ScanArchive.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using veldan::ScanArchive;
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    auto archive = ScanArchive::decode(document);
    if (!archive) return 0;
    auto encoded =
        ScanArchive::encode(archive->scopePath, archive->rootIdentity, archive->snapshot, SIZE_MAX);
    if (!encoded) std::abort();
    auto again = ScanArchive::decode(*encoded);
    if (!again || again->scopePath != archive->scopePath ||
        again->rootIdentity != archive->rootIdentity || again->snapshot != archive->snapshot) {
        std::abort();
    }
    return 0;
}
