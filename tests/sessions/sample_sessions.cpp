#include <filesystem>
#include <fstream>
#include <sstream>

#include "pictures/engine_colours.h"
#include "pictures/read_picture.h"
#include "recorder.h"
#include "session/session.h"
#include "session/session_file.h"

namespace fs = std::filesystem;

namespace {

const char* const kSessions[] = {
    "samples/astronaut.json",
    "samples/cat.json",
    "samples/coffee.json",
    "samples/rocket.json",
    "tests/sessions/astronaut-loop.json",
    "tests/sessions/astronaut-portrait.json",
    "tests/sessions/coffee-brush-first.json",
    "tests/sessions/coffee-corrections.json",
    "tests/sessions/coffee-strokes.json",
    "tests/sessions/rocket-whole.json",
};

std::string textIn(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

Photo photographOf(const SessionFile& session) {
    const std::string bytes = textIn(session.photo);
    const Picture picture = readPicture({bytes.begin(), bytes.end()}, session.photo);
    requireSamePhoto(session, engineColours(picture, Colours::kAsStored), session.photo);
    return photoOf(engineColours(picture, session.inSrgb ? Colours::kSrgb : Colours::kAsStored),
                   session.photo);
}

Digest digestOfBytes(const cv::Mat& image) {
    return Digest().add(std::vector<std::uint8_t>(image.datastart, image.dataend));
}

void addStep(Recorder& recorder, Operation operation, Session& session) {
    recorder.step(nameOf(operation), digestOfBytes(session.result()),
                  digestOfBytes(session.preview()));
}

void record(Recorder& recorder, const fs::path& file) {
    const SessionFile sessionFile = parseSessionFile(
        textIn(file), file.filename(),
        [&](const std::string& name) { return (file.parent_path() / name).string(); });
    const Photo photo = photographOf(sessionFile);
    SessionHost host;
    Stats stats;
    Session session(photo, host, stats);
    recorder.start(file.stem());
    for (const Step& step : sessionFile.steps) {
        session.apply(step);
        addStep(recorder, step.operation, session);
    }
    for (const Operation operation : {Operation::kUndo, Operation::kRedo}) {
        Step step;
        step.operation = operation;
        while (operation == Operation::kUndo ? session.canUndo() : session.canRedo()) {
            session.apply(step);
            addStep(recorder, operation, session);
        }
    }
}

}  // namespace

void recordSampleSessions(Recorder& recorder) {
    for (const char* const session : kSessions) {
        record(recorder, fs::path(SEGCORE_SOURCE) / session);
    }
}
