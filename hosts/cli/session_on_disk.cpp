#include "session_on_disk.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

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

}  // namespace

SessionFile readSessionFile(const std::string& path) {
    const Bytes bytes = readAll(path);
    return parseSessionFile({bytes.begin(), bytes.end()}, path,
                            [&path](const std::string& file) { return besideSession(file, path); });
}

Bytes encodeSessionFile(const SessionFile& session, const std::string& path) {
    const std::string text = formatSessionFile(
        session, [&path](const std::string& file) { return relativeToSession(file, path); });
    return {text.begin(), text.end()};
}
