// The context's globals, its life cycle, and the photograph in and out. Invariant: replacing a
// photo or an engine first makes the new one and then releases the old, so a call that fails leaves
// the context as it was.
#include "interface/engine_state.h"

#include <memory>
#include <opencv2/imgproc.hpp>

#include "interface/host_call.h"
#include "interface/parked_context.h"
#include "interface/segmentation_core.h"
#include "support/request_limit.h"

VORNSEHybrid* pHybrid = nullptr;
CvMemStorage* storage = nullptr;
CvSeq* contours = nullptr;
int g_exitStatus = 0;
IplImage* g_markerImage = nullptr;
IplImage* g_resultMask = nullptr;
bool g_contoursReady = false;

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "pixel words are read as bytes");

ImagePtr imageFromWords(int width, int height, const std::uint32_t* pixels) {
    ImagePtr result = createImage(width, height, kChannels);
    // A little-endian word holds its channels in the byte order of a four-channel image.
    const cv::Mat words(height, width, CV_8UC4, const_cast<std::uint32_t*>(pixels));
    cv::Mat image = cv::cvarrToMat(result.get());
    cv::cvtColor(words, image, cv::COLOR_BGRA2BGR);
    return result;
}

void requireSize(int width, int height) {
    if (width < 1 || height < 1) {
        throw HostError("width and height must be at least 1");
    }
    if (static_cast<std::int64_t>(width) * height > SEGCORE_MAX_PIXELS) {
        throw HostError("the size has too many pixels");
    }
}

bool hasPhoto() {
    return VORNSEMarker::m_originalImage != nullptr;
}

void requirePhoto() {
    if (!hasPhoto()) {
        throw HostError("no photograph, call setSourceImage first");
    }
}

void requireEngine() {
    if (pHybrid == nullptr) {
        throw HostError("no engine, call initSegmentationEngine first");
    }
    if (pHybrid->m_photoWidth != VORNSEMarker::m_originalWidth ||
        pHybrid->m_photoHeight != VORNSEMarker::m_originalHeight) {
        throw HostError("the engine belongs to another photograph, call initSegmentationEngine");
    }
}

void requireHistory() {
    if (VORNSEManageUndoRedo::m_bitPlane == nullptr) {
        throw HostError("no history, call setSourceImage first");
    }
}

void requireMarkerSize() {
    if (g_markerImage->width != VORNSEMarker::m_originalWidth ||
        g_markerImage->height != VORNSEMarker::m_originalHeight) {
        releaseImage(g_markerImage);
        throw HostError("the marker image is not of the photograph's size, marks dropped");
    }
}

void requireBuffer(const void* buffer, const char* name) {
    if (buffer == nullptr) {
        throw HostError(std::string("the ") + name + " is null");
    }
}

void storePhoto(int width, int height, const std::uint32_t* pixels) {
    requireSize(width, height);
    requireBuffer(pixels, "pixel buffer");
    ImagePtr photo = imageFromWords(width, height, pixels);
    const int oldWidth = VORNSEMarker::m_originalWidth;
    const int oldHeight = VORNSEMarker::m_originalHeight;
    VORNSEMarker::m_originalWidth = width;
    VORNSEMarker::m_originalHeight = height;
    BitPlanes oldPlanes = std::move(VORNSEManageUndoRedo::m_bitPlane);
    const int oldColumns = VORNSEManageUndoRedo::width;
    try {
        VORNSEManageUndoRedo::allocate();
    } catch (...) {
        VORNSEManageUndoRedo::m_bitPlane = std::move(oldPlanes);
        VORNSEMarker::m_originalWidth = oldWidth;
        VORNSEMarker::m_originalHeight = oldHeight;
        throw;
    }
    releasePlanes(oldPlanes, oldColumns);
    releaseImage(VORNSEMarker::m_originalImage);
    VORNSEMarker::m_originalImage = photo.release();
}

void createEngine() {
    requirePhoto();
    Parked<EngineParts> old;
    g_imageResizeFactor = 1.0F;
    pHybrid = new VORNSEHybrid;
    VORNSEMarker::initializer();
    pHybrid->intializer();
    old.release();
}

void releaseOutline() noexcept {
    if (storage != nullptr) {
        cvReleaseMemStorage(&storage);
        storage = nullptr;
    }
    contours = nullptr;
    g_contoursReady = false;
}

void tearDown() noexcept {
    releaseOutline();
    VORNSEMarker::dellocator();
    VORNSEManageUndoRedo::deallocate();
    delete pHybrid;
    pHybrid = nullptr;
}

bool tearDownIfExitPending() noexcept {
    if (g_exitStatus == 0 || !VORNSEMarker::m_exitApp) {
        return false;
    }
    tearDown();
    return true;
}

void writePhoto(std::uint32_t* out) {
    requirePhoto();
    requireBuffer(out, "pixel buffer");
    const cv::Mat image = cv::cvarrToMat(VORNSEMarker::m_originalImage);
    cv::Mat words(image.rows, image.cols, CV_8UC4, out);
    cv::cvtColor(image, words, cv::COLOR_BGR2BGRA);
}

int setSourceImage(int width, int height, const std::uint32_t* pixels) {
    guardedCall("setSourceImage", [&] {
        checkImageSize(width, height, "setSourceImage", 115);
        storePhoto(width, height, pixels);
    });
    return 0;
}

int initSegmentationEngine(int /*unused*/) {
    guardedCall("initSegmentationEngine", [] { createEngine(); });
    return 0;
}

void copySourceImage(std::uint32_t* out) {
    guardedCall("copySourceImage", [&] { writePhoto(out); });
}

int freeLocalBuffers() {
    guardedCall("freeLocalBuffers", [] {
        releaseImage(g_resultMask);
        releaseImage(g_markerImage);
    });
    return 0;
}

int resetSegmentationInterface() {
    guardedCall("resetSegmentationInterface", [] {
        VORNSEMarker::resetMarkers();
        VORNSEManageUndoRedo::reset();
        releaseOutline();
    });
    return 0;
}

int deinitSegmentation() {
    guardedCall("deinitSegmentation", [] { tearDown(); });
    return 0;
}

void cancelSegmentation() {
    VORNSEMarker::m_exitApp = true;
}

void exitSegmentation() {
    guardedCall("exitSegmentation", [] { g_exitStatus = VORNSEMarker::m_exitApp ? 1 : 0; });
}

void segcore_set_time_limit(double seconds) {
    guardedCall("segcore_set_time_limit", [&] { request_limit::set(seconds); });
}

void segcore_set_log(segcore_log receive, void* user, int least_level) {
    guardedCall("segcore_set_log", [&] { log_sink::set(receive, user, least_level); });
}
