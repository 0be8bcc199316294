#pragma once

#include "pictures/write_picture.h"

std::vector<std::uint8_t> encodeFile(const Picture& picture, const std::string& ending,
                                     const WriteOptions& options);
