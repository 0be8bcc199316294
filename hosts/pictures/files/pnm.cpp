#include "pictures/files/pnm.h"

#include <algorithm>
#include <cctype>

#include "pictures/files/rows.h"

namespace {

constexpr std::uint32_t kMostLevel = 65535;
constexpr const char* kEndsEarly = "the file ends early";

// The numbers of the header and of text files.
class Source {
  public:
    explicit Source(const std::vector<std::uint8_t>& bytes) : m_bytes(bytes) {}

    // Past white space and comments; ended() where there is none.
    std::uint32_t number() {
        skipSpace();
        std::uint32_t number = 0;
        bool any = false;
        for (; m_at < m_bytes.size() && std::isdigit(m_bytes[m_at]) != 0; ++m_at) {
            number = std::min(number, kMostSize) * 10 + (m_bytes[m_at] - '0');
            any = true;
        }
        m_ended = m_ended || !any;
        return number;
    }
    // Digits of single bits need no space between them.
    std::uint32_t digit() {
        skipSpace();
        return byte() == '1' ? 1 : 0;
    }
    std::uint32_t byte() {
        m_ended = m_ended || m_at >= m_bytes.size();
        return m_ended ? 0 : m_bytes[m_at++];
    }
    bool ended() const { return m_ended; }

  private:
    static constexpr std::uint32_t kMostSize = 100'000'000;

    void skipSpace() {
        while (m_at < m_bytes.size()) {
            if (m_bytes[m_at] == '#') {
                while (m_at < m_bytes.size() && m_bytes[m_at] != '\n') {
                    ++m_at;
                }
            } else if (std::isspace(m_bytes[m_at]) == 0) {
                return;
            } else {
                ++m_at;
            }
        }
    }

    const std::vector<std::uint8_t>& m_bytes;
    std::size_t m_at = 2;  // behind the kind
    bool m_ended = false;
};

struct Header {
    bool isText = false;
    bool isBits = false;
    bool isColour = false;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t most = 1;  // the level of white

    int samples() const { return static_cast<int>(width) * (isColour ? 3 : 1); }
};

Header readHeader(const PictureFile& file, Source& source) {
    Header header;
    const int kind = file.bytes[1] - '0';
    header.isText = kind <= 3;
    header.isBits = kind % 3 == 1;
    header.isColour = kind % 3 == 0;
    header.width = source.number();
    header.height = source.number();
    if (!header.isBits) {
        header.most = source.number();
    }
    if (source.ended() || header.width == 0 || header.height == 0 || header.most == 0 ||
        header.most > kMostLevel) {
        failAsNoPicture(file);
    }
    requireFewPixels(file, header.width, header.height);
    // Not even a bit a pixel: no memory is asked for on such a file's word.
    if (!file.takesDamaged() &&
        std::uint64_t{header.width} * header.height / 8 > file.bytes.size()) {
        failAsDamaged(file, kEndsEarly);
    }
    if (!header.isText) {
        source.byte();  // one white space
    }
    return header;
}

std::uint32_t level(Source& source, const Header& header) {
    if (header.isText) {
        return source.number();
    }
    const std::uint32_t high = header.most > 255 ? source.byte() << 8U : 0U;
    return high | source.byte();
}

// Of a byte's bits the highest comes first, and 1 is black.
void readBits(Source& source, const Header& header, std::uint8_t* row) {
    std::uint32_t packed = 0;
    for (std::uint32_t x = 0; x < header.width; ++x) {
        if (!header.isText && x % 8 == 0) {
            packed = source.byte();
        }
        const std::uint32_t bit = header.isText ? source.digit() : packed >> (7 - x % 8) & 1U;
        row[x] = bit == 0 && !source.ended() ? 255 : 0;
    }
}

template <class Sample>
void readLevels(Source& source, const Header& header, Sample* row) {
    constexpr std::uint32_t kWhite = static_cast<Sample>(-1);
    for (int i = 0; i < header.samples(); ++i) {
        const std::uint32_t sample = std::min(level(source, header), header.most);
        row[i] = static_cast<Sample>((sample * kWhite + header.most / 2) / header.most);
    }
}

}  // namespace

Picture readPnm(const PictureFile& file) {
    Source source(file.bytes);
    const Header header = readHeader(file, source);
    const int depth = header.most > 255 ? CV_16U : CV_8U;
    Picture picture;
    picture.pixels = cv::Mat::zeros(static_cast<int>(header.height), static_cast<int>(header.width),
                                    CV_MAKETYPE(depth, header.isColour ? 3 : 1));
    for (int y = 0; y < picture.pixels.rows && !source.ended(); ++y) {
        if (header.isBits) {
            readBits(source, header, picture.pixels.ptr(y));
        } else if (depth == CV_16U) {
            readLevels(source, header, picture.pixels.ptr<std::uint16_t>(y));
        } else {
            readLevels(source, header, picture.pixels.ptr(y));
        }
    }
    if (source.ended() && !file.takesDamaged()) {
        failAsDamaged(file, kEndsEarly);
    }
    if (header.isColour) {
        swapRedAndBlue(picture.pixels);
    }
    return picture;
}
