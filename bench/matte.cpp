// Cuts out by masks with soft edges, to be judged against a true alpha.
//
//     segcore-bench-matte [PHOTO MASK OUT.png]...
//
// The object is where a mask (its alpha, if it has one) is at least half of its largest value. OUT.png
// gets straight alpha of 16 bits. Prints the time of all of them.
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "matting/matting.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"
#include "support/measurements.h"

namespace {

Picture read(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
    return readPicture(bytes, file);
}

cv::Mat maskOf(const Picture& picture) {
    cv::Mat values = picture.alpha;
    if (values.empty()) {
        cv::extractChannel(picture.pixels, values, 0);
    }
    return values >= (values.depth() == CV_16U ? 32768 : 128);
}

void write(const std::string& file, const cv::Mat& colours, const cv::Mat& alpha) {
    Picture cutOut;
    cutOut.pixels = colours;
    cutOut.alpha = alpha;
    if (colours.depth() == CV_8U) {
        colours.convertTo(cutOut.pixels, CV_16U, 257.0);
    }
    const std::vector<std::uint8_t> bytes = encodePicture(cutOut, ".png");
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + file);
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 4 || count % 3 != 1) {
        std::cerr << "usage: " << arguments[0] << " [PHOTO MASK OUT.png]...\n";
        return 2;
    }
    try {
        Duration alphas;
        Duration colourings;
        for (int first = 1; first < count; first += 3) {
            const cv::Mat photograph = storedPixels(read(arguments[first]));
            const cv::Mat mask = maskOf(read(arguments[first + 1]));
            cv::Mat alpha;
            cv::Mat colours;
            alphas.wall += durationOf([&] { alpha = softAlpha(photograph, mask, 0.0); }).wall;
            colourings.wall += durationOf([&] {
                                   colours = foregroundColours(photograph, alpha, Unseen::kNearest);
                               }).wall;
            write(arguments[first + 2], colours, alpha);
        }
        std::cout << "alpha " << alphas.wall << " ms, colours " << colourings.wall << " ms\n";
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
