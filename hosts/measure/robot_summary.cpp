#include "robot_summary.h"

#include <algorithm>

namespace {

// As published tables of interactions count it.
constexpr int kFailure = 10;

int startingMarks(const RobotOptions& options) {
    return options.start == RobotStart::kNothing ? 0 : 1;
}

// Results of one photograph by one method, by strokes.
using Course = std::vector<RobotResult>;

std::vector<Course> coursesOf(const std::vector<RobotResult>& results, const std::string& method,
                              bool large) {
    std::vector<Course> courses;
    for (const RobotResult& result : results) {
        if (result.method == method && result.large == large) {
            if (result.strokes == 0) {
                courses.emplace_back();
            }
            courses.back().push_back(result);
        }
    }
    return courses;
}

StrokeMeans meansAfter(std::size_t strokes, const std::vector<Course>& courses) {
    StrokeMeans means;
    double milliseconds = 0.0;
    int marks = 0;
    for (const Course& course : courses) {
        means.errorRate += course[strokes].score.errorRate;
        means.iou += course[strokes].score.iou;
        milliseconds += course[strokes].milliseconds.value_or(0.0);
        marks += course[strokes].milliseconds ? 1 : 0;
    }
    const auto count = static_cast<double>(courses.size());
    means.errorRate /= count;
    means.iou /= count;
    if (marks > 0) {
        means.milliseconds = milliseconds / marks;
    }
    return means;
}

Interactions interactionsTo(double iou, const std::vector<Course>& courses,
                            const RobotOptions& options) {
    Interactions interactions;
    int sum = 0;
    for (const Course& course : courses) {
        const auto reached =
            std::find_if(course.begin(), course.end(),
                         [iou](const RobotResult& result) { return result.score.iou >= iou; });
        if (reached == course.end()) {
            ++interactions.failures;
            sum += failureCountsAs(options);
        } else {
            sum += startingMarks(options) + reached->strokes;
        }
    }
    interactions.mean = sum / static_cast<double>(courses.size());
    return interactions;
}

MethodSummary summaryOf(const std::string& method, bool large, const std::vector<Course>& courses,
                        const RobotOptions& options) {
    MethodSummary summary;
    summary.method = method;
    summary.large = large;
    summary.photos = static_cast<int>(courses.size());
    for (std::size_t strokes = 0; strokes < courses.front().size(); ++strokes) {
        summary.byStrokes.push_back(meansAfter(strokes, courses));
    }
    for (std::size_t i = 0; i < kIouTargets.size(); ++i) {
        summary.interactions[i] = interactionsTo(kIouTargets[i], courses, options);
    }
    return summary;
}

}  // namespace

int failureCountsAs(const RobotOptions& options) {
    return std::max(kFailure, startingMarks(options) + options.strokes + 1);
}

std::vector<MethodSummary> summariesOf(const std::vector<RobotResult>& results,
                                       const RobotOptions& options) {
    std::vector<MethodSummary> summaries;
    for (const bool large : {false, true}) {
        for (const RobotMethod& kind : robotMethods()) {
            const std::vector<Course> courses = coursesOf(results, kind.name, large);
            if (!courses.empty()) {
                summaries.push_back(summaryOf(kind.name, large, courses, options));
            }
        }
    }
    return summaries;
}
