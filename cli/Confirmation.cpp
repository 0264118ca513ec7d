#include "cli/Confirmation.hpp"

#include <cctype>
#include <iostream>

namespace veldan::cli {

bool askYesNo(const std::string& question) {
    std::cerr << question << " [y/N] " << std::flush;
    std::string answer;
    if (!std::getline(std::cin, answer)) return false;
    std::string word;
    for (unsigned char c : answer) {
        if (!std::isspace(c)) word += static_cast<char>(std::tolower(c));
    }
    return word == "y" || word == "yes";
}

}  // namespace veldan::cli
