#include "stage_scene.h"

#include <opencv2/imgproc/imgproc_c.h>
#include <algorithm>
#include <iterator>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "interface/engine_state.h"

namespace {

constexpr int kWorkingWidth = 320;
constexpr int kWorkingHeight = 240;
constexpr int kAddingStroke = 0;  // number of a later stroke that adds

ImagePtr markerImageOf(const Photograph& photo, const Marks& marks) {
    ImagePtr image = createImage(photo.width, photo.height, 1);
    for (int y = 0; y < photo.height; ++y) {
        const int* values =
            &marks.markers[static_cast<std::size_t>(y) * static_cast<std::size_t>(photo.width)];
        std::transform(values, values + photo.width, rowOf(image.get(), y),
                       [](int value) { return static_cast<std::uint8_t>(value); });
    }
    return image;
}

}  // namespace

StageScene::StageScene(Photograph photograph)
    : photo(std::move(photograph)), m_request(std::make_unique<StagedRequest>(photo, m_clock)) {
    Marks box = boxMarks(photo);
    boxMarkers = markerImageOf(photo, box);
    boxPoints = box.points;
    const Marks brush = laterBrush(photo, kAddingStroke);
    brushMarkers = markerImageOf(photo, brush);
    brushPoints = brush.points;

    m_request->begin(box);
    m_request->runPasses();
    foreground = m_request->steps().foreground();
    background = m_request->steps().background();
    for (int i = 0; i < 3; ++i) {
        trialLabels[i] = cloneImage(pHybrid->m_trialLabels[i]);
    }
    workingMask = m_request->workingMask();
    pHybrid->graphSpaceAllocator();
    pHybrid->constructGraphVORN_Whole_Image();
    reduced = g_imageResizeFactor > 1.0F;
    mask = cloneImage(workingMask.get());
    if (reduced) {
        mask.reset(pHybrid->intelligentUpscaling(mask.get()));
    }
}

StageScene::~StageScene() = default;

void StageScene::useStroke(const std::vector<int>& points, int strokeType) {
    VORNSEMarker::currentStroke.m_points = points;
    VORNSEMarker::currentStroke.m_strokeType = strokeType;
}

void StageScene::emptyHistory() {
    VORNSEManageUndoRedo::reset();
    releaseImage(VORNSEMarker::m_prevResult);
}

void StageScene::oneMaskInHistory() {
    emptyHistory();
    VORNSEManageUndoRedo::record(mask.get());
    VORNSEMarker::m_prevResult = VORNSEManageUndoRedo::shown();
}

StageScene& sceneOf(const std::string& file, int megapixels) {
    static std::unique_ptr<StageScene> scene;
    static int size = -1;
    if (scene == nullptr || size != megapixels) {
        scene.reset();
        const Photograph photo = loadPhotograph(file);
        scene = std::make_unique<StageScene>(megapixels == 0
                                                 ? resized(photo, kWorkingWidth, kWorkingHeight)
                                                 : enlarged(photo, megapixels));
        size = megapixels;
    }
    return *scene;
}

KeepRegion::KeepRegion()
    : m_labels(cloneImage(VORNSEMarker::m_labelImage)),
      m_box{VORNSEMarker::m_xMinBBox, VORNSEMarker::m_xMaxBBox, VORNSEMarker::m_yMinBBox,
            VORNSEMarker::m_yMaxBBox},
      m_cropWidth(pHybrid->m_cropWidth),
      m_cropHeight(pHybrid->m_cropHeight) {}

KeepRegion::~KeepRegion() {
    releaseImage(VORNSEMarker::m_labelImage);
    VORNSEMarker::m_labelImage = m_labels.release();
    VORNSEMarker::m_xMinBBox = m_box[0];
    VORNSEMarker::m_xMaxBBox = m_box[1];
    VORNSEMarker::m_yMinBBox = m_box[2];
    VORNSEMarker::m_yMaxBBox = m_box[3];
    pHybrid->m_cropWidth = m_cropWidth;
    pHybrid->m_cropHeight = m_cropHeight;
}
