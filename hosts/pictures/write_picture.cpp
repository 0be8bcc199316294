#include "pictures/write_picture.h"

#include <opencv2/imgcodecs.hpp>

#include "pictures/picture_error.h"

std::vector<std::uint8_t> encodePicture(const cv::Mat& image, const std::string& ending) {
    std::vector<std::uint8_t> bytes;
    bool encoded = false;
    try {
        encoded = cv::imencode(ending, image, bytes);
    } catch (const cv::Exception&) {
        encoded = false;
    }
    if (!encoded) {
        throw PictureError("the image cannot be encoded as " + ending +
                           "; reduce the photograph or choose another format");
    }
    return bytes;
}
