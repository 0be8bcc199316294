// Stroke and marks in, one segmentation request.
#include <algorithm>

#include "history/history_transaction.h"
#include "interface/engine_state.h"
#include "interface/host_call.h"
#include "interface/observer.h"
#include "interface/outline_transaction.h"
#include "interface/segmentation_core.h"
#include "support/request_limit.h"

namespace {

static_assert(SEGCORE_MARK_NONE == mark::kNone && SEGCORE_MARK_BACKGROUND == mark::kBackground &&
                  SEGCORE_MARK_OBJECT == mark::kObject &&
                  SEGCORE_MARK_CANDIDATE == mark::kCandidate,
              "hosts and engine mean the same marks");
static_assert(SEGCORE_LOOP_ADD == stroke::kLoopAdd && SEGCORE_LOOP_REMOVE == stroke::kLoopRemove &&
                  SEGCORE_BRUSH_ADD == stroke::kBrushAdd &&
                  SEGCORE_BRUSH_REMOVE == stroke::kBrushRemove,
              "hosts and engine mean the same strokes");

// Puts the engine back to where it was before a request that fails half-way: models and verdicts
// that later requests start from, and everything that exists during a request only.
class RequestTransaction {
  public:
    RequestTransaction()
        : m_foreground(pHybrid->m_fgModel),
          m_background(pHybrid->m_bgModel),
          m_homogenous(VORNSEMarker::m_isHomogenous),
          m_noiseLevel(VORNSEMarker::m_noiseLevel) {}
    ~RequestTransaction() {
        releaseImage(g_resultMask);
        if (!m_committed) {
            pHybrid->clearMemory();
            pHybrid->m_fgModel = m_foreground;
            pHybrid->m_bgModel = m_background;
            VORNSEMarker::m_isHomogenous = m_homogenous;
            VORNSEMarker::m_noiseLevel = m_noiseLevel;
        }
    }
    RequestTransaction(const RequestTransaction&) = delete;
    RequestTransaction& operator=(const RequestTransaction&) = delete;

    void commit() {
        m_history.commit();
        m_committed = true;
    }

  private:
    HistoryTransaction m_history{HistoryTransaction::Step::kRecord};
    VORNSEColorModel m_foreground;
    VORNSEColorModel m_background;
    bool m_homogenous;
    double m_noiseLevel;
    bool m_committed = false;
};

}  // namespace

void storeStroke(int count, int* points) {
    std::vector<int>& stored = VORNSEMarker::currentStroke.m_points;
    if (count >= 1) {
        requireBuffer(points, "point array");
        if (VORNSEMarker::m_originalWidth < 1 || VORNSEMarker::m_originalHeight < 1) {
            throw HostError("no photograph, call setSourceImage first");
        }
        if (stored.capacity() < static_cast<std::size_t>(count)) {
            std::vector<int> larger;
            larger.reserve(static_cast<std::size_t>(count));
            stored.swap(larger);
        }
    }
    stored.clear();
    for (int i = 0; i < count; i += 2) {
        points[i] = std::clamp(points[i], 0, VORNSEMarker::m_originalWidth - 1);
        points[i + 1] = std::clamp(points[i + 1], 0, VORNSEMarker::m_originalHeight - 1);
        stored.push_back(points[i]);
        stored.push_back(points[i + 1]);
    }
    if (count >= 1 && !hasPhoto()) {
        SEGCORE_LOG_ERROR("setCurrentMarkerVector: no photograph, points taken for the last one");
    }
}

void storeMarkers(int width, int height, const int* values, int strokeType) {
    requireSize(width, height);
    requireBuffer(values, "marker array");
    requirePhoto();
    if (width != VORNSEMarker::m_originalWidth || height != VORNSEMarker::m_originalHeight) {
        throw HostError("the marker image is not of the photograph's size");
    }
    IplImage wrapper;
    cvInitImageHeader(&wrapper, cvSize(width, height), static_cast<int>(IPL_DEPTH_32S), 1);
    // The imaging library takes data to read through a pointer to writable bytes.
    cvSetData(&wrapper, const_cast<int*>(values), width * static_cast<int>(sizeof(int)));
    ImagePtr markers = createImage(width, height, 1);
    cvConvertScale(&wrapper, markers.get(), 1.0, 0.0);
    releaseImage(g_markerImage);
    g_markerImage = markers.release();
    VORNSEMarker::currentStroke.m_strokeType = strokeType;
}

namespace {

// Runs the engine and delivers its mask; false when a cancel or the limit kept it from having one.
bool deliverRequest(std::uint32_t* blended, std::uint8_t* mask) {
    const request_limit::Running running;
    RequestTransaction transaction;
    const ObservedRequest observed;
    {
        const StageScope stage(Stage::kLabelImage);
        pHybrid->labelMarks(g_markerImage);
    }
    g_resultMask = pHybrid->segment();
    if (g_resultMask == nullptr) {
        transaction.commit();
        return false;
    }
    // Everything that can fail comes before the first byte that the host sees.
    OutlineTransaction outlineTransaction;
    ImagePtr outline;
    {
        const StageScope stage(Stage::kOutline);
        findOutline();
        if (blended != nullptr) {
            outline = drawOutline();
        }
    }
    const StageScope stage(Stage::kMaskOut);
    outlineTransaction.commit();
    transaction.commit();
    writeMask(mask);
    if (outline != nullptr) {
        paintOutline(outline.get(), blended);
    }
    return true;
}

}  // namespace

void runRequest(std::uint32_t* blended, std::uint8_t* mask) {
    requirePhoto();
    if (g_markerImage != nullptr) {
        requireBuffer(mask, "mask buffer");
        requireEngine();
        requireHistory();
        requireMarkerSize();
        const bool wasCancelled = VORNSEMarker::m_exitApp;
        int status = SEGCORE_DONE;
        try {
            if (!deliverRequest(blended, mask)) {
                status = SEGCORE_CANCELLED;
            }
        } catch (const EndedByObserver&) {
            status = SEGCORE_ENDED_BY_OBSERVER;
        }
        const bool isDelivered = status == SEGCORE_DONE;
        // Whatever else became of the request: a host has to know of a cancel that stays in force,
        // also when it came too late to keep the mask from being delivered.
        if (VORNSEMarker::m_exitApp && !wasCancelled) {
            status = SEGCORE_CANCELLED;
        }
        const bool wasLimit = status == SEGCORE_CANCELLED && request_limit::hasRanOut();
        call_status::set(wasLimit ? SEGCORE_OUT_OF_TIME : status);
        if (isDelivered) {
            return;
        }
    } else {
        call_status::set(SEGCORE_NOTHING_TO_DO);
    }
    if (blended != nullptr) {
        writePhoto(blended);
    }
}

int setCurrentMarkerVector(int count, int* points) {
    guardedCall("setCurrentMarkerVector", [&] { storeStroke(count, points); });
    return 0;
}

int setMarkerImage(int width, int height, const int* values, int strokeType) {
    guardedCall("setMarkerImage", [&] {
        checkImageSize(width, height, "setMarkerImage", 164);
        checkImageSize(width, height, "setMarkerImage", 173);
        storeMarkers(width, height, values, strokeType);
    });
    return 0;
}

int processSegment(int /*unused1*/, int /*unused2*/, int /*unused3*/, std::uint32_t* blended,
                   std::uint8_t* mask) {
    int result = 0;
    guardedCall(
        "processSegment",
        [&] {
            requirePhoto();
            requireBuffer(blended, "blended buffer");
            runRequest(blended, mask);
        },
        [&] {
            // The marks belong to this one call, whatever became of it.
            releaseImage(g_markerImage);
            if (tearDownIfExitPending()) {
                result = -1;
            } else {
                g_exitStatus = 0;
            }
        });
    return result;
}
