#include "session/photo_border.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

// Like the engine, in the same precision: how far the photograph is reduced follows from them.
constexpr float kInverseWorkingPixels = 1.3020834e-5F;  // 1 / 76800

// A rectangle of working pixels is rounded down twice, its start and its length.
int changeableSide(int side, float factor) {
    const int working = static_cast<int>(static_cast<float>(side) / factor);
    const int end = static_cast<int>(factor * static_cast<float>(working)) - 1;
    return std::clamp(end, 1, side);
}

template <typename Act>
void forPixelsBeyond(cv::Size part, cv::Size photo, Act&& act) {
    for (int y = 0; y < photo.height; ++y) {
        for (int x = y < part.height ? part.width : 0; x < photo.width; ++x) {
            act(cv::Point(x, y),
                cv::Point(std::min(x, part.width - 1), std::min(y, part.height - 1)));
        }
    }
}

bool covers(const Drawing& drawing, cv::Point pixel) {
    return drawing.where.contains(pixel) &&
           drawing.inside.at<std::uint8_t>(pixel - drawing.where.tl()) != 0;
}

}  // namespace

cv::Size changeablePart(cv::Size photo) {
    const float factor = std::sqrt(static_cast<float>(photo.area()) * kInverseWorkingPixels);
    if (factor <= 1.0F) {
        return photo;
    }
    return {changeableSide(photo.width, factor), changeableSide(photo.height, factor)};
}

void carryToBorder(const std::vector<BorderMark>& marks, const cv::Mat& before, cv::Mat& after) {
    const cv::Size part = changeablePart(after.size());
    forPixelsBeyond(part, after.size(), [&](cv::Point pixel, cv::Point nearest) {
        const std::uint8_t found = after.at<std::uint8_t>(nearest);
        auto& value = after.at<std::uint8_t>(pixel);
        if (found != before.at<std::uint8_t>(nearest)) {
            value = found;
        }
        for (const BorderMark& mark : marks) {
            const std::uint8_t wanted = mark.removes ? 0 : 255;
            if ((mark.isCertain || found == wanted) && covers(mark.drawing, pixel)) {
                value = wanted;
            }
        }
    });
}
