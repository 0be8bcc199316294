// A rectangle of values in somebody else's memory: what the files of this folder work on, so that
// they need no imaging library.
#pragma once

#include <cstddef>

template <typename Value>
struct Plane {
    Value* data = nullptr;      // of the first row
    std::ptrdiff_t stride = 0;  // values from one row to the next
    int width = 0;              // in values; a row of a colour picture has three for each pixel
    int height = 0;

    Value* row(int y) const { return data + y * stride; }
    operator Plane<const Value>() const { return {data, stride, width, height}; }
};
