#include "picture_on_disk.h"

#include <fstream>
#include <stdexcept>
#include <vector>

#include "pictures/write_picture.h"

void writePicture(const std::string& file, const cv::Mat& image, PictureContent content) {
    const std::vector<std::uint8_t> bytes = encodePicture(image, formatFor(file, content));
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + file + "; choose another place for it");
    }
}
