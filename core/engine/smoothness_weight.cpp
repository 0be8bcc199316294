// The smoothness weight is found by trial: three cuts are made with falling weights, and judged
// by the shape of their objects and by the contrast along their outlines. The best weight is
// kept. Notation: a trial's "kept" pixels are those of its large components, above 70 percent of
// the largest one's size.
#include <algorithm>
#include <climits>
#include <cmath>
#include <iterator>
#include <memory>
#include <new>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "engine/hybrid.h"
#include "engine/model_mode.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"
#include "support/tracked_memory.h"

namespace {

constexpr float kColourWeights[kTrials] = {50.0F, 13.513F, 8.0F};
constexpr float kGreyWeights[kTrials] = {15.0F, 10.0F, 7.0F};
constexpr double kColourFallback = 4.0;
constexpr double kGreyFallback = 3.0;

constexpr int kPassed = 1;
constexpr int kFailed = 2;
constexpr int kNoTrial = -1;

constexpr double kKeptShare = 0.7;  // of the largest component's size
constexpr float kFrameFraction = 0.15F;
constexpr float kSmallestArea = 100.0F;
constexpr float kScatteredAreas = 0.4F;
constexpr int kFirstComponent = 2;  // 0 and 1 are the unnumbered values
constexpr int kFourConnected = 4;

struct CountRelease {
    void operator()(int* counts) const { VORN_Free_Msg(counts, "optimalLamda", 3165); }
};

// Numbers the 4-connected components of 1s from kFirstComponent in scan order; numbers above 255
// share 255. Returns the first unused number.
int numberComponents(cv::Mat& image) {
    int next = kFirstComponent;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            if (image.at<std::uint8_t>(y, x) == 1) {
                cv::floodFill(image, cv::Point(x, y), cv::Scalar(next), nullptr, cv::Scalar(),
                              cv::Scalar(), kFourConnected);
                ++next;
            }
        }
    }
    return next;
}

int largestComponent(const int* counts, int end) {
    if (end <= kFirstComponent) {
        return 0;
    }
    int best = counts[kFirstComponent] > 0 ? kFirstComponent : 0;
    for (int k = kFirstComponent + 1; k < end; ++k) {
        if (counts[k] > counts[best]) {
            best = k;
        }
    }
    return counts[best];
}

// Reduces the trial's object to its kept components, 255 in `work`; returns their area.
int keepLargeComponents(const IplImage* trial, IplImage* work) {
    for (int y = 0; y < work->height; ++y) {
        const std::uint8_t* row = rowOf(trial, y);
        std::uint8_t* out = rowOf(work, y);
        for (int x = 0; x < work->width; ++x) {
            out[x] = label::isObject(row[x]) ? 1 : 0;
        }
    }
    cv::Mat image = cv::cvarrToMat(work);
    const int end = numberComponents(image);
    const std::unique_ptr<int, CountRelease> counts(static_cast<int*>(
        VORN_Calloc_Msg(static_cast<std::size_t>(end), sizeof(int), "optimalLamda", 3136)));
    if (counts == nullptr) {
        throw std::bad_alloc();
    }
    for (int y = 0; y < image.rows; ++y) {
        const auto* row = image.ptr<std::uint8_t>(y);
        for (int x = 0; x < image.cols; ++x) {
            ++counts.get()[row[x]];
        }
    }
    counts.get()[0] = counts.get()[1] = 0;
    const auto threshold = static_cast<int>(largestComponent(counts.get(), end) * kKeptShare);
    int area = 0;
    for (int y = 0; y < image.rows; ++y) {
        auto* row = image.ptr<std::uint8_t>(y);
        for (int x = 0; x < image.cols; ++x) {
            const bool kept = counts.get()[row[x]] > threshold;
            row[x] = kept ? 255 : 0;
            area += kept ? 1 : 0;
        }
    }
    return area;
}

// The last trial of the list, or the one before it when several trials agree in area.
int chooseByArea(const int* valid, int count, const int* areas) {
    float largest = 0.0F;
    float sum = 0.0F;
    for (int i = 0; i < count; ++i) {
        const auto area = static_cast<float>(areas[valid[i]]);
        largest = std::max(largest, area);
        sum += area;
    }
    const float mean = sum / (largest * static_cast<float>(count));
    float variance = 0.0F;
    for (int i = 0; i < count; ++i) {
        const float difference = mean - static_cast<float>(areas[valid[i]]) / largest;
        variance += difference * difference;
    }
    if (largest < kSmallestArea) {
        return kNoTrial;
    }
    return count == 1 || variance > kScatteredAreas ? valid[count - 1] : valid[count - 2];
}

}  // namespace

int VORNSEHybrid::parallelLamdaSwtich(int pass) {
    if (pass > kTrials) {
        return kUpdateModels;
    }
    const bool grey = VORNSEMarker::m_isGreyScale;
    const float* weights = grey ? kGreyWeights : kColourWeights;
    if (pass < kTrials) {
        // Trials run with whole weights; only the chosen one keeps its fraction.
        m_lambda = static_cast<double>(static_cast<int>(weights[pass]));
        cvCopy(m_startLabel, m_cropLabel);
        return pass == 0 ? kTrainModels : kKeepModels;
    }
    const int best = optimalLamda(m_trialLabels, nullptr);
    if (best == kNoTrial) {
        m_lambda = grey ? kGreyFallback : kColourFallback;
        cvCopy(m_startLabel, m_cropLabel);
        return kKeepModels;
    }
    m_lambda = static_cast<double>(weights[best]);
    cvCopy(m_trialLabels[best], m_cropLabel);
    return kUpdateModels;
}

int VORNSEHybrid::optimalLamda(IplImage* trialLabels[3], float* /*unused*/) {
    checkImageSize(trialLabels[0]->width, trialLabels[0]->height, "optimalLamda", 3107);
    const ImagePtr work = createImage(trialLabels[0]->width, trialLabels[0]->height, 1);
    int areas[kTrials];
    bool fillsFrame[kTrials];
    int valid[kTrials];
    int validCount = 0;
    for (int i = 0; i < kTrials; ++i) {
        areas[i] = keepLargeComponents(trialLabels[i], work.get());
        fillsFrame[i] = boundaryTest(work.get(), kFrameFraction);
        if (intensityTest(work.get()) == kPassed) {
            valid[validCount++] = i;
        }
    }
    if (validCount == 0) {
        return 0;
    }
    int framed = kNoTrial;
    for (int i = 0; i < validCount; ++i) {
        if (fillsFrame[valid[i]] && (framed == kNoTrial || areas[valid[i]] < areas[framed])) {
            framed = valid[i];
        }
    }
    return framed != kNoTrial ? framed : chooseByArea(valid, validCount, areas);
}

bool VORNSEHybrid::boundaryTest(IplImage* mask, float fraction) {
    int minRow = INT_MAX;
    int maxRow = -1;
    int minColumn = INT_MAX;
    int maxColumn = -1;
    for (int y = 0; y < mask->height; ++y) {
        const std::uint8_t* row = rowOf(mask, y);
        for (int x = 0; x < mask->width; ++x) {
            if (row[x] == 255) {
                minRow = std::min(minRow, y);
                maxRow = std::max(maxRow, y);
                minColumn = std::min(minColumn, x);
                maxColumn = std::max(maxColumn, x);
            }
        }
    }
    const auto rowLimit = static_cast<int>(static_cast<float>(mask->height) * fraction);
    const auto columnLimit = static_cast<int>(static_cast<float>(mask->width) * fraction);
    return mask->height - maxRow < rowLimit && minRow < rowLimit &&
           mask->width - maxColumn < columnLimit && minColumn < columnLimit;
}

int VORNSEHybrid::intensityTest(IplImage* mask) {
    double outlineSum = 0.0;
    double insideSum = 0.0;
    int outlineCount = 0;
    int insideCount = 0;
    for (int x = 1; x <= mask->width - 2; ++x) {
        for (int y = 1; y <= mask->height - 2; ++y) {
            if (rowOf(mask, y)[x] != 255) {
                continue;
            }
            const std::uint8_t* p = rowOf(m_cropImage, y) + kChannels * x;
            for (int dy = -1; dy <= 1; ++dy) {
                const std::uint8_t* maskRow = rowOf(mask, y + dy);
                const std::uint8_t* imageRow = rowOf(m_cropImage, y + dy);
                for (int dx = -1; dx <= 1; ++dx) {
                    if (dx == 0 && dy == 0) {
                        continue;
                    }
                    const std::uint8_t* q = imageRow + kChannels * (x + dx);
                    double squared = 0.0;
                    for (int c = 0; c < kChannels; ++c) {
                        const double difference = p[c] - q[c];
                        squared += difference * difference;
                    }
                    const float distance = std::sqrt(static_cast<float>(squared));
                    if (maskRow[x + dx] < 255) {
                        outlineSum += static_cast<double>(distance);
                        ++outlineCount;
                    } else {
                        insideSum += static_cast<double>(distance);
                        ++insideCount;
                    }
                }
            }
        }
    }
    return outlineSum / outlineCount - insideSum / insideCount >= 0.0 ? kPassed : kFailed;
}

int VORNSEHybrid::homogenousLamda(int pass) {
    const bool compact = pass == 0 && m_bgModel.colorModelCriteria();
    m_fgModel.setInverseCovariance();
    if (compact || VORNSEMarker::m_isHomogenous) {
        VORNSEMarker::m_noiseLevel = kNoiseFlatBackground;
        m_bgModel.setInverseCovariance();
        VORNSEMarker::m_noiseLevel = kNoise;
        VORNSEMarker::m_isHomogenous = true;
        m_lambda = kStartLambda;
        return kFlatBackground;
    }
    m_bgModel.setInverseCovariance();
    VORNSEMarker::m_isHomogenous = false;
    return kVariedBackground;
}
