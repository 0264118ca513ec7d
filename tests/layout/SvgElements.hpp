#pragma once
// Reads back the elements of the SVG pictures this program writes (flat, one element a
// line), so that tests can check where labels landed.

#include <map>
#include <regex>
#include <string>
#include <vector>

namespace veldan::test {

struct SvgElement {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;  // the unescaped content of a <text>

    double number(const std::string& key, double fallback = 0) const {
        const auto found = attributes.find(key);
        return found == attributes.end() ? fallback : std::stod(found->second);
    }
    std::string value(const std::string& key) const {
        const auto found = attributes.find(key);
        return found == attributes.end() ? std::string() : found->second;
    }
};

inline std::string unescapeXml(std::string text) {
    const std::pair<std::string, std::string> entities[] = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
    for (const auto& [entity, character] : entities) {
        for (size_t at = text.find(entity); at != std::string::npos;
             at = text.find(entity, at + character.size())) {
            text.replace(at, entity.size(), character);
        }
    }
    return text;
}

inline std::vector<SvgElement> svgElements(const std::string& svg) {
    static const std::regex element(
        R"(<(rect|text|path|circle|polygon)\b([^>]*?)/?>(?:([^<]*)</text>)?)");
    static const std::regex attribute(R"re(([\w-]+)="([^"]*)")re");
    std::vector<SvgElement> result;
    for (auto it = std::sregex_iterator(svg.begin(), svg.end(), element);
         it != std::sregex_iterator(); ++it) {
        SvgElement item;
        item.name = (*it)[1];
        const std::string attributes = (*it)[2];
        for (auto a = std::sregex_iterator(attributes.begin(), attributes.end(), attribute);
             a != std::sregex_iterator(); ++a) {
            item.attributes[(*a)[1]] = (*a)[2];
        }
        item.text = unescapeXml((*it)[3]);
        result.push_back(std::move(item));
    }
    return result;
}

}  // namespace veldan::test
