// Results out: the inverted mask, the painted outline, the outline as points, and the direct edit
// of the mask on display.
#include <opencv2/imgproc/imgproc_c.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "interface/engine_state.h"
#include "interface/host_call.h"
#include "interface/outline_transaction.h"
#include "interface/segmentation_core.h"

namespace {

constexpr std::uint32_t kOutlineWord = 0xFFFFFF00U;  // opaque yellow
constexpr std::uint8_t kObjectByte = 255;
constexpr std::uint8_t kLit = 255;
constexpr int kOutlineThickness = 2;
constexpr int kAllLevels = 255;
constexpr int kContourEnd = -1;

void requireResult() {
    if (g_resultMask == nullptr) {
        throw HostError("there is no mask to deliver");
    }
}

// n, then T, T pairs and -1 for each contour.
std::size_t pathLength(const CvSeq* first) {
    std::size_t length = 1;
    for (const CvSeq* contour = first; contour != nullptr; contour = contour->h_next) {
        length += 2 + 2 * static_cast<std::size_t>(contour->total);
    }
    return length;
}

void writePath(const CvSeq* first, int* out) {
    int* const contourCount = out++;
    *contourCount = 0;
    for (const CvSeq* contour = first; contour != nullptr; contour = contour->h_next) {
        static_assert(sizeof(CvPoint) == 2 * sizeof(int), "points are copied as pairs of ints");
        *out++ = contour->total;
        cvCvtSeqToArray(contour, out, CV_WHOLE_SEQ);
        out += 2 * contour->total;
        *out++ = kContourEnd;
        ++*contourCount;
    }
}

void applyMarks(IplImage* mask) {
    for (int y = 0; y < mask->height; ++y) {
        const std::uint8_t* marks = rowOf(g_markerImage, y);
        std::uint8_t* row = rowOf(mask, y);
        for (int x = 0; x < mask->width; ++x) {
            if (marks[x] == label::kBackground) {
                row[x] = 0;
            } else if (marks[x] == label::kObject) {
                row[x] = kObjectByte;
            }
        }
    }
}

void editMask(std::uint32_t* blended, std::uint8_t* mask) {
    requirePhoto();
    requireHistory();
    if (g_markerImage == nullptr) {
        throw HostError("no marks, call setMarkerImage first");
    }
    requireMarkerSize();
    ImagePtr edited(VORNSEManageUndoRedo::shown());
    if (edited == nullptr) {
        edited = createImage(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, 1);
        cvSetZero(edited.get());
    }
    applyMarks(edited.get());
    g_resultMask = edited.release();
    std::optional<OutlineTransaction> transaction;
    ImagePtr outline;
    if (blended != nullptr) {
        transaction.emplace();
        findOutline();
        outline = drawOutline();
    }
    // The last that can fail; the host's buffers come after it.
    VORNSEManageUndoRedo::record(g_resultMask);
    if (blended != nullptr) {
        transaction->commit();
        paintOutline(outline.get(), blended);
    }
    if (mask != nullptr) {
        writeMask(mask);
    }
}

}  // namespace

void findOutline() {
    checkImageSize(g_resultMask->width, g_resultMask->height, "loadBlendedImageInfo", 493);
    const ImagePtr copy = cloneImage(g_resultMask);
    if (storage != nullptr) {
        contours = nullptr;
        cvReleaseMemStorage(&storage);
    }
    storage = cvCreateMemStorage(0);
    contours = nullptr;
    cvFindContours(copy.get(), storage, &contours, sizeof(CvContour), CV_RETR_LIST,
                   CV_CHAIN_APPROX_SIMPLE, cvPoint(0, 0));
    if (contours != nullptr) {
        g_contoursReady = true;
    }
}

ImagePtr drawOutline() {
    ImagePtr outline = createImage(g_resultMask->width, g_resultMask->height, 1);
    cvSetZero(outline.get());
    cvDrawContours(outline.get(), contours, cvScalarAll(255), cvScalarAll(255), kAllLevels,
                   kOutlineThickness, CV_AA, cvPoint(0, 0));
    return outline;
}

void writeMask(std::uint8_t* out) {
    const int width = g_resultMask->width;
    for (int y = 0; y < g_resultMask->height; ++y) {
        const std::uint8_t* row = rowOf(g_resultMask, y);
        out = std::transform(row, row + width, out, [](std::uint8_t value) {
            return static_cast<std::uint8_t>(value == kObjectByte ? 0 : 255);
        });
    }
}

void paintOutline(const IplImage* outline, std::uint32_t* out) {
    for (int y = 0; y < outline->height; ++y, out += outline->width) {
        const std::uint8_t* const row = rowOf(outline, y);
        const auto nextLit = [row, outline](std::ptrdiff_t from) {
            // Pixels that anti-aliasing left dimmer are not part of the painted line.
            return static_cast<const std::uint8_t*>(
                std::memchr(row + from, kLit, static_cast<std::size_t>(outline->width - from)));
        };
        for (const std::uint8_t* lit = nextLit(0); lit != nullptr; lit = nextLit(lit - row + 1)) {
            out[lit - row] = kOutlineWord;
        }
    }
}

void loadMaskImageInfo(std::uint8_t* out) {
    guardedCall("loadMaskImageInfo", [&] {
        requireResult();
        requireBuffer(out, "mask buffer");
        writeMask(out);
    });
}

void loadBlendedImageInfo(std::uint32_t* out) {
    guardedCall("loadBlendedImageInfo", [&] {
        requireResult();
        requireBuffer(out, "blended buffer");
        OutlineTransaction transaction;
        findOutline();
        const ImagePtr outline = drawOutline();
        transaction.commit();
        paintOutline(outline.get(), out);
    });
}

void fetch_path_array(int** array, int* count) {
    guardedCall("fetch_path_array", [&] {
        requireBuffer(array, "address of the array");
        requireBuffer(count, "address of the count");
        *array = nullptr;
        *count = 0;
        const CvSeq* first = g_contoursReady ? contours : nullptr;
        if (first == nullptr) {
            call_status::set(SEGCORE_NOTHING_TO_DO);
        }
        const std::size_t length = pathLength(first);
        auto path = std::make_unique<int[]>(length);
        writePath(first, path.get());
        *array = path.release();
        *count = static_cast<int>(length);
        g_contoursReady = false;
        contours = nullptr;
    });
}

void release_path_array(int* array) {
    delete[] array;
}

void cutOutImage(int /*unused1*/, int /*unused2*/, int /*unused3*/, std::uint32_t* blended,
                 std::uint8_t* mask) {
    guardedCall(
        "cutOutImage",
        [&] {
            checkImageSize(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight,
                           "cutOutImage", 197);
            editMask(blended, mask);
        },
        [] {
            releaseImage(g_resultMask);
            releaseImage(g_markerImage);
            tearDownIfExitPending();
            g_exitStatus = 0;
        });
}
