#include "json.h"

#include <cstdio>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

json asJson(const std::optional<double>& number) {
    return number ? json(*number) : json(nullptr);
}

json asJson(const MethodSummary& summary) {
    json strokes = json::array();
    for (const StrokeMeans& means : summary.byStrokes) {
        strokes.push_back({{"errorRate", means.errorRate},
                           {"iou", means.iou},
                           {"milliseconds", asJson(means.milliseconds)}});
    }
    json interactions = json::array();
    for (std::size_t i = 0; i < kIouTargets.size(); ++i) {
        interactions.push_back({{"iou", kIouTargets[i]},
                                {"mean", summary.interactions[i].mean},
                                {"failures", summary.interactions[i].failures}});
    }
    return {{"method", summary.method},
            {"large", summary.large},
            {"photographs", summary.photos},
            {"byStrokes", strokes},
            {"interactions", interactions}};
}

}  // namespace

void printJson(const std::vector<CaseResult>& results) {
    json document{{"results", json::array()}, {"means", json::array()}};
    for (const CaseResult& result : results) {
        json entry{{"photograph", result.photo},
                   {"case", result.markCase},
                   {"large", result.large},
                   {"milliseconds", result.milliseconds}};
        if (result.score) {
            entry["errorRate"] = result.score->errorRate;
            entry["iou"] = result.score->iou;
        }
        document["results"].push_back(entry);
    }
    for (const auto& [key, mean] : meansOf(results)) {
        document["means"].push_back({{"case", key.first},
                                     {"large", key.second},
                                     {"photographs", mean.count},
                                     {"errorRate", mean.errorRate},
                                     {"iou", mean.iou},
                                     {"milliseconds", mean.milliseconds}});
    }
    std::printf("%s\n", document.dump(2).c_str());
}

void printJson(const std::vector<RobotResult>& results, const std::vector<MethodSummary>& summaries,
               const RobotOptions& options) {
    json document{{"start", nameOf(options.start)},
                  {"failureCountsAs", failureCountsAs(options)},
                  {"results", json::array()},
                  {"means", json::array()}};
    for (const RobotResult& result : results) {
        document["results"].push_back({{"photograph", result.photo},
                                       {"method", result.method},
                                       {"large", result.large},
                                       {"strokes", result.strokes},
                                       {"errorRate", result.score.errorRate},
                                       {"iou", result.score.iou},
                                       {"milliseconds", asJson(result.milliseconds)}});
    }
    for (const MethodSummary& summary : summaries) {
        document["means"].push_back(asJson(summary));
    }
    std::printf("%s\n", document.dump(2).c_str());
}
