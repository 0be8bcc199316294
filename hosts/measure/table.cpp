#include "table.h"

#include <cstdio>
#include <string>

namespace {

std::string meanOf(int photos, bool large) {
    return "mean of " + std::to_string(photos) + (large ? " large" : "");
}

void printStrokes(const MethodSummary& summary) {
    for (std::size_t strokes = 0; strokes < summary.byStrokes.size(); ++strokes) {
        const StrokeMeans& means = summary.byStrokes[strokes];
        std::printf("%-18s %-10s %7zu %8.3f %8.4f", meanOf(summary.photos, summary.large).c_str(),
                    summary.method.c_str(), strokes, 100.0 * means.errorRate, means.iou);
        if (means.milliseconds) {
            std::printf(" %9.0f\n", *means.milliseconds);
        } else {
            std::printf(" %9s\n", "-");
        }
    }
}

void printInteractions(const MethodSummary& summary) {
    std::printf("%-18s %-10s", meanOf(summary.photos, summary.large).c_str(),
                summary.method.c_str());
    for (const Interactions& interactions : summary.interactions) {
        std::printf(" %6.2f (%d)", interactions.mean, interactions.failures);
    }
    std::printf("\n");
}

}  // namespace

void printTable(const std::vector<CaseResult>& results) {
    std::printf("%-18s %-10s %8s %8s %9s\n", "photograph", "case", "error %", "IoU", "ms");
    for (const CaseResult& result : results) {
        std::printf("%-18s %-10s ", result.photo.c_str(), result.markCase.c_str());
        if (result.score) {
            std::printf("%8.3f %8.4f", 100.0 * result.score->errorRate, result.score->iou);
        } else {
            std::printf("%8s %8s", "-", "-");
        }
        std::printf(" %9.0f\n", result.milliseconds);
    }
    for (const auto& [key, mean] : meansOf(results)) {
        std::printf("%-18s %-10s %8.3f %8.4f %9.0f\n", meanOf(mean.count, key.second).c_str(),
                    key.first.c_str(), 100.0 * mean.errorRate, mean.iou, mean.milliseconds);
    }
}

void printTable(const std::vector<MethodSummary>& summaries, const RobotOptions& options) {
    std::printf("%-18s %-10s %7s %8s %8s %9s\n",
                (std::string("from ") + nameOf(options.start)).c_str(), "method", "strokes",
                "error %", "IoU", "ms");
    for (const MethodSummary& summary : summaries) {
        printStrokes(summary);
    }
    std::printf("\n%-29s", "interactions to an IoU of");
    for (const double target : kIouTargets) {
        std::printf(" %6.2f (-)", target);
    }
    std::printf("\n");
    for (const MethodSummary& summary : summaries) {
        printInteractions(summary);
    }
    std::printf("(-) photographs that did not get there, counted as %d\n",
                failureCountsAs(options));
}
