#include "session/session.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "session/painted_marks.h"
#include "session/snapped_loop.h"

namespace {

// Host masks hold 0 and 255 only: a call that delivers no mask leaves this byte standing.
constexpr std::uint8_t kUntouched = 1;

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

// Marks that make any mask this one: every pixel is said to be object or background.
Request asMarks(const cv::Mat& mask) {
    Request request;
    request.strokeType = SEGCORE_BRUSH_ADD;
    request.markers = cv::Mat(mask.size(), CV_32SC1, cv::Scalar(SEGCORE_MARK_BACKGROUND));
    request.markers.setTo(SEGCORE_MARK_OBJECT, mask);
    return request;
}

}  // namespace

void Session::Host::throwIfInterrupted() {
    m_program.throwIfInterrupted();
    const std::lock_guard<std::mutex> lock(m_access);
    throwIfCancelled();
}

void Session::Host::throwIfCancelled() const {
    if (m_cancelled) {
        throw UserError("cancelled; the session is as it was before",
                        UserError::Reason::kCancelled);
    }
}

void Session::Host::cancel() {
    const std::lock_guard<std::mutex> lock(m_access);
    if (m_inStep) {
        m_cancelled = true;
        cancelSegmentation();
    }
}

void Session::Host::beginStep() {
    const std::lock_guard<std::mutex> lock(m_access);
    m_inStep = true;
    m_cancelled = false;
}

void Session::Host::endStep() {
    const std::lock_guard<std::mutex> lock(m_access);
    throwIfCancelled();
    m_inStep = false;
}

bool Session::Host::abandonStep() {
    const std::lock_guard<std::mutex> lock(m_access);
    m_inStep = false;
    return std::exchange(m_cancelled, false);
}

Session::Session(const Photo& photo, SessionHost& host, Stats& stats)
    : m_photo(photo),
      m_host(host),
      m_stats(stats),
      m_blended(photo.words),
      m_delivered(photo.words.size()),
      m_result(cv::Mat::zeros(photo.size(), CV_8UC1)) {
    setTimeLimit(0.0);
    m_stats.measure("set photograph",
                    [&] { setSourceImage(m_photo.width, m_photo.height, m_photo.words.data()); });
    if (segcore_last_status() == SEGCORE_DONE) {
        m_stats.measure("prepare engine", [] { initSegmentationEngine(0); });
    }
    const bool taken = segcore_last_status() == SEGCORE_DONE;
    m_host.throwIfInterrupted();
    if (!taken) {
        throw UserError(std::string("the photograph cannot be segmented (") +
                            segcore_last_reason() + "); reduce the photograph",
                        UserError::Reason::kEngine);
    }
}

Session::~Session() {
    deinitSegmentation();
}

void Session::setTimeLimit(double seconds) {
    if (!(seconds >= 0.0)) {  // the engine would take it for its own limit
        throw UserError("a time limit is 0 seconds, for none, or more");
    }
    segcore_set_time_limit(seconds);
}

void Session::apply(const Step& step) {
    const std::string number = "step " + std::to_string(m_stepsApplied + 1);
    m_stage = number + ", " + (step.edit ? "edit " : "") + nameOf(step.operation);
    try {
        take(step);
    } catch (const UserError& error) {
        throw UserError(number + " (" + nameOf(step.operation) + "): " + error.what(),
                        error.reason);
    }
    ++m_stepsApplied;
}

void Session::take(const Step& step) {
    requireEngineAtShown();
    const std::size_t shownBefore = m_shown;
    m_requestsMade = 0;
    m_host.beginStep();
    try {
        make(step);
    } catch (...) {
        m_engineIsElsewhere = m_host.abandonStep() || m_engineIsElsewhere || m_requestsMade > 0 ||
                              m_shown != shownBefore;
        m_shown = shownBefore;
        if (m_engineIsElsewhere) {
            bringEngineToShown();
        }
        throw;
    }
}

void Session::make(const Step& step) {
    if (step.operation == Operation::kUndo || step.operation == Operation::kRedo) {
        step.operation == Operation::kUndo ? stepBack() : stepForward();
        m_host.throwIfInterrupted();
        return m_host.endStep();
    }
    applyMarks(step);
    ShownStep made{m_requestsMade, m_hasResult, KeptMask(m_result)};
    m_steps.reserve(m_shown + 1);
    m_host.throwIfInterrupted();
    m_host.endStep();
    // From here on nothing fails.
    m_steps.resize(m_shown);
    m_steps.push_back(std::move(made));
    m_newest = ++m_shown;
}

void Session::applyMarks(const Step& step) {
    if (removes(step.operation) && !m_hasResult) {
        throw UserError(std::string(nameOf(step.operation)) +
                        " has nothing to remove from; mark the object first, for example by a box");
    }
    if (step.operation == Operation::kMarks) {
        applyPaintedMarks(step);
    } else if (isSnappedLoop(step.operation)) {
        request(requestFor(snapLoop(step, m_photo, m_host, m_stats), m_photo.size()), false);
    } else {
        request(requestFor(step, m_photo.size()), step.edit);
    }
}

void Session::applyPaintedMarks(const Step& step) {
    const cv::Mat codes =
        paintedMarks(m_host.marksPicture(step.marksFile), step.marksFile, m_photo.size());
    if (!m_hasResult) {
        request(firstPaintedRequest(codes), false);
        return;
    }
    for (const int code : {SEGCORE_MARK_CANDIDATE, SEGCORE_MARK_OBJECT, SEGCORE_MARK_BACKGROUND}) {
        if (const auto painted = paintedRequest(codes, code, m_result)) {
            request(*painted, false);
        }
    }
}

template <typename Call>
bool Session::deliver(Call&& call) {
    std::copy(m_photo.words.begin(), m_photo.words.end(), m_blended.begin());
    m_delivered.front() = kUntouched;
    call(m_blended.data(), m_delivered.data());
    m_hasResult = m_delivered.front() != kUntouched;
    if (m_hasResult) {
        cv::compare(cv::Mat(m_photo.size(), CV_8UC1, m_delivered.data()), 0, m_result, cv::CMP_EQ);
    } else {
        m_result.setTo(0);
    }
    return m_hasResult;
}

bool Session::edit(const Request& request) {
    passMarks(request);
    return deliver(
        [](std::uint32_t* blended, std::uint8_t* mask) { cutOutImage(0, 0, 0, blended, mask); });
}

void Session::request(const Request& request, bool edits) {
    m_host.throwIfInterrupted();
    m_stats.measure(m_stage, [&] {
        if (edits) {
            edit(request);
        } else {
            passMarks(request);
            deliver([](std::uint32_t* blended, std::uint8_t* mask) {
                processSegment(0, 0, 0, blended, mask);
            });
        }
    });
    requireDone();
    ++m_requestsMade;
}

// A request that ended early may have delivered an unfinished mask all the same.
void Session::requireDone() {
    const int status = segcore_last_status();
    if (status == SEGCORE_DONE) {
        return;
    }
    m_engineIsElsewhere = true;
    const std::string why = segcore_last_reason();
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

void Session::stepBack() {
    if (!canUndo()) {
        throw UserError("there is nothing to undo; remove the undo or put a mark before it");
    }
    --m_shown;
    for (int left = m_steps[m_shown].requests; left > 0; --left) {
        m_stats.measure(m_stage, [&] { return deliver(undo); });
    }
    requireEngineAtShown();
}

void Session::stepForward() {
    if (!canRedo()) {
        throw UserError("there is nothing to redo; remove the redo or put an undo before it");
    }
    ++m_shown;
    m_engineIsElsewhere = m_shown > m_newest;
    for (int left = m_steps[m_shown - 1].requests; left > 0 && !m_engineIsElsewhere; --left) {
        m_stats.measure(m_stage, [&] { return deliver(redo); });
    }
    requireEngineAtShown();
}

bool Session::shownHasResult() const {
    return m_shown > 0 && m_steps[m_shown - 1].hasResult;
}

void Session::requireEngineAtShown() {
    // The engine shows none where its history ends: after 31 masks, or after the last reset.
    if (m_engineIsElsewhere || m_hasResult != shownHasResult()) {
        m_stats.measure(m_stage, [&] { bringEngineToShown(); });
        if (m_engineIsElsewhere) {
            throw UserError(std::string("the mask could not be put back (") +
                                segcore_last_reason() + "); free some memory and try again",
                            UserError::Reason::kOutOfMemory);
        }
    }
}

// The reset also takes down the flag of a cancel or of the time limit, which refuses every request.
void Session::bringEngineToShown() {
    m_engineIsElsewhere = true;  // until all of this has worked; else it is tried again next time
    resetSegmentationInterface();
    m_newest = m_shown;
    const cv::Mat shown = shownHasResult() ? m_steps[m_shown - 1].mask.unpacked(m_photo.size())
                                           : cv::Mat::zeros(m_photo.size(), CV_8UC1);
    if (shownHasResult()) {
        m_engineIsElsewhere = !edit(asMarks(shown));
    } else {
        std::copy(m_photo.words.begin(), m_photo.words.end(), m_blended.begin());
        m_engineIsElsewhere = false;
    }
    m_result = shown;
    m_hasResult = shownHasResult();
}

cv::Mat Session::preview() {
    cv::Mat image;
    cv::cvtColor(asImage(m_blended, m_photo.size()), image, cv::COLOR_BGRA2BGR);
    return image;
}
