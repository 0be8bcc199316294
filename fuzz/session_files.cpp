// Fuzzes session files: reads them, makes the steps on a small photograph as `segcore replay` does,
// and writes them again.
#include <cstdlib>
#include <opencv2/core.hpp>

#include "fuzz_target.h"
#include "session/errors.h"
#include "session/outline.h"
#include "session/session.h"
#include "session/session_file.h"
#include "support/log_capture.h"

namespace {

constexpr int kWidth = 40;
constexpr int kHeight = 30;
constexpr std::size_t kMostSteps = 12;  // that are made, of any number

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

// Green and red strokes on a transparent ground, whatever the marks' name.
class FuzzHost : public SessionHost {
  public:
    cv::Mat marksPicture(const std::string& /*name*/) override {
        cv::Mat image(kHeight, kWidth, CV_8UC4, cv::Scalar(0, 0, 0, 0));
        image(cv::Rect(15, 10, 10, 8)).setTo(cv::Scalar(0, 255, 0, 255));
        image(cv::Rect(2, 2, 30, 2)).setTo(cv::Scalar(0, 0, 255, 255));
        return image;
    }
};

std::string sameName(const std::string& name) {
    return name;
}

void replay(const std::string& text) {
    SessionFile file = parseSessionFile(text, "session.json", sameName);
    const std::string written = formatSessionFile(file, sameName);
    if (formatSessionFile(parseSessionFile(written, "written.json", sameName), sameName) !=
        written) {
        std::abort();
    }
    file.steps.resize(std::min(file.steps.size(), kMostSteps));
    Stats stats;
    FuzzHost host;
    Session session(photo(), host, stats);
    for (const Step& step : file.steps) {
        session.apply(step);
    }
    const std::vector<Contour> contours =
        contoursOf(tidied(session.result(), hygieneOf(file.output)));
    asSvg(contours, photo().size());
    asJson(contours, photo().size());
    session.preview();
    stats.json();
    requireSamePhoto(file, asImage(photo().words, photo().size()), "session.json");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    clearLog();
    try {
        replay(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const UserError&) {
        // Refused with a message, as it should be.
    }
    return 0;
}
