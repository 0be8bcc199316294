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
    Step step;
    if (mark == "box") {
        const cv::Rect box = m_data.box() & cv::Rect({0, 0}, m_photo.size());
        if (box.empty()) {
            return false;
        }
        step.operation = Operation::kBox;
        step.points = {box.tl(), box.br() - cv::Point(1, 1)};
    } else if (mark == "lasso") {
        step.operation = Operation::kLoopAdd;
        step.points = m_data.lasso();
        if (step.points.empty()) {
            return false;
        }
    } else {
        if (m_data.scribbles(mark).empty()) {
            return false;
        }
        step.operation = Operation::kMarks;
        step.marksFile = mark;
    }
    m_session.apply(step);
    return true;
}
