// This program again, in a process of its own.
#pragma once

#include <string>
#include <vector>

// Runs this executable with the arguments and hands back what it writes to standard output. Throws
// std::runtime_error when it cannot be started or does not exit with 0.
std::string outputOfSelf(const std::vector<std::string>& arguments);
