// Invariant: an image member is null or owned by the store.
#include "history/marker.h"

#include "support/image.h"

namespace {
constexpr double kDefaultNoiseLevel = 0.1;
}

IplImage* VORNSEMarker::m_originalImage = nullptr;
int VORNSEMarker::m_originalWidth = 0;
int VORNSEMarker::m_originalHeight = 0;
IplImage* VORNSEMarker::m_srcImage = nullptr;
int VORNSEMarker::m_width = 0;
int VORNSEMarker::m_height = 0;
IplImage* VORNSEMarker::m_labelImage = nullptr;
IplImage* VORNSEMarker::m_prevResult = nullptr;
IplImage* VORNSEMarker::m_texHor = nullptr;
IplImage* VORNSEMarker::m_texVer = nullptr;
int VORNSEMarker::m_xMinBBox = 0;
int VORNSEMarker::m_xMaxBBox = 0;
int VORNSEMarker::m_yMinBBox = 0;
int VORNSEMarker::m_yMaxBBox = 0;
double VORNSEMarker::m_noiseLevel = 0.0;
bool VORNSEMarker::m_isGreyScale = false;
bool VORNSEMarker::m_isHomogenous = false;
std::atomic<bool> VORNSEMarker::m_exitApp{false};
strokeInfo VORNSEMarker::currentStroke;

void VORNSEMarker::allocator() {}

void VORNSEMarker::initializer() {
    m_exitApp = false;
    m_noiseLevel = kDefaultNoiseLevel;
    m_labelImage = nullptr;
    m_isHomogenous = false;
}

void VORNSEMarker::resetMarkers() {
    releaseImage(m_labelImage);
    releaseImage(m_prevResult);
    m_exitApp = false;
    m_noiseLevel = kDefaultNoiseLevel;
    m_isHomogenous = false;
    currentStroke.m_points.clear();
}

void VORNSEMarker::dellocator() {
    releaseImage(m_srcImage);
    releaseImage(m_labelImage);
    releaseImage(m_originalImage);
    releaseImage(m_prevResult);
    releaseImage(m_texHor);
    releaseImage(m_texVer);
    currentStroke.m_points.clear();
}
