#include "pictures/read_picture.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>

#include "pictures/damage.h"
#include "pictures/jpeg_damage.h"
#include "pictures/picture_error.h"
#include "pictures/picture_format.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// The formats' libraries print about damaged files; the error says it in one line.
class QuietStandardError {
  public:
    QuietStandardError() : m_saved(dup(STDERR_FILENO)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (m_saved >= 0 && nowhere >= 0) {
            dup2(nowhere, STDERR_FILENO);
        }
        close(nowhere);
    }
    ~QuietStandardError() {
        if (m_saved >= 0) {
            dup2(m_saved, STDERR_FILENO);
            close(m_saved);
        }
    }
    QuietStandardError(const QuietStandardError&) = delete;
    QuietStandardError& operator=(const QuietStandardError&) = delete;

  private:
    int m_saved;
};

int decodingOf(Channels channels) {
    switch (channels) {
        case Channels::kColour:
            return cv::IMREAD_COLOR;
        case Channels::kGrey:
            return cv::IMREAD_GRAYSCALE;
        case Channels::kAsStored:
            break;
    }
    return cv::IMREAD_UNCHANGED;
}

cv::Mat decode(const Bytes& bytes, Channels channels) {
    try {
        const QuietStandardError quiet;
        return bytes.empty() ? cv::Mat() : cv::imdecode(bytes, decodingOf(channels));
    } catch (const cv::Exception&) {
        return {};
    }
}

enum class Kind { kJpeg, kPng, kBmp, kOther };

Kind kindOf(const Bytes& bytes) {
    const auto beginsWith = [&bytes](const std::string& start) {
        return bytes.size() >= start.size() &&
               std::equal(start.begin(), start.end(), bytes.begin(),
                          [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
    };
    if (beginsWith("\xFF\xD8\xFF")) {
        return Kind::kJpeg;
    }
    if (beginsWith("\x89PNG\r\n\x1A\n")) {
        return Kind::kPng;
    }
    return beginsWith("BM") ? Kind::kBmp : Kind::kOther;
}

std::optional<std::string> jpegDamage(const Bytes& bytes) {
    std::array<char, SEGCORE_DAMAGE_TEXT_SIZE> text{};
    if (segcore_jpeg_damage(bytes.data(), bytes.size(), text.data()) == 0) {
        return std::nullopt;
    }
    return text.data();
}

std::optional<std::string> damageOf(const Bytes& bytes, Kind kind) {
    switch (kind) {
        case Kind::kJpeg:
            return jpegDamage(bytes);
        case Kind::kPng:
            return pngDamage(bytes);
        case Kind::kBmp:
            return bmpDamage(bytes);
        case Kind::kOther:
            break;
    }
    return std::nullopt;
}

cv::Mat damagedPng(const Bytes& bytes, Channels channels) {
    cv::Mat image = readDamagedPng(bytes, channels != Channels::kAsStored);
    if (channels == Channels::kGrey && !image.empty()) {
        cv::cvtColor(image, image, cv::COLOR_BGR2GRAY);
    }
    return image;
}

cv::Mat decodeDamaged(const Bytes& bytes, Kind kind, Channels channels) {
    switch (kind) {
        case Kind::kPng:
            return damagedPng(bytes, channels);
        case Kind::kBmp:
            return decode(filledUpBmp(bytes), channels);
        default:
            return {};
    }
}

}  // namespace

cv::Mat readPicture(const Bytes& bytes, const std::string& name, Channels channels,
                    Damaged damaged) {
    const Kind kind = kindOf(bytes);
    cv::Mat image = decode(bytes, channels);
    if (damaged == Damaged::kRefused) {
        std::optional<std::string> damage = damageOf(bytes, kind);
        if (!damage && image.empty() && kind != Kind::kOther) {
            damage = "its pixels cannot be decoded";
        }
        if (damage) {
            throw DamagedPicture(name + " is damaged (" + *damage + ")");
        }
    } else if (image.empty()) {
        image = decodeDamaged(bytes, kind, channels);
    }
    if (image.empty()) {
        throw PictureError(name +
                           " is not an image that can be decoded, or damaged; give a whole " +
                           readableFormats() + " file");
    }
    return image;
}
