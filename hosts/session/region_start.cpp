#include "session/region_start.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace {

constexpr double kSmallPixels = 19200.0;

// Sixteen levels a channel: fine enough to tell object from background, coarse enough that thousands
// of pixels fill the cells. Eight levels, and cells of a uniform colour space, choose as well.
constexpr int kLevels = 16;
constexpr int kLevelShift = 4;
constexpr std::size_t kCells = static_cast<std::size_t>(kLevels) * kLevels * kLevels;

constexpr double kMargin = 0.1;  // around the rectangle, of its mean side
constexpr int kLeastMargin = 3;
constexpr double kSideWeight = 0.5;
constexpr double kSpanWeight = 0.1;
constexpr double kNothingFound = -1.0;  // below everything that is something

// The first of the pixels along one axis that the one at `index` of `count` stands for.
int firstOf(int index, int count, int total) {
    return static_cast<int>(static_cast<std::int64_t>(index) * total / count);
}

// For each of `large` pixels the last of `small` ones whose place is not after it. The places are asked
// of the imaging library, whose reduction the engine uses: its rounding is its own.
std::vector<int> sourcesOf(int large, int small) {
    cv::Mat indices(1, large, CV_32SC1);
    std::iota(indices.begin<int>(), indices.end<int>(), 0);
    cv::Mat places;
    cv::resize(indices, places, cv::Size(small, 1), 0, 0, cv::INTER_NEAREST);
    std::vector<int> sources(static_cast<std::size_t>(large));
    for (int index = 0; index < small; ++index) {
        std::fill(sources.begin() + places.at<int>(0, index), sources.end(), index);
    }
    return sources;
}

std::uint32_t meanWord(const Photo& photo, cv::Rect cell) {
    std::array<std::uint64_t, 3> sums{};
    for (int y = cell.y; y < cell.br().y; ++y) {
        const std::uint32_t* row = photo.words.data() + static_cast<std::size_t>(y) *
                                                            static_cast<std::size_t>(photo.width);
        for (int x = cell.x; x < cell.br().x; ++x) {
            for (unsigned channel = 0; channel < sums.size(); ++channel) {
                sums[channel] += (row[x] >> (8 * channel)) & 0xFFU;
            }
        }
    }
    const auto pixels = static_cast<std::uint64_t>(cell.area());
    std::uint32_t word = 0xFF000000U;
    for (unsigned channel = 0; channel < sums.size(); ++channel) {
        word |= static_cast<std::uint32_t>((sums[channel] + pixels / 2) / pixels) << (8 * channel);
    }
    return word;
}

std::size_t cellOf(std::uint32_t word) {
    std::size_t cell = 0;
    for (unsigned channel = 0; channel < 3; ++channel) {
        const std::uint32_t level = (word >> (8 * channel)) & 0xFFU;
        cell = cell * kLevels + (level >> kLevelShift);
    }
    return cell;
}

double timesLog(double count) {
    return count > 0.0 ? count * std::log(count) : 0.0;
}

// Of colour and mask over the pixels of a rectangle.
double mutualInformation(const Photo& photo, const cv::Mat& mask, cv::Rect within) {
    std::vector<int> all(kCells);
    std::vector<int> object(kCells);
    for (int y = within.y; y < within.br().y; ++y) {
        const std::uint32_t* words = photo.words.data() + static_cast<std::size_t>(y) *
                                                              static_cast<std::size_t>(photo.width);
        const auto* row = mask.ptr<std::uint8_t>(y);
        for (int x = within.x; x < within.br().x; ++x) {
            const std::size_t cell = cellOf(words[x]);
            ++all[cell];
            object[cell] += row[x] != 0 ? 1 : 0;
        }
    }
    const double pixels = within.area();
    double objects = 0.0;
    double joint = 0.0;
    for (std::size_t cell = 0; cell < kCells; ++cell) {
        objects += object[cell];
        joint += timesLog(object[cell]) + timesLog(all[cell] - object[cell]) - timesLog(all[cell]);
    }
    const double ofMask = timesLog(pixels) - timesLog(objects) - timesLog(pixels - objects);
    return (ofMask + joint) / pixels;
}

// The photograph's border is a border of the region, too.
cv::Mat deeperThan(double share, const cv::Mat& region) {
    cv::Mat framed;
    cv::copyMakeBorder(region, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    cv::Mat depth;
    cv::distanceTransform(framed, depth, cv::DIST_L2, cv::DIST_MASK_5);
    double greatest = 0.0;
    cv::minMaxLoc(depth, nullptr, &greatest);
    const cv::Mat deep = depth > share * greatest;
    return deep(cv::Rect(1, 1, region.cols, region.rows)).clone();
}

double shareOfSides(const cv::Mat& mask, cv::Rect rectangle) {
    const cv::Mat inside = mask(rectangle);
    const int object = cv::countNonZero(inside.row(0)) + cv::countNonZero(inside.col(0)) +
                       cv::countNonZero(inside.row(inside.rows - 1)) +
                       cv::countNonZero(inside.col(inside.cols - 1));
    return static_cast<double>(object) / (2.0 * (rectangle.width + rectangle.height));
}

// The share of the rectangle's width or height, whichever is less, that the mask spans.
double spanOf(const cv::Mat& mask, cv::Rect rectangle) {
    const cv::Rect spanned = cv::boundingRect(mask);
    return std::min(static_cast<double>(spanned.width) / rectangle.width,
                    static_cast<double>(spanned.height) / rectangle.height);
}

}  // namespace

const RegionStart* regionStartNamed(const std::string& name) {
    const auto* found =
        std::find_if(kBoxStarts.begin(), kBoxStarts.end(),
                     [&name](const RegionStart& start) { return name == start.name; });
    if (found != kBoxStarts.end()) {
        return found;
    }
    return name == kLoopStart.name ? &kLoopStart : nullptr;
}

cv::Mat insideOf(const RegionStart& start, const cv::Mat& region) {
    if (start.shape == StartShape::kInset) {
        return deeperThan(start.width, region);
    }
    const cv::Rect rectangle = cv::boundingRect(region);
    // From the rectangle's middle, in half sides of the start's.
    const auto along = [](int position, int first, int length, double share) {
        const double middle = first + (length - 1) / 2.0;
        return std::abs(position - middle) / (share * length / 2.0);
    };
    cv::Mat inside = cv::Mat::zeros(region.size(), CV_8UC1);
    for (int y = rectangle.y; y < rectangle.br().y; ++y) {
        const double v = along(y, rectangle.y, rectangle.height, start.height);
        auto* row = inside.ptr<std::uint8_t>(y);
        for (int x = rectangle.x; x < rectangle.br().x; ++x) {
            const double u = along(x, rectangle.x, rectangle.width, start.width);
            const bool within =
                start.shape == StartShape::kEllipse ? u * u + v * v < 1.0 : std::max(u, v) < 1.0;
            row[x] = within ? 255 : 0;
        }
    }
    return inside & region;
}

cv::Size smallSize(cv::Size photo) {
    const double pixels = static_cast<double>(photo.width) * photo.height;
    const double factor = std::min(1.0, std::sqrt(kSmallPixels / pixels));
    return {std::max(1, static_cast<int>(photo.width * factor)),
            std::max(1, static_cast<int>(photo.height * factor))};
}

Photo smallCopy(const Photo& photo) {
    const cv::Size size = smallSize(photo.size());
    if (size == photo.size()) {
        return photo;
    }
    Photo small{size.width, size.height, {}};
    small.words.reserve(static_cast<std::size_t>(small.width) *
                        static_cast<std::size_t>(small.height));
    for (int y = 0; y < small.height; ++y) {
        const int top = firstOf(y, small.height, photo.height);
        const int bottom = firstOf(y + 1, small.height, photo.height);
        for (int x = 0; x < small.width; ++x) {
            const int left = firstOf(x, small.width, photo.width);
            const int right = firstOf(x + 1, small.width, photo.width);
            small.words.push_back(meanWord(photo, {left, top, right - left, bottom - top}));
        }
    }
    return small;
}

cv::Mat enlargedTo(cv::Size size, const cv::Mat& mask) {
    const std::vector<int> columns = sourcesOf(size.width, mask.cols);
    const std::vector<int> rows = sourcesOf(size.height, mask.rows);
    cv::Mat large(size, CV_8UC1);
    for (int y = 0; y < size.height; ++y) {
        const int from = rows[static_cast<std::size_t>(y)];
        auto* out = large.ptr<std::uint8_t>(y);
        if (y > 0 && from == rows[static_cast<std::size_t>(y - 1)]) {
            std::copy_n(large.ptr<std::uint8_t>(y - 1), size.width, out);
            continue;
        }
        const auto* row = mask.ptr<std::uint8_t>(from);
        for (int x = 0; x < size.width; ++x) {
            out[x] = row[columns[static_cast<std::size_t>(x)]];
        }
    }
    return large;
}

double separation(const Photo& photo, const cv::Mat& region, const cv::Mat& mask) {
    const cv::Rect rectangle = cv::boundingRect(region);
    const int margin =
        static_cast<int>(kMargin * std::sqrt(static_cast<double>(rectangle.area()))) + kLeastMargin;
    const cv::Rect within = cv::Rect(rectangle.x - margin, rectangle.y - margin,
                                     rectangle.width + 2 * margin, rectangle.height + 2 * margin) &
                            cv::Rect({0, 0}, photo.size());
    const cv::Mat inside = mask & region;
    if (cv::countNonZero(inside) == 0) {
        return kNothingFound;
    }
    return mutualInformation(photo, inside, within) -
           kSideWeight * shareOfSides(inside, rectangle) + kSpanWeight * spanOf(inside, rectangle);
}
