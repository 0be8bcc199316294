#include "interface/observer.h"

#include <algorithm>
#include <opencv2/core.hpp>

#include "engine/preview.h"
#include "engine/segmentation_request.h"
#include "interface/call_status.h"
#include "interface/engine_state.h"
#include "interface/host_call.h"
#include "interface/segmentation_core.h"

namespace {

segcore_observer observer = nullptr;
void* observerData = nullptr;
bool isInside = false;

struct Inside {
    Inside() { isInside = true; }
    ~Inside() { isInside = false; }
};

// Shares of a request's time, measured at 0.2 to 12 megapixels. The cut at photo size takes more of
// a larger photograph; a bar that is in doubt should rather hurry at its end.
constexpr double kBeforePasses = 0.05;
constexpr double kPassesWithoutEnlargement = 0.85;
constexpr double kPassesWithEnlargement = 0.35;
constexpr double kAfterMask = 0.95;

double passesShare() {
    return g_imageResizeFactor > 1.0F ? kPassesWithEnlargement : kPassesWithoutEnlargement;
}

double inPass(int pass, double share) {
    return kBeforePasses + passesShare() * (pass + share) / SegmentationRequest::kPasses;
}

// A stage as hosts know it, with the share of the request that lies before it. Several of the
// engine's stages are one to a host.
struct Progress {
    int stage;
    double fraction;
};

Progress progressOf(Stage stage, int pass) {
    switch (stage) {
        case Stage::kLabelImage:
            return {SEGCORE_STAGE_MARKS, 0.0};
        case Stage::kWorkingRegion:
        case Stage::kCrops:
        case Stage::kGraphMemory:
            return {SEGCORE_STAGE_REGION, 0.02};
        case Stage::kSmoothnessChoice:
        case Stage::kSamples:
        case Stage::kKMeans:
        case Stage::kModelUpdate:
            return {SEGCORE_STAGE_MODELS, inPass(pass, 0.0)};
        case Stage::kGraphBuild:
            return {SEGCORE_STAGE_GRAPH, inPass(pass, 0.3)};
        case Stage::kMaxFlow:
        case Stage::kCutToLabels:
            return {SEGCORE_STAGE_CUT, inPass(pass, 0.5)};
        case Stage::kFirstOrLastPass:
        case Stage::kWorkingMask:
            return {SEGCORE_STAGE_WORKING_MASK, kBeforePasses + passesShare()};
        case Stage::kUpscaling:
            return {SEGCORE_STAGE_ENLARGEMENT, kBeforePasses + passesShare()};
        case Stage::kPostProcessing:
        case Stage::kHistoryWrite:
            return {SEGCORE_STAGE_CLEANING, kAfterMask};
        case Stage::kOutline:
        case Stage::kMaskOut:
            return {SEGCORE_STAGE_DELIVERY, kAfterMask + 0.03};
    }
    return {SEGCORE_STAGE_MARKS, 0.0};
}

}  // namespace

bool isInsideObserver() noexcept {
    return isInside;
}

ObservedRequest::ObservedRequest() : m_isSet(observer != nullptr) {
    if (m_isSet) {
        m_before = watchStages(this);
    }
}

ObservedRequest::~ObservedRequest() {
    if (m_isSet) {
        watchStages(m_before);
    }
}

void ObservedRequest::begins(Stage stage, int pass) {
    const Progress progress = progressOf(stage, pass);
    m_fraction = std::max(m_fraction, progress.fraction);
    // The stage of the working mask is told with the mask.
    if (progress.stage != SEGCORE_STAGE_WORKING_MASK && progress.stage != m_stageTold) {
        tell(progress.stage, nullptr);
    }
    if (m_before != nullptr) {
        m_before->begins(stage, pass);
    }
}

void ObservedRequest::ends(Stage stage, int pass) noexcept {
    if (m_before != nullptr) {
        m_before->ends(stage, pass);
    }
}

void ObservedRequest::seesWorkingMask(const IplImage* mask, int object) {
    if (m_before != nullptr) {
        m_before->seesWorkingMask(mask, object);
    }
    const ImagePtr preview = previewOf(mask, object, pHybrid->m_cropWidth, pHybrid->m_cropHeight);
    tell(SEGCORE_STAGE_WORKING_MASK, preview.get());
}

void ObservedRequest::tell(int stage, const IplImage* preview) {
    m_stageTold = stage;
    segcore_progress progress = {};
    progress.stage = stage;
    progress.fraction = m_fraction;
    cv::Mat hostMask;
    if (preview != nullptr) {
        cv::bitwise_not(cv::cvarrToMat(preview), hostMask);
        progress.mask = hostMask.data;
        progress.mask_width = preview->width;
        progress.mask_height = preview->height;
        progress.left = VORNSEMarker::m_xMinBBox;
        progress.top = VORNSEMarker::m_yMinBBox;
        progress.right = VORNSEMarker::m_xMinBBox + pHybrid->m_cropWidth - 1;
        progress.bottom = VORNSEMarker::m_yMinBBox + pHybrid->m_cropHeight - 1;
    }
    const Inside inside;
    if (observer(&progress, observerData) != 0) {
        throw EndedByObserver();
    }
}

void segcore_set_observer(segcore_observer newObserver, void* user) {
    guardedCall("segcore_set_observer", [&] {
        observer = newObserver;
        observerData = user;
    });
}
