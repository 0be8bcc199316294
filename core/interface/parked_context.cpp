#include "interface/parked_context.h"

#include <utility>

#include "interface/engine_state.h"

using History = VORNSEManageUndoRedo;

void EngineParts::take() {
    hybrid = std::exchange(pHybrid, nullptr);
    resizeFactor = g_imageResizeFactor;
    source = std::exchange(VORNSEMarker::m_srcImage, nullptr);
    labels = std::exchange(VORNSEMarker::m_labelImage, nullptr);
    textureHorizontal = std::exchange(VORNSEMarker::m_texHor, nullptr);
    textureVertical = std::exchange(VORNSEMarker::m_texVer, nullptr);
    width = VORNSEMarker::m_width;
    height = VORNSEMarker::m_height;
    noiseLevel = VORNSEMarker::m_noiseLevel;
    grey = VORNSEMarker::m_isGreyScale;
    homogenous = VORNSEMarker::m_isHomogenous;
    exitApp = VORNSEMarker::m_exitApp;
}

void EngineParts::putBack() {
    EngineParts replacement{};
    replacement.take();
    replacement.release();
    pHybrid = hybrid;
    g_imageResizeFactor = resizeFactor;
    VORNSEMarker::m_srcImage = source;
    VORNSEMarker::m_labelImage = labels;
    VORNSEMarker::m_texHor = textureHorizontal;
    VORNSEMarker::m_texVer = textureVertical;
    VORNSEMarker::m_width = width;
    VORNSEMarker::m_height = height;
    VORNSEMarker::m_noiseLevel = noiseLevel;
    VORNSEMarker::m_isGreyScale = grey;
    VORNSEMarker::m_isHomogenous = homogenous;
    VORNSEMarker::m_exitApp = exitApp;
}

void EngineParts::release() {
    delete hybrid;
    releaseImage(source);
    releaseImage(labels);
    releaseImage(textureHorizontal);
    releaseImage(textureVertical);
}

void PhotoParts::take() {
    photo = std::exchange(VORNSEMarker::m_originalImage, nullptr);
    width = VORNSEMarker::m_originalWidth;
    height = VORNSEMarker::m_originalHeight;
    previousResult = std::exchange(VORNSEMarker::m_prevResult, nullptr);
    markers = std::exchange(g_markerImage, nullptr);
    strokePoints.swap(VORNSEMarker::currentStroke.m_points);
    strokeType = VORNSEMarker::currentStroke.m_strokeType;
    planes = std::exchange(History::m_bitPlane, nullptr);
    planesWidth = History::width;
    planesHeight = History::height;
    bottom = History::m_bottom;
    current = History::m_current;
    top = History::m_top;
    outlineStorage = std::exchange(storage, nullptr);
    outline = std::exchange(contours, nullptr);
    outlineReady = std::exchange(g_contoursReady, false);
}

void PhotoParts::putBack() {
    PhotoParts replacement{};
    replacement.take();
    replacement.release();
    VORNSEMarker::m_originalImage = photo;
    VORNSEMarker::m_originalWidth = width;
    VORNSEMarker::m_originalHeight = height;
    VORNSEMarker::m_prevResult = previousResult;
    g_markerImage = markers;
    strokePoints.swap(VORNSEMarker::currentStroke.m_points);
    VORNSEMarker::currentStroke.m_strokeType = strokeType;
    History::m_bitPlane = std::move(planes);
    History::width = planesWidth;
    History::height = planesHeight;
    History::m_bottom = bottom;
    History::m_current = current;
    History::m_top = top;
    storage = outlineStorage;
    contours = outline;
    g_contoursReady = outlineReady;
}

void PhotoParts::release() {
    releaseImage(photo);
    releaseImage(previousResult);
    releaseImage(markers);
    releasePlanes(planes, planesWidth);
    if (outlineStorage != nullptr) {
        cvReleaseMemStorage(&outlineStorage);
    }
}
