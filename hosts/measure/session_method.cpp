#include "session_method.h"

#include <utility>

SessionMethod::SessionMethod(const cv::Mat& image, const std::string& name, double timeLimit,
                             Ask ask)
    : m_photo(photoOf(image, name)), m_session(m_photo, m_host, m_stats), m_ask(std::move(ask)) {
    m_session.setTimeLimit(timeLimit);
}

void SessionMethod::apply(const Step& mark) {
    Step step = mark;
    m_ask(step);
    m_session.apply(step);
}
