#pragma once
// Names made safe for an SVG document. Names are raw bytes: they may hold invalid UTF-8
// and characters XML forbids even as references (most control characters), so they are
// cleaned first and escaped last.

#include <string>
#include <string_view>

namespace veldan {

class SvgText {
public:
    // Well-formed UTF-8 where every byte that is not part of a valid sequence, every
    // control character and the non-characters U+FFFE/U+FFFF became U+FFFD.
    static std::string clean(std::string_view text);
    // Clean text with &, <, >, " and ' replaced by their entities, ready for an element's
    // content or an attribute value.
    static std::string escape(std::string_view cleanText);
};

}  // namespace veldan
