#include "session/session_file.h"

#include <algorithm>

#include "session/errors.h"
#include "session/json_fields.h"
#include "session/output_json.h"
#include "session/step_json.h"

using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t kDigestDigits = 32;
constexpr const char* kSrgb = "srgb";

int readVersion(const JsonFields& fields) {
    const int version = fields.has("version") ? fields.pixels("version") : kPlainVersion;
    if (version < kPlainVersion || version > kOutputVersion) {
        throw UserError(fields.name() + " has version " + std::to_string(version) +
                        " of the format and versions 1 to 3 are read here; use the program that "
                        "wrote it");
    }
    return version;
}

// None where a file without one says all that there is to say.
std::optional<int> writtenVersion(const SessionFile& session) {
    int version = session.inSrgb || session.output.isMade() ? kOutputVersion : kPlainVersion;
    for (const Step& step : session.steps) {
        version = std::max(version, versionFor(step));
    }
    const bool notesPhotograph = session.size || !session.digest.empty();
    return version > kPlainVersion || notesPhotograph ? std::optional(version) : std::nullopt;
}

void readPhotograph(const JsonFields& fields, SessionFile& session) {
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

void readColours(const JsonFields& fields, SessionFile& session) {
    if (!fields.has("colours")) {
        return;
    }
    if (fields.text("colours") != kSrgb) {
        fields.fail("has the unknown colours \"" + fields.text("colours") +
                    "\"; there is srgb, and without the field they are used as stored");
    }
    session.inSrgb = true;
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
    const JsonFields fields(document, name);
    const int version = readVersion(fields);
    fields.allowOnly(
        {"version", "photo", "width", "height", "digest", "colours", "output", "steps"});
    fields.requireVersion(version, kOutputVersion, {"colours", "output"});
    SessionFile session;
    session.photo = nameForHost(fields.text("photo"));
    readPhotograph(fields, session);
    readColours(fields, session);
    if (fields.has("output")) {
        session.output = readOutput(fields.at("output"), name + ", output");
    }
    const Json& steps = fields.at("steps");
    if (!steps.is_array()) {
        fields.fail("\"steps\" is not a list");
    }
    for (const Json& step : steps) {
        const std::string number = std::to_string(session.steps.size() + 1);
        session.steps.push_back(readStep(step, name + ", step " + number, version, nameForHost));
    }
    return session;
}

std::string formatSessionFile(const SessionFile& session, const FileNaming& nameInFile) {
    Json document = Json::object();
    if (const std::optional<int> version = writtenVersion(session)) {
        document["version"] = *version;
    }
    document["photo"] = nameInFile(session.photo);
    if (session.size) {
        document["width"] = session.size->width;
        document["height"] = session.size->height;
    }
    if (!session.digest.empty()) {
        document["digest"] = session.digest;
    }
    if (session.inSrgb) {
        document["colours"] = kSrgb;
    }
    if (session.output.isMade()) {
        document["output"] = asJson(session.output);
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

void notePhoto(SessionFile& session, const cv::Mat& stored) {
    session.size = stored.size();
    session.digest = digestOf(stored);
}

void requireSamePhoto(const SessionFile& session, const cv::Mat& stored, const std::string& name) {
    if (session.size && *session.size != stored.size()) {
        throw UserError(name + " was made on a photograph of " + asText(*session.size) +
                        " and this one has " + asText(stored.size()) +
                        "; give the photograph that it was made on");
    }
    if (!session.digest.empty() && session.digest != digestOf(stored)) {
        throw UserError(
            name +
            " was made on a photograph of this size with other pixels; give the "
            "photograph that it was made on, or take \"digest\" out of the session file "
            "when the marks fit this one, too");
    }
}
