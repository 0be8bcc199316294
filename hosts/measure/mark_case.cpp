#include "mark_case.h"

#include <algorithm>
#include <sstream>

std::vector<std::string> marksOf(const std::string& markCase) {
    std::vector<std::string> parts;
    std::istringstream stream(markCase);
    for (std::string part; std::getline(stream, part, '+');) {
        parts.push_back(part);
    }
    return parts;
}

std::string faultOf(const std::string& markCase) {
    const std::vector<std::string> marks = marksOf(markCase);
    const auto known = [](const std::string& mark) {
        return mark == "box" || mark == "lasso" || mark == "s1" || mark == "s2";
    };
    if (marks.empty()) {
        return "a case names at least one mark";
    }
    return std::all_of(marks.begin(), marks.end(), known)
               ? ""
               : "a case joins box, lasso, s1 and s2 by +";
}

std::optional<Step> boxStepOf(const DataPhoto& photo, cv::Size size, cv::Point shift) {
    const cv::Rect frame({0, 0}, size);
    const cv::Rect box = ((photo.box() & frame) + shift) & frame;
    if (box.empty()) {
        return std::nullopt;
    }
    Step step;
    step.operation = Operation::kBox;
    step.points = {box.tl(), box.br() - cv::Point(1, 1)};
    return step;
}

std::optional<Step> loopStepOf(const DataPhoto& photo) {
    Step step;
    step.operation = Operation::kLoopAdd;
    step.points = photo.lasso();
    return step.points.empty() ? std::nullopt : std::optional(step);
}

CaseSession::CaseSession(const DataPhoto& photo, const cv::Mat& image, double timeLimit)
    : m_data(photo),
      m_host(photo),
      m_photo(photoOf(image, photo.name())),
      m_session(m_photo, m_host, m_stats) {
    m_session.setTimeLimit(timeLimit);
}

bool CaseSession::apply(const std::string& markCase) {
    const std::vector<std::string> marks = marksOf(markCase);
    return std::all_of(marks.begin(), marks.end(),
                       [this](const std::string& mark) { return applyMark(mark); });
}

bool CaseSession::applyMark(const std::string& mark) {
    std::optional<Step> step;
    if (mark == "box") {
        step = boxStepOf(m_data, m_photo.size());
    } else if (mark == "lasso") {
        step = loopStepOf(m_data);
    } else if (!m_data.scribbles(mark).empty()) {
        step.emplace();
        step->operation = Operation::kMarks;
        step->marksFile = mark;
    }
    if (step) {
        step->correction =
            usualCorrection(step->operation, cv::countNonZero(m_session.result()) == 0);
        m_session.apply(*step);
    }
    return step.has_value();
}
