#include "session/session_file.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "session/errors.h"

using Json = nlohmann::ordered_json;

namespace {

constexpr int kVersion = 1;
constexpr std::size_t kDigestDigits = 32;

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

    const std::string& name() const { return m_name; }

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

Step readStep(const Json& object, const std::string& itsName, const FileNaming& nameForHost) {
    const Fields fields(object, itsName);
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
        step.marksFile = nameForHost(fields.text("file"));
    } else {
        fields.allowOnly({"op"});
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
    return object;
}

void readVersion(const Fields& fields) {
    if (fields.has("version") && fields.pixels("version") != kVersion) {
        throw UserError(fields.name() + " has version " + std::to_string(fields.pixels("version")) +
                        " of the format and version " + std::to_string(kVersion) +
                        " is read here; use the program that wrote it");
    }
}

void readPhotograph(const Fields& fields, SessionFile& session) {
    if (fields.has("width") || fields.has("height")) {
        session.size = cv::Size(fields.pixels("width"), fields.pixels("height"));
        if (session.size->width < 1 || session.size->height < 1) {
            fields.fail("\"width\" and \"height\" are not sizes of a photograph");
        }
    }
    if (fields.has("digest")) {
        session.digest = fields.text("digest");
        if (session.digest.size() != kDigestDigits ||
            session.digest.find_first_not_of("0123456789abcdef") != std::string::npos) {
            fields.fail("\"digest\" is not 32 hexadecimal digits in small letters");
        }
    }
}

// As a person writes it. A line break never stands inside a string of the JSON text.
std::string onOneLine(const Json& value) {
    std::string line;
    for (const char letter : value.dump(0)) {
        if (letter != '\n') {
            line += letter;
        } else if (line.back() == ',') {
            line += ' ';
        }
    }
    return line;
}

std::string asText(cv::Size size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels";
}

}  // namespace

SessionFile parseSessionFile(const std::string& text, const std::string& name,
                             const FileNaming& nameForHost) {
    const Json document = Json::parse(text.begin(), text.end(), nullptr, false);
    if (document.is_discarded()) {
        throw UserError(name + " is not a JSON document; give a session file");
    }
    const Fields fields(document, name);
    readVersion(fields);
    fields.allowOnly({"version", "photo", "width", "height", "digest", "steps"});
    SessionFile session;
    session.photo = nameForHost(fields.text("photo"));
    readPhotograph(fields, session);
    const Json& steps = fields.at("steps");
    if (!steps.is_array()) {
        fields.fail("\"steps\" is not a list");
    }
    for (const Json& step : steps) {
        const std::string number = std::to_string(session.steps.size() + 1);
        session.steps.push_back(readStep(step, name + ", step " + number, nameForHost));
    }
    return session;
}

std::string formatSessionFile(const SessionFile& session, const FileNaming& nameInFile) {
    Json document = Json::object();
    if (session.size || !session.digest.empty()) {
        document["version"] = kVersion;
    }
    document["photo"] = nameInFile(session.photo);
    if (session.size) {
        document["width"] = session.size->width;
        document["height"] = session.size->height;
    }
    if (!session.digest.empty()) {
        document["digest"] = session.digest;
    }
    std::string text;
    for (const auto& [key, value] : document.items()) {
        text += (text.empty() ? "{" : " ") + Json(key).dump() + ": " + onOneLine(value) + ",\n";
    }
    text += " \"steps\": [";
    const char* between = "\n   ";
    for (const Step& step : session.steps) {
        text += between + onOneLine(asJson(step, nameInFile));
        between = ",\n   ";
    }
    return text + "]}\n";
}

void notePhoto(SessionFile& session, const Photo& photo) {
    session.size = photo.size();
    session.digest = digestOf(photo);
}

void requireSamePhoto(const SessionFile& session, const Photo& photo, const std::string& name) {
    if (session.size && *session.size != photo.size()) {
        throw UserError(name + " was made on a photograph of " + asText(*session.size) +
                        " and this one has " + asText(photo.size()) +
                        "; give the photograph that it was made on");
    }
    if (!session.digest.empty() && session.digest != digestOf(photo)) {
        throw UserError(
            name +
            " was made on a photograph of this size with other pixels; give the "
            "photograph that it was made on, or take \"digest\" out of the session file "
            "when the marks fit this one, too");
    }
}
