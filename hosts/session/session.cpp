#include "session/session.h"

#include <algorithm>
#include <numeric>
#include <opencv2/imgproc.hpp>

#include "engine_log.h"
#include "errors.h"
#include "interface/segmentation_core.h"
#include "interrupt.h"
#include "session/painted_marks.h"
#include "session/snapped_loop.h"

namespace {

// Host masks hold 0 and 255 only: a call that delivers no mask leaves this byte standing.
constexpr std::uint8_t kUntouched = 1;
constexpr double kTimeLimitSeconds = 10.0;  // of the engine, for one request

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

Session::Session(const Photo& photo, Stats& stats)
    : m_photo(photo),
      m_stats(stats),
      m_blended(photo.words),
      m_delivered(photo.words.size()),
      m_result(cv::Mat::zeros(photo.size(), CV_8UC1)) {
    m_stats.measure("set photograph",
                    [&] { setSourceImage(m_photo.width, m_photo.height, m_photo.words.data()); });
    m_stats.measure("prepare engine", [] { initSegmentationEngine(0); });
    throwIfInterrupted();
    const std::string error = takeEngineError();
    if (!error.empty()) {
        throw UserError("the photograph cannot be segmented (" + error +
                        "); reduce the photograph");
    }
}

Session::~Session() {
    deinitSegmentation();
}

void Session::apply(const Step& step) {
    m_stage = "step " + std::to_string(++m_stepsApplied) + ", " + (step.edit ? "edit " : "") +
              nameOf(step.operation);
    switch (step.operation) {
        case Operation::kUndo:
            stepBack();
            break;
        case Operation::kRedo:
            stepForward();
            break;
        default:
            m_requestsOfStep.resize(m_stepsShown);
            m_requestsOfStep.push_back(0);
            ++m_stepsShown;
            applyMarks(step);
    }
    throwIfInterrupted();
}

void Session::applyMarks(const Step& step) {
    if (removes(step.operation) && !m_hasResult) {
        throw UserError(std::string(nameOf(step.operation)) +
                        " has nothing to remove from; mark the object first, for example by a box");
    }
    if (step.operation == Operation::kMarks) {
        applyPaintedMarks(step);
    } else if (isSnappedLoop(step.operation)) {
        request(requestFor(snapLoop(step, m_photo, m_stats), m_photo.size()), false);
    } else {
        request(requestFor(step, m_photo.size()), step.edit);
    }
}

void Session::applyPaintedMarks(const Step& step) {
    const cv::Mat codes = readPaintedMarks(step.marksFile, m_photo.size());
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

void Session::request(const Request& request, bool edit) {
    std::vector<int> coordinates;
    coordinates.reserve(2 * request.stroke.size());
    for (const cv::Point& point : request.stroke) {
        coordinates.push_back(point.x);
        coordinates.push_back(point.y);
    }
    takeEngineError();
    const auto start = std::chrono::steady_clock::now();
    const bool delivered = m_stats.measure(m_stage, [&] {
        setCurrentMarkerVector(static_cast<int>(coordinates.size()), coordinates.data());
        setMarkerImage(m_photo.width, m_photo.height, request.markers.ptr<int>(),
                       request.strokeType);
        return deliver([edit](std::uint32_t* blended, std::uint8_t* mask) {
            if (edit) {
                cutOutImage(0, 0, 0, blended, mask);
            } else {
                processSegment(0, 0, 0, blended, mask);
            }
        });
    });
    if (!delivered) {
        failRequest(secondsSince(start));
    }
    ++m_requestsOfStep.back();
}

void Session::failRequest(double seconds) {
    throwIfInterrupted();
    if (seconds >= kTimeLimitSeconds) {
        throw UserError(
            "the segmentation took longer than 10 seconds and was given up; reduce the "
            "photograph or mark a smaller region");
    }
    throw UserError("the segmentation failed (" + takeEngineError() +
                    "); reduce the photograph if memory ran out");
}

void Session::stepBack() {
    if (m_stepsShown == 0) {
        throw UserError("there is nothing to undo; remove the undo or put a mark before it");
    }
    --m_stepsShown;
    const auto firstUndone = m_requestsOfStep.begin() + static_cast<std::ptrdiff_t>(m_stepsShown);
    const int requestsLeft = std::accumulate(m_requestsOfStep.begin(), firstUndone, 0);
    for (int left = requestsLeft + *firstUndone; left > requestsLeft; --left) {
        const bool delivered = m_stats.measure(m_stage, [&] { return deliver(undo); });
        if (!delivered && left > 1) {
            throw UserError(
                "there is nothing left to undo, the history holds 31 results; undo "
                "fewer steps");
        }
    }
}

void Session::stepForward() {
    if (m_stepsShown == m_requestsOfStep.size()) {
        throw UserError("there is nothing to redo; remove the redo or put an undo before it");
    }
    const int requests = m_requestsOfStep[m_stepsShown];
    ++m_stepsShown;
    for (int i = 0; i < requests; ++i) {
        m_stats.measure(m_stage, [&] { return deliver(redo); });
    }
}

cv::Mat Session::preview() {
    cv::Mat image;
    cv::cvtColor(asImage(m_blended, m_photo.size()), image, cv::COLOR_BGRA2BGR);
    return image;
}

Outline Session::takeOutline() {
    int* numbers = nullptr;
    int count = 0;
    fetch_path_array(&numbers, &count);
    if (numbers == nullptr) {
        throw UserError("the outline could not be fetched, memory ran out; reduce the photograph");
    }
    Outline outline(static_cast<std::size_t>(numbers[0]));
    const int* next = numbers + 1;
    for (std::vector<cv::Point>& contour : outline) {
        const int points = *next++;
        for (int i = 0; i < points; ++i, next += 2) {
            contour.emplace_back(next[0], next[1]);
        }
        ++next;  // the mark that ends a contour
    }
    release_path_array(numbers);
    return outline;
}
