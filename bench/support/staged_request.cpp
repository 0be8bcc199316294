#include "support/staged_request.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "colour/model_init.h"
#include "colour/model_update.h"
#include "colour/training_data.h"
#include "engine/hybrid.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/timers.h"

namespace {

constexpr int kPasses = 5;
constexpr int kTrials = 3;
constexpr int kTrainModels = 0;
constexpr int kKeepModels = 2;
constexpr double kStartLambda = 50.0;
constexpr double kNoise = 0.1;
constexpr double kNoiseHomogeneous = 10.0;

bool reduced() {
    return g_imageResizeFactor > 1.0F;
}

}  // namespace

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
    : m_photo(photo), m_clock(clock) {
    m_clock.run("photo in", [&] { setSourceImage(photo.width, photo.height, photo.words.data()); });
    m_clock.run("preparation", [] { initSegmentationEngine(0); });
}

StagedRequest::~StagedRequest() {
    pHybrid->clearMemory();
    releaseImage(g_resultMask);
    releaseImage(g_markerImage);
    deinitSegmentation();
}

void StagedRequest::begin(Marks& marks) {
    m_clock.run("marks in", [&] { storeMarks(m_photo, marks); });
    m_clock.run("label image", [] { pHybrid->setLabelImage(g_markerImage); });
    restartCancelTimer();
    m_clock.run("working region", [] {
        pHybrid->computeBoundingBox();
        pHybrid->preProcess();
    });
    m_clock.run("graph memory", [] { pHybrid->graphSpaceAllocator(); });
    m_clock.run("crops", [] {
        pHybrid->m_cropImage = pHybrid->cropImage(VORNSEMarker::m_srcImage);
        pHybrid->m_cropLabel = pHybrid->cropImage(VORNSEMarker::m_labelImage);
        pHybrid->m_startLabel = cvCloneImage(pHybrid->m_cropLabel);
    });
    pHybrid->m_lambda = kStartLambda;
    VORNSEMarker::m_noiseLevel = kNoise;
    m_choose = true;
    m_mode = kTrainModels;
}

void StagedRequest::trainModels(int pass) {
    VORNSEHybrid& engine = *pHybrid;
    if (m_choose) {
        m_clock.run("smoothness choice", [&] { m_mode = engine.parallelLamdaSwtich(pass); });
    }
    if (m_mode == kKeepModels) {
        return;
    }
    m_clock.run("samples", [&] {
        extractTrainingData(engine.m_cropImage, engine.m_cropLabel, m_foreground, m_background);
    });
    if (m_mode == kTrainModels) {
        m_clock.run("k-means", [&] {
            initModel(m_background, engine.m_bgModel, 0);
            initModel(m_foreground, engine.m_fgModel, 0);
        });
    } else {
        m_clock.run("model update", [&] {
            updateModel(m_foreground, m_background, engine.m_fgModel, engine.m_bgModel);
        });
    }
    const bool compact = pass == 0 && engine.m_bgModel.colorModelCriteria();
    const bool homogeneous = compact || VORNSEMarker::m_isHomogenous;
    engine.m_fgModel.setInverseCovariance();
    if (homogeneous) {
        VORNSEMarker::m_noiseLevel = kNoiseHomogeneous;
        engine.m_lambda = kStartLambda;
    }
    engine.m_bgModel.setInverseCovariance();
    VORNSEMarker::m_noiseLevel = kNoise;
    if (m_mode == kTrainModels) {
        m_choose = !homogeneous;
    }
    VORNSEMarker::m_isHomogenous = homogeneous;
    m_mode = kTrainModels + 1;
}

void StagedRequest::buildGraph() {
    m_clock.run("graph build", [] { pHybrid->constructGraphVORN_Whole_Image(); });
}

void StagedRequest::cut(int pass) {
    m_clock.run("max-flow", [] { pHybrid->m_graph->maxFlow(); });
    m_clock.run("cut to labels", [&] {
        pHybrid->updateLabelImage();
        if (pass < kTrials) {
            pHybrid->m_trialLabels[pass] = cvCloneImage(pHybrid->m_cropLabel);
        }
    });
    pHybrid->cancelSegmentation();
}

void StagedRequest::runPasses(const std::function<void(int pass)>& visit) {
    for (int pass = 0; pass < kPasses; ++pass) {
        trainModels(pass);
        buildGraph();
        if (visit) {
            visit(pass);
        }
        cut(pass);
    }
    if (VORNSEMarker::m_isHomogenous) {
        m_clock.run("smoothness choice", [] { pHybrid->chooseIter(); });
    }
}

ImagePtr StagedRequest::workingMask() {
    VORNSEHybrid& engine = *pHybrid;
    ImagePtr mask = createImage(engine.m_width, engine.m_height, 1);
    cvSetZero(mask.get());
    for (int y = 0; y < engine.m_cropHeight; ++y) {
        const std::uint8_t* crop = rowOf(engine.m_cropLabel, y);
        const int row = VORNSEMarker::m_yMinBBox + y;
        std::uint8_t* labels = rowOf(VORNSEMarker::m_labelImage, row) + VORNSEMarker::m_xMinBBox;
        std::uint8_t* out = rowOf(mask.get(), row) + VORNSEMarker::m_xMinBBox;
        for (int x = 0; x < engine.m_cropWidth; ++x) {
            labels[x] = crop[x];
            out[x] = label::isObject(crop[x]) ? std::uint8_t(reduced() ? 1 : 255) : std::uint8_t{0};
        }
    }
    return mask;
}

ImagePtr StagedRequest::finish() {
    m_clock.run("graph memory", [] { pHybrid->graphSpaceDellocator(); });
    ImagePtr mask;
    m_clock.run("crops", [&] { mask = workingMask(); });
    if (reduced()) {
        m_clock.run("upscaling", [&] { mask.reset(pHybrid->intelligentUpscaling(mask.get())); });
    }
    m_clock.run("post-processing", [&] { pHybrid->postProcess(mask.get()); });
    m_clock.run("history write", [&] { VORNSEManageUndoRedo::record(mask.get()); });
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
