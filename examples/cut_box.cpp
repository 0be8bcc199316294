// Cuts the object in a box out of a photograph: cut_box IN LEFT TOP RIGHT BOTTOM CUTOUT.png
#include <segmentation_core.h>

#include <cstdlib>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 7) {
        std::cerr << "usage: cut_box IN LEFT TOP RIGHT BOTTOM CUTOUT.png\n";
        return 1;
    }
    cv::Mat photo = cv::imread(argv[1]);
    const cv::Point from(std::atoi(argv[2]), std::atoi(argv[3]));
    const cv::Point to(std::atoi(argv[4]) + 1, std::atoi(argv[5]) + 1);  // RIGHT, BOTTOM inside
    const cv::Rect box = cv::Rect(from, to) & cv::Rect({}, photo.size());
    if (box.empty()) {
        std::cerr << "cut_box: no picture in " << argv[1] << ", or the box lies outside of it\n";
        return 1;
    }
    cv::cvtColor(photo, photo, cv::COLOR_BGR2BGRA);  // four bytes a pixel, as the library takes it
    cv::Mat outlined = photo.clone(), mask(photo.size(), CV_8U, cv::Scalar(255));
    cv::Mat marks(photo.size(), CV_32S, cv::Scalar(SEGCORE_MARK_NONE));
    marks(box) = SEGCORE_MARK_CANDIDATE;
    const int right = box.x + box.width - 1, bottom = box.y + box.height - 1;
    std::vector<int> loop = {box.x, box.y, right, box.y, right, bottom, box.x, bottom};

    setSourceImage(photo.cols, photo.rows, photo.ptr<uint32_t>());
    initSegmentationEngine(0);
    setCurrentMarkerVector(static_cast<int>(loop.size()), loop.data());
    setMarkerImage(photo.cols, photo.rows, marks.ptr<int>(), SEGCORE_LOOP_ADD);
    processSegment(0, 0, 0, outlined.ptr<uint32_t>(), mask.ptr());  // brush strokes may follow
    deinitSegmentation();

    cv::insertChannel(255 - mask, photo, 3);  // the mask is 0 on the object
    if (!cv::haveImageWriter(argv[6]) || !cv::imwrite(argv[6], photo)) {
        std::cerr << "cut_box: cannot write " << argv[6] << "\n";
        return 1;
    }
}
