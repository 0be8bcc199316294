#include "session/kept_mask.h"

#include <cstring>

namespace {

constexpr unsigned kBits = 7;
constexpr std::uint8_t kMore = 0x80;
constexpr int kObject = 255;

// Joins neighbouring runs of the same value, such as those at the end of a row and at the start of
// the next.
class RunWriter {
  public:
    explicit RunWriter(std::vector<std::uint8_t>& runs) : m_runs(runs) {}

    void add(std::size_t length, int value) {
        if (length == 0) {
            return;
        }
        if (value != m_value) {
            write();
            m_value = value;
        }
        m_length += length;
    }
    // Of a mask's rows, 0 or kObject.
    void addAll(const std::uint8_t* at, std::size_t count) {
        const std::uint8_t* const end = at + count;
        while (at != end) {
            const int value = *at;
            const void* const found =
                std::memchr(at, kObject - value, static_cast<std::size_t>(end - at));
            const auto* const change =
                found != nullptr ? static_cast<const std::uint8_t*>(found) : end;
            add(static_cast<std::size_t>(change - at), value);
            at = change;
        }
    }
    // The last run, too.
    void write() {
        for (; m_length >= kMore; m_length >>= kBits) {
            m_runs.push_back(static_cast<std::uint8_t>(m_length | kMore));
        }
        m_runs.push_back(static_cast<std::uint8_t>(m_length));
        m_length = 0;
    }

  private:
    std::vector<std::uint8_t>& m_runs;
    std::size_t m_length = 0;
    int m_value = 0;  // the first run is one of the rest, however short
};

}  // namespace

KeptMask::KeptMask(const cv::Mat& mask) {
    CV_Assert(mask.type() == CV_8UC1 && mask.isContinuous());
    RunWriter runs(m_runs);
    runs.addAll(mask.ptr(), mask.total());
    runs.write();
}

KeptMask::KeptMask(const cv::Mat& codes, int code, cv::Rect where) {
    CV_Assert(codes.type() == CV_8UC1);
    RunWriter runs(m_runs);
    const auto columns = static_cast<std::size_t>(codes.cols);
    const auto width = static_cast<std::size_t>(where.width);
    const auto left = static_cast<std::size_t>(where.x);
    cv::Mat row;
    for (int y = where.y; y < where.br().y; ++y) {
        const std::size_t skipped =
            y == where.y ? static_cast<std::size_t>(y) * columns + left : columns - width;
        runs.add(skipped, 0);
        cv::compare(codes(cv::Rect(where.x, y, where.width, 1)), code, row, cv::CMP_EQ);
        runs.addAll(row.ptr(), width);
    }
    runs.write();
}

cv::Mat KeptMask::unpacked(cv::Size size) const {
    cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
    writeTo(mask, kObject);
    return mask;
}

void KeptMask::writeTo(cv::Mat& image, int value) const {
    CV_Assert(image.type() == CV_8UC1 && image.isContinuous());
    std::uint8_t* at = image.ptr();
    std::size_t length = 0;
    unsigned shift = 0;
    bool isObject = false;
    for (const std::uint8_t byte : m_runs) {
        length |= static_cast<std::size_t>(byte & ~kMore) << shift;
        shift += kBits;
        if ((byte & kMore) == 0) {
            if (isObject) {
                std::memset(at, value, length);
            }
            at += length;
            isObject = !isObject;
            length = 0;
            shift = 0;
        }
    }
}
