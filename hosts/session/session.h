// An editing session of the library: one photograph and the steps on it. The library has one
// context per process, so there is one session at a time.
//
// A step is undone as a whole, however many requests it made.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "photo.h"
#include "session/marks.h"
#include "session/outline.h"
#include "session/stats.h"
#include "session/step.h"

class Session {
  public:
    // Both outlive the session.
    Session(const Photo& photo, Stats& stats);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void apply(const Step& step);

    // False before the first request and after everything is undone.
    bool hasResult() const { return m_hasResult; }
    // CV_8UC1, 255 object, 0 the rest; all 0 without a result.
    const cv::Mat& result() const { return m_result; }
    // The photograph with the object's outline painted in.
    cv::Mat preview();
    // Of the latest result; can be taken once.
    Outline takeOutline();

  private:
    void applyMarks(const Step& step);
    void applyPaintedMarks(const Step& step);
    void request(const Request& request, bool edit);
    void stepBack();
    void stepForward();
    template <typename Call>
    bool deliver(Call&& call);
    [[noreturn]] static void failRequest(double seconds);

    const Photo& m_photo;
    Stats& m_stats;
    std::vector<std::uint32_t> m_blended;
    std::vector<std::uint8_t> m_delivered;
    cv::Mat m_result;
    bool m_hasResult = false;
    std::vector<int> m_requestsOfStep;  // of every step that can be undone or redone
    std::size_t m_stepsShown = 0;
    std::size_t m_stepsApplied = 0;  // undo and redo count, too
    std::string m_stage;             // of the step being applied, in the statistics
};
