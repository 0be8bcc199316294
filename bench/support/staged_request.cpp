#include "support/staged_request.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "graph/graph.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/timers.h"

namespace {

VORNSEHybrid& preparedEngine(const Photograph& photo, StageClock& clock) {
    clock.run("photo in", [&] { setSourceImage(photo.width, photo.height, photo.words.data()); });
    clock.run("preparation", [] { initSegmentationEngine(0); });
    return *pHybrid;
}

}  // namespace

void StageClock::begins(Stage /*stage*/, int /*pass*/) {
    m_stopwatch = Stopwatch();
}

void StageClock::ends(Stage stage, int /*pass*/) noexcept {
    add(nameOf(stage), m_stopwatch.elapsed());
}

void StageClock::add(const std::string& stage, const Duration& duration) {
    const auto known = std::find_if(m_stages.begin(), m_stages.end(),
                                    [&stage](const auto& entry) { return entry.first == stage; });
    if (known == m_stages.end()) {
        m_stages.emplace_back(stage, duration);
    } else {
        known->second.wall += duration.wall;
        known->second.processor += duration.processor;
    }
}

StagedRequest::StagedRequest(const Photograph& photo, StageClock& clock)
    : m_photo(photo),
      m_clock(clock),
      m_watcherBefore(watchStages(&clock)),
      m_request(preparedEngine(photo, clock)) {}

StagedRequest::~StagedRequest() {
    watchStages(m_watcherBefore);
    pHybrid->clearMemory();
    releaseImage(g_resultMask);
    releaseImage(g_markerImage);
    deinitSegmentation();
}

void StagedRequest::begin(Marks& marks) {
    m_clock.run("marks in", [&] { storeMarks(m_photo, marks); });
    m_clock.run("label image", [] { pHybrid->labelMarks(g_markerImage); });
    m_request.begin();
}

void StagedRequest::runPasses(const std::function<void(int pass)>& visit) {
    for (int pass = 0; pass < SegmentationRequest::kPasses; ++pass) {
        m_request.prepareModels(pass);
        m_request.buildGraph(pass);
        if (visit) {
            visit(pass);
        }
        m_request.cut(pass);
        pHybrid->cancelSegmentation();
    }
}

ImagePtr StagedRequest::workingMask() {
    m_request.choose();
    return m_request.workingMask();
}

ImagePtr StagedRequest::finish() {
    ImagePtr mask = m_request.upscale(workingMask());
    m_request.finish(mask.get());
    pHybrid->clearMemory();
    return mask;
}

void StagedRequest::deliver(ImagePtr mask, std::vector<std::uint32_t>& blended,
                            std::vector<std::uint8_t>& out) {
    releaseImage(g_resultMask);
    g_resultMask = mask.release();
    m_clock.run("mask out", [&] { loadMaskImageInfo(out.data()); });
    m_clock.run("outline", [&] { loadBlendedImageInfo(blended.data()); });
}

cv::Mat trimapOf(const cv::Mat& workingMask) {
    constexpr int kWide = 3;
    const cv::Mat element;
    const cv::Point centre(-1, -1);
    cv::Mat count = cv::Mat::zeros(workingMask.size(), CV_8UC1);
    cv::Mat grown;
    for (const int steps : {1, kWide}) {
        cv::dilate(workingMask, grown, element, centre, steps);
        count += grown;
        cv::erode(workingMask, grown, element, centre, steps);
        count += grown;
    }
    cv::Mat codes(1, 256, CV_8UC1, cv::Scalar(7));
    codes.at<std::uint8_t>(1) = 1;
    codes.at<std::uint8_t>(2) = 0;
    codes.at<std::uint8_t>(3) = 2;
    cv::LUT(count, codes, count);
    return count;
}

BandGraph::BandGraph(const cv::Mat& workingMask) {
    const cv::Size size(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight);
    const auto enlarge = [size](const cv::Mat& small) {
        cv::Mat large;
        cv::resize(small, large, size, 0.0, 0.0, cv::INTER_NEAREST);
        return large;
    };
    const cv::Mat trimap = enlarge(trimapOf(workingMask));
    const cv::Rect band = cv::boundingRect(trimap != 7);
    if (band.empty()) {
        return;
    }
    pHybrid->m_boundWidthTrimap = band.width;
    pHybrid->m_boundHeightTrimap = band.height;
    m_trimap = trimap(band).clone();
    m_image = cv::cvarrToMat(VORNSEMarker::m_originalImage)(band).clone();
    if (VORNSEMarker::m_isGreyScale) {
        m_horizontal = enlarge(cv::cvarrToMat(VORNSEMarker::m_texHor))(band).clone();
        m_vertical = enlarge(cv::cvarrToMat(VORNSEMarker::m_texVer))(band).clone();
    }
}

BandGraph::~BandGraph() {
    drop();
}

void BandGraph::build() {
    drop();
    IplImage image = cvIplImage(m_image);
    IplImage trimap = cvIplImage(m_trimap);
    IplImage horizontal = cvIplImage(m_horizontal);
    IplImage vertical = cvIplImage(m_vertical);
    const bool grey = VORNSEMarker::m_isGreyScale;
    pHybrid->constructGraphTrimapVORN(&image, grey ? &horizontal : nullptr, &trimap,
                                      grey ? &horizontal : nullptr, grey ? &vertical : nullptr);
}

void BandGraph::drop() {
    delete pHybrid->m_trimapGraph;
    pHybrid->m_trimapGraph = nullptr;
}

void restartCancelTimer() {
    if (g_cancelTimer == nullptr) {
        g_cancelTimer = create_timer();
    }
    start_cpu_timer(g_cancelTimer);
}
