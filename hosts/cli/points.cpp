#include "points.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <sstream>

std::vector<int> numbersOf(const std::string& option, const std::string& text, std::size_t count,
                           const char* form) {
    std::vector<int> numbers;
    const char* next = text.data();
    const char* const end = text.data() + text.size();
    std::from_chars_result read{next, std::errc()};
    do {
        int number = 0;
        read = std::from_chars(next, end, number);
        numbers.push_back(number);
        next = read.ptr + 1;
    } while (read.ec == std::errc() && read.ptr != end && *read.ptr == ',');
    if (read.ec != std::errc() || read.ptr != end || numbers.size() != count) {
        const bool isName = text.find_first_of("0123456789") != 0 && text.find('-') != 0;
        throw CLI::ValidationError(option, "'" + text + "' is not " + form + " in whole pixels" +
                                               (isName ? ", and files go before marks" : ""));
    }
    return numbers;
}

std::vector<cv::Point> pointsOf(const std::string& option, const std::vector<std::string>& words) {
    std::vector<cv::Point> points;
    for (const std::string& word : words) {
        std::istringstream stream(word);
        for (std::string pair; stream >> pair;) {
            const std::vector<int> xy = numbersOf(option, pair, 2, "x,y");
            points.emplace_back(xy[0], xy[1]);
        }
    }
    return points;
}
