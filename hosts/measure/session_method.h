// The library, through the session that every host stands on.
#pragma once

#include <functional>
#include <string>

#include "measure/method.h"
#include "session/session.h"

class SessionMethod : public Method {
  public:
    // Says in a step how its mark is to be understood, where a session knows several ways.
    using Ask = std::function<void(Step& step)>;

    // `image` is CV_8UC3, blue green red, and `name` the photograph's in messages. The limit is
    // that of each request in seconds, 0 for none. Throws UserError for a photograph that the
    // library refuses. One at a time, as sessions are.
    SessionMethod(const cv::Mat& image, const std::string& name, double timeLimit, Ask ask);

    void apply(const Step& mark) override;
    cv::Mat mask() const override { return m_session.result(); }

  private:
    SessionHost m_host;
    Stats m_stats;
    Photo m_photo;
    Session m_session;
    Ask m_ask;
};
