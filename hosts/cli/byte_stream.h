// Whole files in and out of memory, the standard streams included, with waits that the user can
// interrupt.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

// As a path: standard input or standard output.
constexpr const char* kStandardStream = "-";

// The content of a file or of standard input.
Bytes readAll(const std::string& path);

// `name` is for messages.
void writeAll(int fd, const Bytes& bytes, const std::string& name);
