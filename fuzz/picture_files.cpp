// Fuzzes picture files: reads them strictly and leniently, and writes what came of them, which has to
// come back the same.
#include <cstdio>
#include <cstdlib>
#include <opencv2/core.hpp>

#include "fuzz_target.h"
#include "pictures/compose.h"
#include "pictures/engine_colours.h"
#include "pictures/picture_error.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

namespace {

constexpr std::uint64_t kFewPixels = 1U << 14U;

void promise(bool kept, const char* what) {
    if (!kept) {
        std::fprintf(stderr, "broken promise: %s\n", what);
        std::abort();
    }
}

bool isSame(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() &&
           (a.empty() || cv::norm(a, b, cv::NORM_INF) == 0.0);
}

void check(const Picture& picture) {
    const cv::Mat& pixels = picture.pixels;
    promise(!pixels.empty() && pixels.total() <= kFewPixels, "few pixels");
    promise((pixels.channels() == 1 || pixels.channels() == 3) && pixels.depth() <= CV_16U,
            "pixels of a known type");
    promise(picture.alpha.empty() || (picture.alpha.size() == pixels.size() &&
                                      picture.alpha.type() == CV_MAKETYPE(pixels.depth(), 1)),
            "alpha like the pixels");
    for (const Colours colours : {Colours::kSrgb, Colours::kAsStored}) {
        const cv::Mat seen = engineColours(picture, colours);
        promise(seen.size() == pixels.size() && seen.type() == CV_8UC3, "colours for the engine");
    }
}

void write(const Picture& picture) {
    WriteOptions options;
    options.offset = cv::Point(3, 5);
    for (const char* ending : {".png", ".tif"}) {
        const Picture again = readPicture(encodePicture(picture, ending, options), ending);
        promise(isSame(again.pixels, picture.pixels) && isSame(again.alpha, picture.alpha),
                "the same pixels again");
    }
    const Picture plain = plainPicture(picture.pixels.size(), {10, 200, 90});
    readPicture(encodePicture(over(picture, plain), ".jpg", options), "again");
}

void read(const std::vector<std::uint8_t>& bytes, Damaged damaged) {
    Picture picture;
    try {
        picture = readPicture(bytes, "picture", {damaged, kFewPixels});
    } catch (const PictureError&) {
        return;  // refused with a message, as it should be
    }
    check(picture);
    write(picture);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> bytes(data, data + size);
    read(bytes, Damaged::kRefused);
    read(bytes, Damaged::kAccepted);
    return 0;
}
