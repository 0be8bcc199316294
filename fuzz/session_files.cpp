// Fuzzes session files: reads them, makes the steps on a small photograph as `segcore replay` does,
// and writes them again.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>

#include "engine_log.h"
#include "errors.h"
#include "session/session.h"
#include "session/session_file.h"

namespace fs = std::filesystem;

namespace {

constexpr int kWidth = 40;
constexpr int kHeight = 30;
constexpr std::size_t kMostSteps = 12;  // that are made, of any number

// The files that a run reads, in a folder of its own that goes with it.
class Folder {
  public:
    Folder() {
        std::string pattern = (fs::temp_directory_path() / "segcore-fuzz-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            std::abort();
        }
        m_path = pattern;
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string write(const char* name, const Bytes& bytes) const {
        const fs::path path = m_path / name;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return path.string();
    }

  private:
    fs::path m_path;
};

// A bright ellipse on a ground that grows brighter.
const Photo& photo() {
    static const Photo made = [] {
        Photo result{kWidth, kHeight, {}};
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const int dx = x - kWidth / 2;
                const int dy = y - kHeight / 2;
                const bool object = dx * dx + 2 * dy * dy < 140;
                const auto shade = static_cast<std::uint32_t>((x * 7 + y * 13) % 11 + x);
                result.words.push_back((object ? 0xFFC8A020U : 0xFF102040U) + shade * 0x10101U);
            }
        }
        return result;
    }();
    return made;
}

// Red, green and transparent strokes on an opaque ground of white.
Bytes paintedMarks() {
    cv::Mat image(kHeight, kWidth, CV_8UC4, cv::Scalar(0, 0, 0, 0));
    image(cv::Rect(15, 10, 10, 8)).setTo(cv::Scalar(0, 255, 0, 255));
    image(cv::Rect(2, 2, 30, 2)).setTo(cv::Scalar(0, 0, 255, 255));
    return encodePng(image);
}

void replay(const std::string& path, const std::string& marks) {
    SessionFile file = readSessionFile(path);
    const Bytes written = encodeSessionFile(file, path);
    if (file.steps.size() > kMostSteps) {
        file.steps.resize(kMostSteps);
    }
    Stats stats;
    Session session(photo(), stats);
    for (Step& step : file.steps) {
        step.marksFile = marks;
        session.apply(step);
    }
    const Outline outline = session.takeOutline();
    asSvg(outline, photo().size());
    asJson(outline, photo().size());
    session.preview();
    stats.json();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    static const std::string marks = (keepEngineLog(), folder.write("marks.png", paintedMarks()));
    const std::string path = folder.write("session.json", Bytes(data, data + size));
    try {
        replay(path, marks);
    } catch (const UserError&) {
        // Refused with a message, as it should be.
    }
    return 0;
}
