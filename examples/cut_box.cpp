// Cuts the object in a box out of a photograph: cut_box IN LEFT TOP RIGHT BOTTOM CUTOUT.png
#include <segmentation_core.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    cv::Mat photo = argc == 7 ? cv::imread(argv[1]) : cv::Mat();
    if (photo.empty())
        return 1;
    const int left = std::stoi(argv[2]), top = std::stoi(argv[3]);
    const int right = std::stoi(argv[4]), bottom = std::stoi(argv[5]);
    cv::cvtColor(photo, photo, cv::COLOR_BGR2BGRA);  // four bytes a pixel, as the library takes it
    cv::Mat outlined = photo.clone(), mask(photo.size(), CV_8U, cv::Scalar(255));
    cv::Mat marks(photo.size(), CV_32S, cv::Scalar(SEGCORE_MARK_NONE));
    marks(cv::Range(top, bottom + 1), cv::Range(left, right + 1)) = SEGCORE_MARK_CANDIDATE;
    std::vector<int> loop = {left, top, right, top, right, bottom, left, bottom};

    setSourceImage(photo.cols, photo.rows, photo.ptr<uint32_t>());
    initSegmentationEngine(0);
    setCurrentMarkerVector(static_cast<int>(loop.size()), loop.data());
    setMarkerImage(photo.cols, photo.rows, marks.ptr<int>(), SEGCORE_LOOP_ADD);
    processSegment(0, 0, 0, outlined.ptr<uint32_t>(), mask.ptr());  // brush strokes may follow
    deinitSegmentation();

    cv::insertChannel(255 - mask, photo, 3);  // the mask is 0 on the object
    return cv::imwrite(argv[6], photo) ? 0 : 1;
}
