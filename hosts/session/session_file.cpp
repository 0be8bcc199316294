#include "session/session_file.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "errors.h"

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

// A JSON object with a name for messages.
class Fields {
  public:
    Fields(const Json& object, std::string name) : m_object(object), m_name(std::move(name)) {
        if (!object.is_object()) {
            fail("is not an object in braces");
        }
    }

    bool has(const char* key) const { return m_object.contains(key); }

    const Json& at(const char* key) const {
        if (!has(key)) {
            fail(std::string("lacks \"") + key + "\"");
        }
        return m_object.at(key);
    }

    std::string text(const char* key) const {
        const Json& value = at(key);
        if (!value.is_string()) {
            fail(std::string("\"") + key + "\" is not a string");
        }
        return value.get<std::string>();
    }

    double number(const char* key) const {
        const Json& value = at(key);
        if (!value.is_number()) {
            fail(std::string("\"") + key + "\" is not a number");
        }
        return value.get<double>();
    }

    int pixels(const char* key) const { return pixelsIn(at(key), key); }

    bool flag(const char* key) const {
        const Json& value = at(key);
        if (!value.is_boolean()) {
            fail(std::string("\"") + key + "\" is neither true nor false");
        }
        return value.get<bool>();
    }

    // Arrays of whole numbers; `width` numbers each.
    std::vector<int> row(const Json& values, std::size_t width, const char* key) const {
        if (!values.is_array() || values.size() != width) {
            fail(std::string("\"") + key + "\" holds something else than " + std::to_string(width) +
                 " numbers");
        }
        std::vector<int> numbers;
        for (const Json& value : values) {
            numbers.push_back(pixelsIn(value, key));
        }
        return numbers;
    }

    void allowOnly(std::initializer_list<const char*> keys) const {
        for (const auto& [key, value] : m_object.items()) {
            const auto sameKey = [&key = key](const char* known) { return key == known; };
            if (std::none_of(keys.begin(), keys.end(), sameKey)) {
                fail("has a field \"" + key + "\" that does not belong there");
            }
        }
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw UserError(m_name + " " + what + "; see the man page for the format");
    }

  private:
    int pixelsIn(const Json& value, const char* key) const {
        if (!value.is_number_integer() || value.get<double>() < INT32_MIN ||
            value.get<double>() > INT32_MAX) {
            fail(std::string("\"") + key + "\" holds something else than a whole number");
        }
        return value.get<int>();
    }

    const Json& m_object;
    std::string m_name;
};

std::string besideSession(const std::string& file, const std::string& session) {
    if (file == kStandardStream || session == kStandardStream) {
        return file;
    }
    return (fs::path(session).parent_path() / file).string();
}

std::string relativeToSession(const std::string& file, const std::string& session) {
    if (file == kStandardStream || session == kStandardStream) {
        return file;
    }
    return fs::proximate(file, fs::absolute(session).parent_path()).string();
}

std::vector<cv::Point> readPoints(const Fields& fields) {
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

Step readStep(const Json& object, std::size_t number, const std::string& sessionPath) {
    const Fields fields(object, sessionPath + ", step " + std::to_string(number));
    const std::string name = fields.text("op");
    const std::optional<Operation> operation = operationNamed(name);
    if (!operation) {
        fields.fail("has the unknown operation \"" + name + "\"");
    }
    Step step;
    step.operation = *operation;
    if (step.operation == Operation::kBox) {
        fields.allowOnly({"op", "box"});
        const std::vector<int> box = fields.row(fields.at("box"), 4, "box");
        step.points = {{box[0], box[1]}, {box[2], box[3]}};
    } else if (isLoop(step.operation) || isBrush(step.operation)) {
        const bool snaps = isSnappedLoop(step.operation);
        fields.allowOnly(
            {"op", "points", isBrush(step.operation) ? "radius" : "op", snaps ? "alpha" : "edit"});
        step.points = readPoints(fields);
        if (fields.has("radius")) {
            step.radius = fields.pixels("radius");
        }
        if (fields.has("alpha")) {
            step.alpha = fields.number("alpha");
        }
        step.edit = fields.has("edit") && fields.flag("edit");
    } else if (step.operation == Operation::kMarks) {
        fields.allowOnly({"op", "file"});
        step.marksFile = besideSession(fields.text("file"), sessionPath);
    } else {
        fields.allowOnly({"op"});
    }
    return step;
}

Json asJson(const Step& step, const std::string& sessionPath) {
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
        object["file"] = relativeToSession(step.marksFile, sessionPath);
    }
    return object;
}

}  // namespace

SessionFile readSessionFile(const std::string& path) {
    const Bytes bytes = readAll(path);
    const Json document = Json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (document.is_discarded()) {
        throw UserError(path + " is not a JSON document; give a session file");
    }
    const Fields fields(document, path);
    fields.allowOnly({"photo", "steps"});
    SessionFile session;
    session.photo = besideSession(fields.text("photo"), path);
    const Json& steps = fields.at("steps");
    if (!steps.is_array()) {
        fields.fail("\"steps\" is not a list");
    }
    for (const Json& step : steps) {
        session.steps.push_back(readStep(step, session.steps.size() + 1, path));
    }
    return session;
}

Bytes encodeSessionFile(const SessionFile& session, const std::string& path) {
    Json document = {{"photo", relativeToSession(session.photo, path)}, {"steps", Json::array()}};
    for (const Step& step : session.steps) {
        document["steps"].push_back(asJson(step, path));
    }
    const std::string text = document.dump(1) + "\n";
    return {text.begin(), text.end()};
}
