#include "pictures/files/bmp.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "pictures/picture_error.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kFileHeader = 14;
constexpr std::uint32_t kCoreHeader = 12;  // that of OS/2, with numbers of two bytes
constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kMasksIncluded = 52;  // headers of this size hold the masks
constexpr int kMostPalette = 256;
constexpr const char* kEndsEarly = "the file ends early";

enum Compression : std::uint32_t {
    kPlain = 0,
    kRuns8 = 1,
    kRuns4 = 2,
    kBitFields = 3,
    kAlphaFields = 6
};

// Reads 0 beyond the end, so that what a file lacks is black.
class Source {
  public:
    explicit Source(const Bytes& bytes) : m_bytes(bytes) {}

    std::uint32_t byte(std::uint64_t at) const {
        return at < m_bytes.size() ? m_bytes[static_cast<std::size_t>(at)] : 0U;
    }
    std::uint32_t number(std::uint64_t at, unsigned count) const {
        std::uint32_t number = 0;
        for (unsigned i = count; i-- > 0;) {
            number = number << 8U | byte(at + i);
        }
        return number;
    }
    bool ends(std::uint64_t at) const { return at >= m_bytes.size(); }
    std::uint64_t size() const { return m_bytes.size(); }

  private:
    const Bytes& m_bytes;
};

// One of blue, green, red, alpha in a pixel word.
struct Mask {
    std::uint32_t bits = 0;

    std::uint8_t of(std::uint32_t word) const {
        if (bits == 0) {
            return 0;
        }
        const auto shift = static_cast<unsigned>(__builtin_ctz(bits));
        const std::uint64_t most = bits >> shift;
        return static_cast<std::uint8_t>(((word & bits) >> shift) * std::uint64_t{255} / most);
    }
};

struct Header {
    std::uint64_t pixelsAt = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool isTopDown = false;
    unsigned bits = 0;
    std::uint32_t compression = kPlain;
    std::array<Mask, 4> masks;  // blue, green, red, alpha
    std::array<cv::Vec3b, kMostPalette> palette;

    bool isRuns() const { return compression == kRuns8 || compression == kRuns4; }
    // Rows fill whole words of four bytes.
    std::uint64_t rowBytes() const {
        return (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
    }
};

void readMasks(const Source& source, std::uint32_t size, Header& header) {
    if (header.compression == kBitFields || header.compression == kAlphaFields) {
        const bool hasAlpha = size > kMasksIncluded || header.compression == kAlphaFields;
        for (unsigned c = 0; c < (hasAlpha ? 4U : 3U); ++c) {
            const unsigned from = c == 3 ? 3 : 2 - c;  // stored red, green, blue, alpha
            header.masks[c].bits = source.number(kFileHeader + kInfoHeader + 4 * from, 4);
        }
    } else if (header.bits == 16) {
        header.masks = {Mask{0x1FU}, Mask{0x3E0U}, Mask{0x7C00U}, Mask{}};
    } else {
        header.masks = {Mask{0xFFU}, Mask{0xFF00U}, Mask{0xFF0000U}, Mask{}};
    }
}

void readPalette(const Source& source, std::uint32_t size, Header& header) {
    const unsigned entry = size == kCoreHeader ? 3 : 4;
    const bool hasMasksBehind = size == kInfoHeader && header.compression == kBitFields;
    const std::uint64_t start = kFileHeader + size + (hasMasksBehind ? 12U : 0U);
    const std::uint32_t told = size == kCoreHeader ? 0 : source.number(46, 4);
    const std::uint32_t all = 1U << header.bits;
    for (std::uint32_t i = 0; i < (told == 0 ? all : std::min(told, all)); ++i) {
        for (int c = 0; c < 3; ++c) {
            header.palette[i][c] = static_cast<std::uint8_t>(
                source.byte(start + entry * i + static_cast<unsigned>(c)));
        }
    }
}

bool isKnown(const Header& header) {
    switch (header.compression) {
        case kPlain:
            return header.bits == 1 || header.bits == 4 || header.bits == 8 || header.bits == 16 ||
                   header.bits == 24 || header.bits == 32;
        case kRuns8:
            return header.bits == 8 && !header.isTopDown;
        case kRuns4:
            return header.bits == 4 && !header.isTopDown;
        case kBitFields:
        case kAlphaFields:
            return header.bits == 16 || header.bits == 32;
        default:
            return false;
    }
}

Header readHeader(const PictureFile& file, const Source& source) {
    Header header;
    header.pixelsAt = source.number(10, 4);
    const std::uint32_t size = source.number(kFileHeader, 4);
    if (size == kCoreHeader) {
        header.width = source.number(18, 2);
        header.height = source.number(20, 2);
        header.bits = source.number(24, 2);
    } else {
        header.width = static_cast<std::int32_t>(source.number(18, 4));
        header.height = static_cast<std::int32_t>(source.number(22, 4));
        header.isTopDown = header.height < 0;
        header.height = std::abs(header.height);
        header.bits = source.number(28, 2);
        header.compression = source.number(30, 4);
    }
    const std::uint64_t shortest =
        size == kCoreHeader ? kFileHeader + kCoreHeader : kFileHeader + 20;
    if (source.size() < shortest && !file.takesDamaged()) {
        failAsDamaged(file, kEndsEarly);
    }
    if ((size != kCoreHeader && size < kInfoHeader) || header.width < 1 || header.height < 1 ||
        !isKnown(header)) {
        failAsNoPicture(file);
    }
    requireFewPixels(file, header.width, header.height);
    readMasks(source, size, header);
    if (header.bits <= 8) {
        readPalette(source, size, header);
    }
    return header;
}

// Rows in memory go down.
int rowOf(const Header& header, std::int64_t y) {
    return static_cast<int>(header.isTopDown ? y : header.height - 1 - y);
}

void readRow(const Source& source, const Header& header, std::uint64_t at, cv::Vec3b* colours,
             std::uint8_t* alpha) {
    const unsigned bytes = header.bits / 8;
    for (unsigned x = 0; x < header.width; ++x) {
        if (bytes < 2) {
            const std::uint64_t bit = std::uint64_t{x} * header.bits;
            const std::uint32_t packed = source.byte(at + bit / 8);
            const auto shift = static_cast<unsigned>(8 - header.bits - bit % 8);
            colours[x] = header.palette[packed >> shift & ((1U << header.bits) - 1)];
            continue;
        }
        const std::uint32_t word = source.number(at + std::uint64_t{x} * bytes, bytes);
        for (unsigned c = 0; c < 3; ++c) {
            colours[x][static_cast<int>(c)] = header.masks[c].of(word);
        }
        alpha[x] = header.masks[3].of(word);
    }
}

void readRows(const Source& source, const Header& header, Picture& picture) {
    const cv::Size size(static_cast<int>(header.width), static_cast<int>(header.height));
    const bool hasAlpha = header.masks[3].bits != 0;
    picture.pixels.create(size, CV_8UC3);
    cv::Mat alpha(hasAlpha ? size : cv::Size(size.width, 1), CV_8UC1);
    for (int y = 0; y < size.height; ++y) {
        const int row = rowOf(header, y);
        readRow(source, header, header.pixelsAt + header.rowBytes() * static_cast<unsigned>(y),
                picture.pixels.ptr<cv::Vec3b>(row), alpha.ptr(hasAlpha ? row : 0));
    }
    if (hasAlpha) {
        picture.alpha = alpha;
    }
}

// Pairs of a count and what is repeated; after a count of 0 the end of a row, the end, a move, or plain
// pixels, filled up to two bytes. False when the file ends before they do.
bool readRuns(const Source& source, const Header& header, cv::Mat& pixels) {
    const bool halves = header.compression == kRuns4;
    std::int64_t x = 0;
    std::int64_t y = 0;
    const auto put = [&](std::uint32_t index) {
        if (x < header.width && y < header.height) {
            pixels.at<cv::Vec3b>(rowOf(header, y), static_cast<int>(x)) = header.palette[index];
        }
        ++x;
    };
    const auto putFrom = [&](std::uint32_t byte, unsigned i) {
        put(!halves ? byte : i % 2 == 0 ? byte >> 4U : byte & 0xFU);
    };
    std::uint64_t at = header.pixelsAt;
    while (y < header.height && !source.ends(at + 1)) {
        const std::uint32_t count = source.byte(at);
        const std::uint32_t value = source.byte(at + 1);
        at += 2;
        if (count > 0) {
            for (unsigned i = 0; i < count; ++i) {
                putFrom(value, i);
            }
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return true;
        } else if (value == 2) {
            x += source.byte(at);
            y += source.byte(at + 1);
            at += 2;
        } else {
            for (unsigned i = 0; i < value; ++i) {
                putFrom(source.byte(at + (halves ? i / 2 : i)), i);
            }
            const std::uint64_t packed = halves ? (value + 1) / 2 : value;
            at += packed + packed % 2;
        }
    }
    return y >= header.height && !source.ends(at - 1);
}

bool isGreyPalette(const Header& header) {
    return header.bits <= 8 &&
           std::all_of(header.palette.begin(), header.palette.end(), [](const cv::Vec3b& colour) {
               return colour[0] == colour[1] && colour[1] == colour[2];
           });
}

}  // namespace

Picture readBmp(const PictureFile& file) {
    const Source source(file.bytes);
    const Header header = readHeader(file, source);
    const cv::Size size(static_cast<int>(header.width), static_cast<int>(header.height));
    const auto requireWhole = [&](bool isWhole) {
        if (!isWhole && !file.takesDamaged()) {
            failAsDamaged(file, kEndsEarly);
        }
    };
    Picture picture;
    if (header.isRuns()) {
        // What moves leave out has the palette's first colour.
        picture.pixels = cv::Mat(size, CV_8UC3, cv::Scalar(header.palette[0]));
        requireWhole(readRuns(source, header, picture.pixels));
    } else {
        requireWhole(source.size() >=
                     header.pixelsAt +
                         header.rowBytes() * static_cast<std::uint64_t>(header.height));
        readRows(source, header, picture);
    }
    if (isGreyPalette(header)) {
        cv::extractChannel(picture.pixels, picture.pixels, 0);
    }
    return picture;
}

std::vector<std::uint8_t> encodeBmp(const cv::Mat& pixels) {
    const std::size_t used = static_cast<std::size_t>(pixels.cols) * pixels.elemSize();
    const std::size_t rowBytes = (used + 3) / 4 * 4;
    const bool isGrey = pixels.channels() == 1;
    const std::uint64_t start = kFileHeader + kInfoHeader + (isGrey ? 4U * kMostPalette : 0U);
    const std::uint64_t size = start + std::uint64_t{rowBytes} * static_cast<unsigned>(pixels.rows);
    if (size > UINT32_MAX) {
        throw PictureError("BMP files end at 4 GB; choose another format");
    }
    std::vector<std::uint8_t> bytes{'B', 'M'};
    bytes.reserve(static_cast<std::size_t>(size));
    const auto add = [&bytes](std::uint64_t number, unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
        }
    };
    add(size, 4);
    add(0, 4);
    add(start, 4);
    add(kInfoHeader, 4);
    add(static_cast<unsigned>(pixels.cols), 4);
    add(static_cast<unsigned>(pixels.rows), 4);
    add(1, 2);
    add(8 * pixels.elemSize(), 2);
    add(kPlain, 4);
    bytes.resize(kFileHeader + kInfoHeader);  // sizes and resolution need not be told
    for (unsigned grey = 0; isGrey && grey < kMostPalette; ++grey) {
        add(grey << 16U | grey << 8U | grey, 4);
    }
    for (int y = pixels.rows; y-- > 0;) {
        const std::uint8_t* const row = pixels.ptr(y);
        bytes.insert(bytes.end(), row, row + used);
        bytes.resize(bytes.size() + rowBytes - used);
    }
    return bytes;
}
