#include "layout/MapTile.hpp"

namespace veldan {

std::string MapTile::id() const {
    std::string identifier = node->id();
    if (node->isSummary) identifier += summarySuffix;
    return identifier;
}

}  // namespace veldan
