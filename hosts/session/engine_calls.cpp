#include "session/engine_calls.h"

#include <algorithm>
#include <atomic>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>

#include "interface/segmentation_core.h"
#include "session/errors.h"

namespace {

// Host masks hold 0 and 255 only: a call that delivers no mask leaves this byte standing.
constexpr std::uint8_t kUntouched = 1;

std::atomic<bool> isInUse{false};

// Host masks have 0 for the object, sessions 255.
cv::Mat objectOf(const std::uint8_t* maskBytes, cv::Size size) {
    return ~cv::Mat(size, CV_8UC1, const_cast<std::uint8_t*>(maskBytes));
}

}  // namespace

EngineCalls::EngineCalls(SessionHost& host) : m_host(host) {
    if (isInUse.exchange(true)) {
        throw UserError("there is a session in this program already; end it first");
    }
    segcore_set_observer(onProgress, this);
}

EngineCalls::~EngineCalls() {
    segcore_set_observer(nullptr, nullptr);
    deinitSegmentation();
    isInUse = false;
}

int EngineCalls::onProgress(const segcore_progress* progress, void* self) {
    auto& calls = *static_cast<EngineCalls*>(self);
    RequestProgress told;
    told.fraction = progress->fraction;
    if (progress->mask != nullptr) {
        told.workingMask =
            objectOf(progress->mask, cv::Size(progress->mask_width, progress->mask_height));
    }
    bool goesOn = false;
    try {
        goesOn = calls.m_host.onProgress(told);
    } catch (...) {  // the library is C
        calls.m_thrown = std::current_exception();
    }
    if (!goesOn || told.workingMask.empty() || calls.m_wanted == nullptr) {
        return goesOn ? 0 : 1;
    }
    *calls.m_wanted = told.workingMask;
    return 1;
}

void EngineCalls::take(const Photo& photo) {
    m_photo = nullptr;
    setSourceImage(photo.width, photo.height, photo.words.data());
    if (segcore_last_status() == SEGCORE_DONE) {
        initSegmentationEngine(0);
    }
    const bool taken = segcore_last_status() == SEGCORE_DONE;
    m_host.throwIfInterrupted();
    if (!taken) {
        throw UserError(std::string("the photograph cannot be segmented (") +
                            segcore_last_reason() + "); reduce the photograph",
                        UserError::Reason::kEngine);
    }
    if (m_capacity < photo.words.size()) {
        m_capacity = 0;
        m_words.reset();
        m_words.reset(new std::uint32_t[photo.words.size()]);  // not written to before it is used
        m_capacity = photo.words.size();
    }
    m_photo = &photo;
    showNone();
}

void EngineCalls::showNone() {
    m_mask.release();
    m_hasMask = false;
}

void EngineCalls::reset() {
    resetSegmentationInterface();
    showNone();
    m_host.throwIfInterrupted();  // the engine has just forgotten a cancel
}

// Marks as the engine takes them; what was in the buffer is gone.
cv::Mat EngineCalls::marksBuffer() {
    return {m_photo->size(), CV_32SC1, m_words.get()};
}

void EngineCalls::passMarks(const Request& request) {
    cv::Mat words = marksBuffer();
    request.markers.convertTo(words, CV_32S);
    passMarks(request.stroke, request.strokeType);
}

void EngineCalls::passMarks(const std::vector<cv::Point>& stroke, int strokeType) {
    std::vector<int> coordinates;
    coordinates.reserve(2 * stroke.size());
    for (const cv::Point& point : stroke) {
        coordinates.push_back(point.x);
        coordinates.push_back(point.y);
    }
    setCurrentMarkerVector(static_cast<int>(coordinates.size()), coordinates.data());
    setMarkerImage(m_photo->width, m_photo->height, marksBuffer().ptr<int>(), strokeType);
}

// The mask is one of its own every time: that of the call before may still be looked at.
template <typename Call>
void EngineCalls::deliver(Wanted wanted, Call&& call) {
    if (wanted == Wanted::kPicture) {  // the engine paints the outline alone
        std::copy(m_photo->words.begin(), m_photo->words.end(), m_words.get());
    }
    cv::Mat mask(m_photo->size(), CV_8UC1);
    *mask.data = kUntouched;
    call(m_words.get(), mask.data);
    m_hasMask = *mask.data != kUntouched;
    m_mask.release();
    if (m_hasMask) {
        cv::bitwise_not(mask, mask);
        m_mask = mask;
    }
}

void EngineCalls::segment(const Request& request, Wanted wanted) {
    passMarks(request);
    deliver(wanted,
            [](std::uint32_t* words, std::uint8_t* mask) { processSegment(0, 0, 0, words, mask); });
    requireDone();
}

void EngineCalls::edit(const Request& request, Wanted wanted) {
    passMarks(request);
    deliver(wanted, [wanted](std::uint32_t* words, std::uint8_t* mask) {
        cutOutImage(0, 0, 0, wanted == Wanted::kPicture ? words : nullptr, mask);
    });
    requireDone();
}

// Every pixel is said to be object or background.
void EngineCalls::show(const cv::Mat& mask, Wanted wanted) {
    std::transform(mask.datastart, mask.dataend, marksBuffer().ptr<int>(), [](std::uint8_t value) {
        return value != 0 ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND;
    });
    passMarks({}, SEGCORE_BRUSH_ADD);
    if (wanted == Wanted::kPicture) {
        std::copy(m_photo->words.begin(), m_photo->words.end(), m_words.get());
    }
    cutOutImage(0, 0, 0, wanted == Wanted::kPicture ? m_words.get() : nullptr, nullptr);
    requireDone();
    m_mask.release();
    m_hasMask = true;
}

void EngineCalls::stepBack() {
    deliver(Wanted::kPicture, undo);
}

void EngineCalls::stepForward() {
    deliver(Wanted::kPicture, redo);
}

cv::Mat EngineCalls::workingMask(const Request& request) {
    cv::Mat found;
    passMarks(request);
    cv::Mat mask(m_photo->size(), CV_8UC1);  // required, but never written to
    m_wanted = &found;
    processSegment(0, 0, 0, m_words.get(), mask.data);
    m_wanted = nullptr;
    if (segcore_last_status() != SEGCORE_ENDED_BY_OBSERVER || found.empty()) {
        requireDone();
    }
    return found;
}

// A request that ended early may have delivered an unfinished mask all the same.
void EngineCalls::requireDone() {
    const int status = segcore_last_status();
    if (status == SEGCORE_DONE) {
        return;
    }
    const std::string why = segcore_last_reason();
    if (m_thrown) {
        std::rethrow_exception(std::exchange(m_thrown, nullptr));
    }
    m_host.throwIfInterrupted();
    switch (status) {
        case SEGCORE_OUT_OF_TIME:
            throw UserError(
                "the segmentation reached its time limit and was given up; allow more time, reduce "
                "the photograph or mark a smaller region",
                UserError::Reason::kOutOfTime);
        case SEGCORE_CANCELLED:
            throw UserError("cancelled; the session is as it was before",
                            UserError::Reason::kCancelled);
        case SEGCORE_ENDED_BY_OBSERVER:
            throw UserError("ended by the program; the session is as it was before",
                            UserError::Reason::kEndedByObserver);
        case SEGCORE_OUT_OF_MEMORY:
            throw UserError("memory ran out (" + why + "); reduce the photograph",
                            UserError::Reason::kOutOfMemory);
        default:
            throw UserError("the segmentation failed (" + why + "); mark the photograph otherwise",
                            UserError::Reason::kEngine);
    }
}

cv::Mat EngineCalls::takeMask() {
    const bool hadMask = std::exchange(m_hasMask, false);
    return hadMask ? std::exchange(m_mask, cv::Mat()) : cv::Mat::zeros(m_photo->size(), CV_8UC1);
}

cv::Mat EngineCalls::blended() {
    const cv::Mat words = m_hasMask ? cv::Mat(m_photo->size(), CV_8UC4, m_words.get())
                                    : asImage(m_photo->words, m_photo->size());
    cv::Mat image;
    cv::cvtColor(words, image, cv::COLOR_BGRA2BGR);
    return image;
}
