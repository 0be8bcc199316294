#include "photo.h"

#include <fcntl.h>
#include <unistd.h>

#include <opencv2/imgcodecs.hpp>

#include "errors.h"

namespace {

// The decoders' own libraries print about damaged files; the program says it in one line itself.
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

cv::Mat decode(const std::string& path, int mode) {
    const Bytes bytes = readAll(path);
    cv::Mat image;
    try {
        const QuietStandardError quiet;
        if (!bytes.empty()) {
            image = cv::imdecode(bytes, mode);
        }
    } catch (const cv::Exception&) {
        image.release();
    }
    if (image.empty()) {
        throw UserError((path == kStandardStream ? "standard input" : path) +
                        " is not an image that can be decoded; give a PNG, JPEG or BMP file");
    }
    return image;
}

}  // namespace

Photo readPhoto(const std::string& path) {
    return photoOf(decode(path, cv::IMREAD_COLOR), path);
}

cv::Mat readImageUnchanged(const std::string& path) {
    return decode(path, cv::IMREAD_UNCHANGED);
}

Bytes encodePng(const cv::Mat& image) {
    Bytes bytes;
    if (!cv::imencode(".png", image, bytes)) {
        throw UserError("the image cannot be encoded as PNG; reduce the photograph");
    }
    return bytes;
}
