#include "engine/segmentation_request.h"

#include <new>

#include "colour/model_init.h"
#include "colour/model_update.h"
#include "colour/training_data.h"
#include "engine/model_mode.h"
#include "engine/stage_watcher.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "support/log.h"
#include "support/timers.h"

namespace {

constexpr int kUnusedInitArgument = 10;

bool isReduced() {
    return g_imageResizeFactor > 1.0F;
}

}  // namespace

SegmentationRequest::SegmentationRequest(VORNSEHybrid& engine)
    : m_engine(engine), m_mode(kTrainModels) {}

void SegmentationRequest::begin() {
    g_cancelTimer = create_timer();
    start_cpu_timer(g_cancelTimer);
    {
        const StageScope stage(Stage::kWorkingRegion);
        m_engine.computeBoundingBox();
        m_engine.preProcess();
    }
    {
        const StageScope stage(Stage::kGraphMemory);
        m_engine.graphSpaceAllocator();
        if (m_engine.m_graph->m_nodes == nullptr || m_engine.m_graph->m_edgeCaps == nullptr) {
            throw std::bad_alloc();
        }
    }
    const StageScope stage(Stage::kCrops);
    m_engine.m_cropImage = m_engine.cropImage(VORNSEMarker::m_srcImage);
    m_engine.m_cropLabel = m_engine.cropImage(VORNSEMarker::m_labelImage);
    m_engine.m_startLabel = cloneImage(m_engine.m_cropLabel).release();
    m_engine.m_lambda = kStartLambda;
    VORNSEMarker::m_noiseLevel = kNoise;
}

void SegmentationRequest::prepareModels(int pass) {
    if (m_tryWeights) {
        const StageScope stage(Stage::kSmoothnessChoice, pass);
        m_mode = m_engine.parallelLamdaSwtich(pass);
    }
    if (m_mode != kTrainModels && m_mode != kUpdateModels) {
        return;
    }
    {
        const StageScope stage(Stage::kSamples, pass);
        extractTrainingData(m_engine.m_cropImage, m_engine.m_cropLabel, m_foreground, m_background);
    }
    if (m_mode == kTrainModels) {
        const StageScope stage(Stage::kKMeans, pass);
        initModel(m_background, m_engine.m_bgModel, kUnusedInitArgument);
        initModel(m_foreground, m_engine.m_fgModel, kUnusedInitArgument);
        m_tryWeights = m_engine.homogenousLamda(pass) == kVariedBackground;
    } else {
        const StageScope stage(Stage::kModelUpdate, pass);
        updateModel(m_foreground, m_background, m_engine.m_fgModel, m_engine.m_bgModel);
        m_engine.homogenousLamda(pass);
    }
    m_mode = kUpdateModels;
}

void SegmentationRequest::buildGraph(int pass) {
    const StageScope stage(Stage::kGraphBuild, pass);
    m_engine.constructGraphVORN_Whole_Image();
}

void SegmentationRequest::cut(int pass) {
    {
        const StageScope stage(Stage::kMaxFlow, pass);
        m_engine.m_graph->maxFlow();
    }
    const StageScope stage(Stage::kCutToLabels, pass);
    m_engine.updateLabelImage();
    if (pass < kTrials) {
        m_engine.m_trialLabels[pass] = cloneImage(m_engine.m_cropLabel).release();
    }
}

bool SegmentationRequest::onePass(int pass) {
    prepareModels(pass);
    buildGraph(pass);
    cut(pass);
    return !m_engine.cancelSegmentation();
}

void SegmentationRequest::choose() {
    const StageScope stage(Stage::kFirstOrLastPass);
    if (VORNSEMarker::m_isHomogenous) {
        m_engine.chooseIter();
    }
    m_engine.graphSpaceDellocator();
}

ImagePtr SegmentationRequest::workingMask() {
    const StageScope stage(Stage::kWorkingMask);
    checkImageSize(m_engine.m_width, m_engine.m_height, "getObjMask", 1410);
    ImagePtr mask = createImage(m_engine.m_width, m_engine.m_height, 1);
    cvSetZero(mask.get());
    const std::uint8_t objectValue = isReduced() ? 1 : 255;
    for (int y = 0; y < m_engine.m_cropHeight; ++y) {
        const std::uint8_t* crop = rowOf(m_engine.m_cropLabel, y);
        const int row = VORNSEMarker::m_yMinBBox + y;
        std::uint8_t* labels = rowOf(VORNSEMarker::m_labelImage, row) + VORNSEMarker::m_xMinBBox;
        std::uint8_t* out = rowOf(mask.get(), row) + VORNSEMarker::m_xMinBBox;
        for (int x = 0; x < m_engine.m_cropWidth; ++x) {
            labels[x] = crop[x];
            if (label::isObject(crop[x])) {
                out[x] = objectValue;
            }
        }
    }
    if (StageWatcher* const watcher = stageWatcher()) {
        watcher->seesWorkingMask(mask.get(), objectValue);
    }
    return mask;
}

ImagePtr SegmentationRequest::upscale(ImagePtr workingMask) {
    if (!isReduced()) {
        return workingMask;
    }
    const StageScope stage(Stage::kUpscaling);
    return ImagePtr(m_engine.intelligentUpscaling(workingMask.get()));
}

void SegmentationRequest::finish(IplImage* mask) {
    {
        const StageScope stage(Stage::kPostProcessing);
        m_engine.postProcess(mask);
    }
    const StageScope stage(Stage::kHistoryWrite);
    VORNSEManageUndoRedo::record(mask);
}
