// A case of the measurements: the marks of a session in order, joined by "+": box, lasso, s1 and
// s2.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "session/data_set.h"
#include "session/session.h"

std::vector<std::string> marksOf(const std::string& markCase);

// What is wrong with a case as a user gave it; empty for a good one.
std::string faultOf(const std::string& markCase);

// The photograph's box, moved and cut off at the edges of a photograph of this size, or its loop
// as a step; none without one.
std::optional<Step> boxStepOf(const DataPhoto& photo, cv::Size size, cv::Point shift = {});
std::optional<Step> loopStepOf(const DataPhoto& photo);

// Leads the session of a case on a photograph. A scribble set is one step, painted marks as the
// command line's --marks takes them.
class CaseSession {
  public:
    // `image` is the photograph's; the limit is that of each request in seconds, 0 for none.
    CaseSession(const DataPhoto& photo, const cv::Mat& image, double timeLimit = 0.0);

    // False when the photograph lacks one of the marks.
    bool apply(const std::string& markCase);
    const cv::Mat& mask() const { return m_session.result(); }

  private:
    class Scribbles : public SessionHost {
      public:
        explicit Scribbles(const DataPhoto& photo) : m_photo(photo) {}
        cv::Mat marksPicture(const std::string& set) override { return m_photo.scribbles(set); }

      private:
        const DataPhoto& m_photo;
    };

    bool applyMark(const std::string& mark);

    const DataPhoto& m_data;
    Scribbles m_host;
    Stats m_stats;
    Photo m_photo;
    Session m_session;
};
