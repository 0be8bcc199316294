// The codes that images and strokes are made of. The public header has the marks and the stroke
// types a second time for hosts in C; interface/request.cpp checks that they agree.
#pragma once

#include <cstdint>

// What a host marks a pixel as. Other values are allowed and pass into the labels as they are.
namespace mark {
constexpr std::uint8_t kNone = 0;
constexpr std::uint8_t kBackground = 1;
constexpr std::uint8_t kObject = 2;
constexpr std::uint8_t kCandidate = 4;  // inside of a loop or box
}  // namespace mark

// What a pixel is taken for. A cut decides the free and the probable ones and leaves the others.
namespace label {
constexpr std::uint8_t kFree = 0;
constexpr std::uint8_t kBackground = 1;
constexpr std::uint8_t kObject = 2;
constexpr std::uint8_t kProbableBackground = 3;
constexpr std::uint8_t kProbableObject = 4;

// A mark becomes the label of the same number.
static_assert(mark::kNone == kFree && mark::kBackground == kBackground &&
              mark::kObject == kObject && mark::kCandidate == kProbableObject);

constexpr bool isObject(int code) {
    return code == kObject || code == kProbableObject;
}
constexpr bool isBackground(int code) {
    return code == kBackground || code == kProbableBackground;
}
}  // namespace label

// What a stroke does: loops enclose, brushes paint; even types add to the object, odd ones remove.
namespace stroke {
constexpr int kLoopAdd = 0;
constexpr int kLoopRemove = 1;
constexpr int kBrushAdd = 2;
constexpr int kBrushRemove = 3;

constexpr bool isBrush(int type) {
    return type == kBrushAdd || type == kBrushRemove;
}
constexpr bool adds(int type) {
    return type == kLoopAdd || type == kBrushAdd;
}
constexpr bool removes(int type) {
    return type == kLoopRemove || type == kBrushRemove;
}
}  // namespace stroke
