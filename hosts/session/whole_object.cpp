#include "session/whole_object.h"

#include <opencv2/imgproc.hpp>

namespace {

// Fewer changed pixels than this of the photograph, and a further pass changes next to nothing.
constexpr double kSettled = 0.0005;

bool hasSettled(const cv::Mat& before, const cv::Mat& after) {
    cv::Mat changed;
    cv::bitwise_xor(before, after, changed);
    return cv::countNonZero(changed) < kSettled * static_cast<double>(changed.total());
}

// Not empty, as the region is not, however thin it is.
cv::Mat reducedTo(cv::Size size, const cv::Mat& region) {
    cv::Mat small;
    cv::resize(region, small, size, 0, 0, cv::INTER_NEAREST);
    if (cv::countNonZero(small) == 0) {
        const cv::Rect around = cv::boundingRect(region);
        small.at<std::uint8_t>(around.y * size.height / region.rows,
                               around.x * size.width / region.cols) = 255;
    }
    return small;
}

}  // namespace

FoundObject findObject(EngineCalls& engine, const ObjectSearch& search) {
    const cv::Mat region = search.marks.region();
    cv::Mat candidates = search.candidates & region;
    FoundObject found;
    for (found.passes = 1; found.passes < search.passes && search.hasTime(); ++found.passes) {
        engine.reset();
        const cv::Mat working = engine.workingMask(search.marks.request(candidates));
        const cv::Mat next = enlargedTo(region.size(), working) & region;
        if (hasSettled(candidates, next)) {
            break;
        }
        candidates = next;
    }
    engine.reset();
    engine.segment(search.marks.request(candidates));
    found.mask = search.marks.honouredBy(engine.mask());
    return found;
}

ChosenStart chooseBoxStart(EngineCalls& engine, const Photo& photo, const cv::Mat& region,
                           const RegionStart* only, const std::function<bool()>& hasTime) {
    const Photo small = smallCopy(photo);
    const cv::Mat smallRegion = reducedTo(small.size(), region);
    UserMarks marks(small.size());
    marks.addRegion(smallRegion);
    engine.take(small);
    ChosenStart chosen;
    cv::Mat mask;
    double best = 0.0;
    for (const RegionStart& start : kBoxStarts) {
        if ((only != nullptr && &start != only) || (chosen.start != nullptr && !hasTime())) {
            continue;
        }
        engine.reset();
        const cv::Mat found = engine.workingMask(marks.request(insideOf(start, smallRegion)));
        const double score = separation(small, smallRegion, found);
        if (chosen.start == nullptr || score > best) {
            best = score;
            chosen.start = &start;
            mask = found;
        }
    }
    engine.take(photo);
    chosen.candidates = enlargedTo(photo.size(), mask);
    return chosen;
}

cv::Mat loopStart(const Photo& photo, const cv::Mat& region) {
    const cv::Mat small = reducedTo(smallSize(photo.size()), region);
    return enlargedTo(photo.size(), insideOf(kLoopStart, small));
}
