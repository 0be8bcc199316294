#include "picture_files.h"

#include <vips/vips.h>

#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

Bytes bytesIn(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

cv::Mat samplePart() {
    return cv::imread(SEGCORE_SAMPLES "/coffee.png")(cv::Rect(150, 20, 96, 64)).clone();
}

cv::Mat wideSamplePart() {
    cv::Mat wide;
    samplePart().convertTo(wide, CV_16U, 255.0);
    cv::Mat grain(wide.size(), CV_16UC3);
    cv::RNG(7).fill(grain, cv::RNG::UNIFORM, 0, 510);
    return wide + grain;
}

cv::Mat ramp(cv::Size size, int depth) {
    cv::Mat alpha(size, CV_MAKETYPE(depth, 1));
    const double most = depth == CV_16U ? 65535.0 : 255.0;
    for (int x = 0; x < size.width; ++x) {
        alpha.col(x).setTo(most * (x - 8) / (size.width - 16));
    }
    return alpha;
}

Bytes writtenByVips(const cv::Mat& image, const std::string& ending,
                    const std::function<void(VipsImage*)>& change) {
    if (VIPS_INIT("tests") != 0) {
        throw std::runtime_error("no libvips");
    }
    cv::Mat samples = image.clone();
    if (image.channels() == 3) {
        cv::cvtColor(image, samples, cv::COLOR_BGR2RGB);
    }
    const bool isWide = image.depth() == CV_16U;
    VipsImage* const plain = vips_image_new_from_memory(
        samples.data, samples.total() * samples.elemSize(), samples.cols, samples.rows,
        samples.channels(), isWide ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR);
    VipsImage* copy = nullptr;
    const VipsInterpretation kinds[] = {VIPS_INTERPRETATION_B_W,  VIPS_INTERPRETATION_GREY16,
                                        VIPS_INTERPRETATION_sRGB, VIPS_INTERPRETATION_RGB16,
                                        VIPS_INTERPRETATION_CMYK, VIPS_INTERPRETATION_CMYK};
    vips_copy(plain, &copy, "interpretation", kinds[samples.channels() / 2 * 2 + (isWide ? 1 : 0)],
              nullptr);
    if (change) {
        change(copy);
    }
    void* data = nullptr;
    std::size_t size = 0;
    if (vips_image_write_to_buffer(copy, ending.c_str(), &data, &size, nullptr) != 0) {
        throw std::runtime_error(vips_error_buffer());
    }
    const auto* const start = static_cast<const std::uint8_t*>(data);
    Bytes bytes(start, start + size);
    g_free(data);
    g_object_unref(copy);
    g_object_unref(plain);
    return bytes;
}

Bytes writtenByOpenCv(const cv::Mat& image, const std::string& ending) {
    Bytes bytes;
    cv::imencode(ending, image, bytes);
    return bytes;
}

double largestDifference(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() ? cv::norm(a, b, cv::NORM_INF) : 1e9;
}

// The encoder of HEIC files keeps some memory.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libx265";
}
