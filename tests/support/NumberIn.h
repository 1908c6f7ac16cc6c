#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tavrel::support {

/// The sum of the numbers behind `name` in a file of lines such as "Rss:  12 kB", as Linux tells
/// of a process in several. 0 when there is no such line, or no file.
inline double numberIn(const std::filesystem::path& file, const std::string& name) {
    double sum = 0;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string first;
        double number = 0;
        if (words >> first >> number && first == name + ":") {
            sum += number;
        }
    }
    return sum;
}

}  // namespace tavrel::support
