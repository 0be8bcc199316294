#include <opencv2/imgproc.hpp>

#include "pictures/files/library.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

Picture readPicture(const std::vector<std::uint8_t>& bytes, const std::string& name,
                    const ReadOptions& options) {
    return pictureLibrary().read(bytes, name, options);
}

std::vector<std::uint8_t> encodePicture(const Picture& picture, const std::string& ending,
                                        const WriteOptions& options) {
    return pictureLibrary().encode(picture, ending, options);
}

std::vector<std::uint8_t> encodePicture(const cv::Mat& image, const std::string& ending,
                                        const WriteOptions& options) {
    Picture picture;
    picture.pixels = image;
    if (image.channels() == 4) {
        cv::cvtColor(image, picture.pixels, cv::COLOR_BGRA2BGR);
        cv::extractChannel(image, picture.alpha, 3);
    }
    return encodePicture(picture, ending, options);
}
