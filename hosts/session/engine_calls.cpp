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

void passMarks(const Request& request) {
    std::vector<int> coordinates;
    coordinates.reserve(2 * request.stroke.size());
    for (const cv::Point& point : request.stroke) {
        coordinates.push_back(point.x);
        coordinates.push_back(point.y);
    }
    setCurrentMarkerVector(static_cast<int>(coordinates.size()), coordinates.data());
    setMarkerImage(request.markers.cols, request.markers.rows, request.markers.ptr<int>(),
                   request.strokeType);
}

cv::Mat objectOf(const std::uint8_t* maskBytes, cv::Size size) {
    cv::Mat object;
    cv::compare(cv::Mat(size, CV_8UC1, const_cast<std::uint8_t*>(maskBytes)), 0, object,
                cv::CMP_EQ);
    return object;
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
    m_photo = &photo;
    m_blended = photo.words;
    m_delivered.resize(photo.words.size());
    showNone();
}

// Masks that were handed out share their pixels, so a new one is made.
void EngineCalls::showNone() {
    m_mask = cv::Mat(m_photo->size(), CV_8UC1, cv::Scalar(0));
    m_hasMask = false;
}

void EngineCalls::reset() {
    resetSegmentationInterface();
    m_blended = m_photo->words;
    showNone();
}

template <typename Call>
void EngineCalls::deliver(Call&& call) {
    std::copy(m_photo->words.begin(), m_photo->words.end(), m_blended.begin());
    m_delivered.front() = kUntouched;
    call(m_blended.data(), m_delivered.data());
    m_hasMask = m_delivered.front() != kUntouched;
    m_mask = m_hasMask ? objectOf(m_delivered.data(), m_photo->size())
                       : cv::Mat::zeros(m_photo->size(), CV_8UC1);
}

void EngineCalls::segment(const Request& request) {
    passMarks(request);
    deliver(
        [](std::uint32_t* blended, std::uint8_t* mask) { processSegment(0, 0, 0, blended, mask); });
    requireDone();
}

void EngineCalls::edit(const Request& request) {
    passMarks(request);
    deliver(
        [](std::uint32_t* blended, std::uint8_t* mask) { cutOutImage(0, 0, 0, blended, mask); });
    requireDone();
}

void EngineCalls::stepBack() {
    deliver(undo);
}

void EngineCalls::stepForward() {
    deliver(redo);
}

cv::Mat EngineCalls::workingMask(const Request& request) {
    cv::Mat found;
    m_wanted = &found;
    passMarks(request);
    processSegment(0, 0, 0, m_blended.data(), m_delivered.data());
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

cv::Mat EngineCalls::blended() {
    cv::Mat image;
    cv::cvtColor(asImage(m_blended, m_photo->size()), image, cv::COLOR_BGRA2BGR);
    return image;
}

Request editTo(const cv::Mat& mask) {
    Request request;
    request.strokeType = SEGCORE_BRUSH_ADD;
    request.markers = cv::Mat(mask.size(), CV_32SC1, cv::Scalar(SEGCORE_MARK_BACKGROUND));
    request.markers.setTo(SEGCORE_MARK_OBJECT, mask);
    return request;
}
