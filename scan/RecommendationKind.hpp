#pragma once
// Whether a recommendation may be cleaned by Veldan ("Safe to remove") or only opened
// for the user to inspect ("Review first"). The raw value is the display text.

#include <string_view>

namespace veldan {

enum class RecommendationKind { safe, review };

inline std::string_view title(RecommendationKind kind) {
    return kind == RecommendationKind::safe ? "Safe to remove" : "Review first";
}

}  // namespace veldan
