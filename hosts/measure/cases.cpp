#include "cases.h"

#include <chrono>
#include <stdexcept>

#include "measure/mark_case.h"
#include "measure/photo_choice.h"

namespace {

// Empty when the photograph lacks one of the case's marks.
cv::Mat cut(const DataPhoto& photo, const cv::Mat& image, const std::string& markCase,
            double timeLimit) {
    try {
        CaseSession session(photo, image, timeLimit);
        return session.apply(markCase) ? session.mask() : cv::Mat();
    } catch (const UserError& error) {
        throw std::runtime_error(photo.name() + " " + markCase + ": " + error.what());
    }
}

cv::Mat scribblesOf(const DataPhoto& photo, const std::string& markCase) {
    const std::string last = marksOf(markCase).back();
    return last == "s1" || last == "s2" ? photo.scribbles(last) : cv::Mat();
}

}  // namespace

std::vector<CaseResult> cutCases(const DataPhoto& photo, const CaseOptions& options,
                                 ResultPictures& pictures) {
    std::vector<CaseResult> results;
    const cv::Mat image = photo.image();
    const cv::Mat truth = photo.truth();
    for (const std::string& markCase : options.cases) {
        const auto start = std::chrono::steady_clock::now();
        const cv::Mat mask = cut(photo, image, markCase, options.timeLimit);
        const std::chrono::duration<double, std::milli> elapsed =
            std::chrono::steady_clock::now() - start;
        if (mask.empty()) {
            continue;
        }
        CaseResult result;
        result.photo = photo.name();
        result.markCase = markCase;
        result.large = isLarge(image);
        result.milliseconds = elapsed.count();
        if (!truth.empty()) {
            result.score = scoreOf(mask, truth);
        }
        pictures.add(
            {result.photo, markCase, result.score, image, mask, scribblesOf(photo, markCase)});
        results.push_back(std::move(result));
    }
    return results;
}

std::map<std::pair<std::string, bool>, CaseMean> meansOf(const std::vector<CaseResult>& results) {
    std::map<std::pair<std::string, bool>, CaseMean> means;
    for (const CaseResult& result : results) {
        if (result.score) {
            CaseMean& sum = means[{result.markCase, result.large}];
            ++sum.count;
            sum.errorRate += result.score->errorRate;
            sum.iou += result.score->iou;
            sum.milliseconds += result.milliseconds;
        }
    }
    for (auto& [key, mean] : means) {
        mean.errorRate /= mean.count;
        mean.iou /= mean.count;
        mean.milliseconds /= mean.count;
    }
    return means;
}
