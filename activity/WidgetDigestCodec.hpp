#pragma once
// Gist.plist: the widget digest as a binary property list whose keys are the field names.
// Optional fields are left out when empty. Decoding keeps every field that decodes and
// gives the others their empty value, so a damaged or newer digest still shows what it
// can; a document that is not a property-list dictionary decodes to nothing.
//
// Contract: pure functions, thread-safe.

#include <optional>
#include <string>
#include <string_view>

#include "activity/WidgetDigest.hpp"

namespace veldan {

class WidgetDigestCodec {
public:
    static std::string encode(const WidgetDigest& digest);
    static std::optional<WidgetDigest> decode(std::string_view document);
};

}  // namespace veldan
