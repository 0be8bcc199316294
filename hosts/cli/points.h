// Pixels as words of the command line. What is none throws CLI::ValidationError in the name of `option`.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

// The `count` whole numbers of "1,2,3"; `form` is for the message.
std::vector<int> numbersOf(const std::string& option, const std::string& text, std::size_t count,
                           const char* form);

// Points may come as several words or as one quoted one.
std::vector<cv::Point> pointsOf(const std::string& option, const std::vector<std::string>& words);
