#include "session/kept_mask.h"

#include <cstring>

namespace {

constexpr unsigned kBits = 7;
constexpr std::uint8_t kMore = 0x80;

}  // namespace

KeptMask::KeptMask(const cv::Mat& mask) {
    CV_Assert(mask.type() == CV_8UC1 && mask.isContinuous());
    const std::uint8_t* at = mask.ptr();
    const std::uint8_t* const end = at + mask.total();
    for (int next = 255; at != end; next = 255 - next) {
        const void* const found = std::memchr(at, next, static_cast<std::size_t>(end - at));
        const auto* const change = found != nullptr ? static_cast<const std::uint8_t*>(found) : end;
        auto length = static_cast<std::size_t>(change - at);
        for (; length >= kMore; length >>= kBits) {
            m_runs.push_back(static_cast<std::uint8_t>(length | kMore));
        }
        m_runs.push_back(static_cast<std::uint8_t>(length));
        at = change;
    }
}

cv::Mat KeptMask::unpacked(cv::Size size) const {
    cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
    std::uint8_t* at = mask.ptr();
    std::size_t length = 0;
    unsigned shift = 0;
    int value = 0;
    for (const std::uint8_t byte : m_runs) {
        length |= static_cast<std::size_t>(byte & ~kMore) << shift;
        shift += kBits;
        if ((byte & kMore) == 0) {
            std::memset(at, value, length);
            at += length;
            value = 255 - value;
            length = 0;
            shift = 0;
        }
    }
    return mask;
}
