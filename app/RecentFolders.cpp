#include "app/RecentFolders.hpp"

namespace veldan {

std::vector<std::string> RecentFolders::remembering(const std::vector<std::string>& list,
                                                    const std::string& path) {
    if (path == "/") return list;
    std::vector<std::string> result{path};
    for (const auto& entry : list) {
        if (entry != path) result.push_back(entry);
    }
    if (result.size() > limit) result.resize(limit);
    return result;
}

}  // namespace veldan
