#include "session/whole_object.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <vector>

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

struct Attempt {
    const RegionStart* start;
    cv::Mat mask;
};

// Intersection over union; 1 for two empty masks.
double overlap(const cv::Mat& one, const cv::Mat& other) {
    const int either = cv::countNonZero(one | other);
    return either == 0 ? 1.0 : static_cast<double>(cv::countNonZero(one & other)) / either;
}

// What other starts find, too, is less likely a matter of chance.
constexpr double kAgreementWeight = 0.2;

double agreementOf(const std::vector<Attempt>& attempts, const Attempt& attempt) {
    double sum = 0.0;
    for (const Attempt& other : attempts) {
        sum += overlap(other.mask, attempt.mask);
    }
    return sum / static_cast<double>(attempts.size());
}

const Attempt& bestOf(const std::vector<Attempt>& attempts, const Photo& photo,
                      const cv::Mat& region) {
    std::vector<double> scores;
    for (const Attempt& attempt : attempts) {
        scores.push_back(separation(photo, region, attempt.mask) +
                         kAgreementWeight * agreementOf(attempts, attempt));
    }
    const auto best = std::max_element(scores.begin(), scores.end());
    return attempts[static_cast<std::size_t>(best - scores.begin())];
}

}  // namespace

FoundObject findObject(EngineCalls& engine, const ObjectSearch& search) {
    cv::Mat candidates = search.candidates;
    cv::Mat region;  // for further passes alone: a request looks nowhere else
    if (search.passes > 1) {
        region = search.marks.region();
        candidates = candidates & region;
    }
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
    engine.segment(search.marks.request(candidates), EngineCalls::Wanted::kMask);
    found.mask = engine.takeMask();
    search.marks.correct(found.mask);
    return found;
}

ChosenStart chooseBoxStart(EngineCalls& engine, const Photo& photo, const cv::Mat& region,
                           const RegionStart* only, const std::function<bool()>& hasTime) {
    const Photo small = smallCopy(photo);
    const cv::Mat smallRegion = reducedTo(small.size(), region);
    UserMarks marks(small.size());
    marks.addRegion({cv::Rect({0, 0}, small.size()), smallRegion});
    engine.take(small);
    std::vector<Attempt> attempts;
    for (const RegionStart& start : kBoxStarts) {
        if ((only == nullptr || &start == only) && (attempts.empty() || hasTime())) {
            engine.reset();
            attempts.push_back(
                {&start, engine.workingMask(marks.request(insideOf(start, smallRegion)))});
        }
    }
    engine.take(photo);
    const Attempt& best = bestOf(attempts, small, smallRegion);
    return {best.start, enlargedTo(photo.size(), best.mask)};
}

cv::Mat loopStart(const Photo& photo, const cv::Mat& region) {
    const cv::Mat small = reducedTo(smallSize(photo.size()), region);
    return enlargedTo(photo.size(), insideOf(kLoopStart, small));
}
