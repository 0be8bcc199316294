#include "session/step_json.h"

#include "session/json_fields.h"
#include "session/region_start.h"

using Json = nlohmann::ordered_json;

namespace {

std::vector<cv::Point> readPoints(const JsonFields& fields) {
    const Json& list = fields.at("points");
    if (!list.is_array()) {
        fields.fail("\"points\" is not a list of [x, y]");
    }
    std::vector<cv::Point> points;
    for (const Json& pair : list) {
        const std::vector<int> xy = fields.row(pair, 2, "points");
        points.emplace_back(xy[0], xy[1]);
    }
    return points;
}

template <typename Entries>
std::string namesOf(const Entries& entries) {
    std::string list;
    for (const auto& entry : entries) {
        list += (list.empty() ? "" : ", ") + std::string(entry.name);
    }
    return list;
}

void readPasses(const JsonFields& fields, Step& step) {
    step.passes = fields.pixels("passes");
    if (*step.passes < 1 || *step.passes > kMostPasses) {
        fields.fail("\"passes\" is not 1 to " + std::to_string(kMostPasses));
    }
}

void readStart(const JsonFields& fields, Step& step) {
    step.start = fields.text("start");
    if (!isRegion(step.operation) || removes(step.operation)) {
        fields.fail("has a \"start\", which is for boxes and for loops that add");
    }
    if (regionStartNamed(step.start) == nullptr) {
        fields.fail("has the unknown start \"" + step.start + "\"; there are " +
                    namesOf(kBoxStarts) + ", " + kLoopStart.name);
    }
}

void readCorrection(const JsonFields& fields, Step& step) {
    if (fields.has("correction")) {
        const std::string name = fields.text("correction");
        step.correction = correctionNamed(name);
        if (!step.correction) {
            fields.fail("has the unknown correction \"" + name + "\"; there are " +
                        namesOf(kCorrectionNames));
        }
    }
    const bool isWhole = step.correction == Correction::kWholeObject;
    if (isWhole && step.edit) {
        fields.fail(R"(has "edit", which changes the mask directly, on a whole-object correction)");
    }
    for (const char* const key : {"passes", "start"}) {
        if (fields.has(key) && !isWhole) {
            fields.fail(std::string("has \"") + key + R"(" without "correction": "whole-object")");
        }
    }
    if (fields.has("passes")) {
        readPasses(fields, step);
    }
    if (fields.has("start")) {
        readStart(fields, step);
    }
    step.toBorder = fields.has("toBorder") && fields.flag("toBorder");
    if (step.toBorder && (step.edit || step.correction != Correction::kTouchUp)) {
        fields.fail(R"(has "toBorder", which is for "correction": "touch-up" without "edit")");
    }
}

void requireFieldsOf(int version, const JsonFields& fields) {
    fields.requireVersion(version, kCorrectionVersion, {"correction", "passes", "start"});
    fields.requireVersion(version, kOutputVersion, {"toBorder"});
}

void readMark(const JsonFields& fields, Step& step, const FileNaming& nameForHost) {
    if (step.operation == Operation::kBox) {
        fields.allowOnly({"op", "box", "correction", "passes", "start", "toBorder"});
        const std::vector<int> box = fields.row(fields.at("box"), 4, "box");
        step.points = {{box[0], box[1]}, {box[2], box[3]}};
    } else if (step.operation == Operation::kMarks) {
        fields.allowOnly({"op", "file", "correction", "passes", "start", "toBorder"});
        step.marksFile = nameForHost(fields.text("file"));
    } else {
        const bool snaps = isSnappedLoop(step.operation);
        fields.allowOnly({"op", "points", isBrush(step.operation) ? "radius" : "op",
                          snaps ? "alpha" : "edit", "correction", "passes", "start", "toBorder"});
        step.points = readPoints(fields);
        if (fields.has("radius")) {
            step.radius = fields.pixels("radius");
        }
        if (fields.has("alpha")) {
            step.alpha = fields.number("alpha");
        }
        step.edit = fields.has("edit") && fields.flag("edit");
    }
    readCorrection(fields, step);
}

}  // namespace

int versionFor(const Step& step) {
    if (step.toBorder) {
        return kOutputVersion;
    }
    const bool isPlain = !step.correction && !step.passes && step.start.empty();
    return isPlain ? kPlainVersion : kCorrectionVersion;
}

Step readStep(const Json& object, const std::string& name, int version,
              const FileNaming& nameForHost) {
    const JsonFields fields(object, name);
    requireFieldsOf(version, fields);
    const std::string operationName = fields.text("op");
    const std::optional<Operation> operation = operationNamed(operationName);
    if (!operation) {
        fields.fail("has the unknown operation \"" + operationName + "\"");
    }
    Step step;
    step.operation = *operation;
    if (step.operation == Operation::kUndo || step.operation == Operation::kRedo) {
        fields.allowOnly({"op"});
    } else {
        readMark(fields, step, nameForHost);
    }
    return step;
}

Json asJson(const Step& step, const FileNaming& nameInFile) {
    Json object = {{"op", nameOf(step.operation)}};
    if (step.operation == Operation::kBox) {
        object["box"] = {step.points[0].x, step.points[0].y, step.points[1].x, step.points[1].y};
    } else if (!step.points.empty()) {
        object["points"] = Json::array();
        for (const cv::Point& point : step.points) {
            object["points"].push_back({point.x, point.y});
        }
    }
    if (step.radius) {
        object["radius"] = *step.radius;
    }
    if (step.alpha) {
        object["alpha"] = *step.alpha;
    }
    if (step.edit) {
        object["edit"] = true;
    }
    if (step.operation == Operation::kMarks) {
        object["file"] = nameInFile(step.marksFile);
    }
    if (step.correction) {
        object["correction"] = nameOf(*step.correction);
    }
    if (step.passes) {
        object["passes"] = *step.passes;
    }
    if (!step.start.empty()) {
        object["start"] = step.start;
    }
    if (step.toBorder) {
        object["toBorder"] = true;
    }
    return object;
}
