// Construction of the engine and the one-time preparation: the photograph is reduced to a working
// image of about 320 x 240 pixels, judged grey or coloured, and its neighbour links are computed.
// Invariant after intializer: m_srcImage, m_nLinks and, for grey photographs, the texture images
// fit m_width x m_height and serve every later request.
#include "engine/hybrid.h"

#include <opencv2/imgproc/imgproc_c.h>

#include <cmath>
#include <cstdlib>

#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"
#include "support/tracked_memory.h"

float g_imageResizeFactor = 1.0F;

namespace {

constexpr float kInverseWorkingPixels = 1.3020834e-5F;  // 1 / (320 * 240)
constexpr float kGreyMean = 1.0F;  // mean channel difference below which a photograph is grey

float meanChannelDifference(const IplImage* image) {
    float sum = 0.0F;
    for (int y = 0; y < image->height; ++y) {
        const std::uint8_t* pixel = rowOf(image, y);
        for (int x = 0; x < image->width; ++x, pixel += kChannels) {
            sum +=
                static_cast<float>(std::abs(pixel[0] - pixel[1]) + std::abs(pixel[0] - pixel[2]));
        }
    }
    return sum / static_cast<float>(image->width * image->height);
}

}  // namespace

VORNSEHybrid::VORNSEHybrid()
    : m_width(0),
      m_height(0),
      m_cropHeight(0),
      m_cropWidth(0),
      m_cropImage(nullptr),
      m_cropLabel(nullptr),
      m_startLabel(nullptr),
      m_trialLabels{},
      m_lambda(0.0),
      m_boxAreaTenth(0),
      m_graph(nullptr),
      m_nLinks(nullptr),
      m_beta(0.0),
      m_trimapGraph(nullptr),
      m_boundWidthTrimap(0),
      m_boundHeightTrimap(0),
      m_photoWidth(0),
      m_photoHeight(0) {}

VORNSEHybrid::~VORNSEHybrid() {
    m_graph = nullptr;
    VORN_Free_Msg(m_nLinks, "~VORNSEHybrid", 66);
}

void VORNSEHybrid::intializer() {
    const IplImage* photo = VORNSEMarker::m_originalImage;
    const int photoWidth = VORNSEMarker::m_originalWidth;
    const int photoHeight = VORNSEMarker::m_originalHeight;
    const float factor =
        std::sqrt(static_cast<float>(photoWidth * photoHeight) * kInverseWorkingPixels);
    if (factor > 1.0F) {
        g_imageResizeFactor = factor;
    }
    ImagePtr working;
    if (g_imageResizeFactor != 1.0F) {
        VORNSEMarker::m_width =
            static_cast<int>(static_cast<float>(photoWidth) / g_imageResizeFactor);
        VORNSEMarker::m_height =
            static_cast<int>(static_cast<float>(photoHeight) / g_imageResizeFactor);
        checkImageSize(VORNSEMarker::m_width, VORNSEMarker::m_height, "intializer", 103);
        working = createImage(VORNSEMarker::m_width, VORNSEMarker::m_height, kChannels);
        cvResize(photo, working.get(), CV_INTER_LINEAR);
    } else {
        VORNSEMarker::m_width = photoWidth;
        VORNSEMarker::m_height = photoHeight;
        checkImageSize(photoWidth, photoHeight, "intializer", 92);
        working = cloneImage(photo);
    }
    releaseImage(VORNSEMarker::m_srcImage);
    VORNSEMarker::m_srcImage = working.release();

    // Negated, so that an image without pixels counts as grey.
    VORNSEMarker::m_isGreyScale = !(meanChannelDifference(VORNSEMarker::m_srcImage) >= kGreyMean);
    if (VORNSEMarker::m_isGreyScale) {
        computeTexture();
    }
    m_width = VORNSEMarker::m_srcImage->width;
    m_height = VORNSEMarker::m_srcImage->height;
    computeNlinks();
    m_photoWidth = photoWidth;
    m_photoHeight = photoHeight;
    for (IplImage*& trial : m_trialLabels) {
        trial = nullptr;
    }
}

bool VORNSEHybrid::greyScaleTest(IplImage* image) {
    return meanChannelDifference(image) < kGreyMean;
}

void VORNSEHybrid::graphSpaceAllocator() {
    const int pixels = m_cropWidth * m_cropHeight;
    m_graph = new VORNSEGraph(pixels, pixels * kSlotsPerNode, m_cropWidth, m_cropHeight, 0);
}

void VORNSEHybrid::graphSpaceDellocator() {
    delete m_graph;
    m_graph = nullptr;
}
