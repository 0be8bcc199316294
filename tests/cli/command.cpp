#include "command.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr const char* kOldContent = "precious";

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Workplace::Workplace(const Scene& photo) {
    std::string pattern = (fs::temp_directory_path() / "segcore-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder for the test");
    }
    m_folder = pattern;
    std::vector<std::uint32_t> pixels = photo.pixels;
    cv::imwrite(m_folder / "photo.png", cv::Mat(photo.height, photo.width, CV_8UC4, pixels.data()));
    write("old.png", kOldContent);
}

Workplace::~Workplace() {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

void Workplace::write(const std::string& name, const std::string& content) const {
    std::ofstream(m_folder / name, std::ios::binary) << content;
}

std::string Workplace::read(const std::string& name) const {
    return contentOf(m_folder / name);
}

cv::Mat Workplace::image(const std::string& name) const {
    return cv::imread(m_folder / name, cv::IMREAD_UNCHANGED);
}

bool Workplace::isUntouched() const {
    const auto count = std::distance(fs::directory_iterator(m_folder), fs::directory_iterator());
    return count == 2 && read("old.png") == kOldContent;
}

Outcome Workplace::run(const std::string& line) const {
    const std::string base = m_folder.string();
    std::ofstream(base + ".sh") << "cd '" << base
                                << "'; segcore() { " SEGCORE_RUNNER " '" SEGCORE_PROGRAM
                                   "' \"$@\"; }\nsegcut() { segcore cut photo.png \"$@\"; }\n"
                                   "boxed() { segcut --box 30,10,130,110 \"$@\"; }\n"
                                << line << "\n";
    const int status = std::system(("unset LD_PRELOAD; exec bash " + base + ".sh </dev/null >" +
                                    base + ".out 2>" + base + ".err")
                                       .c_str());
    const Outcome outcome{WEXITSTATUS(status), contentOf(base + ".out"), contentOf(base + ".err")};
    for (const char* suffix : {".sh", ".out", ".err"}) {
        fs::remove(base + suffix);
    }
    return outcome;
}

cv::Mat programMask(const std::vector<std::uint8_t>& hostMask, cv::Size size) {
    std::vector<std::uint8_t> bytes = hostMask;
    return 255 - cv::Mat(size, CV_8UC1, bytes.data());
}

std::string encoded(const cv::Mat& image, const char* ending) {
    std::vector<std::uint8_t> bytes;
    cv::imencode(ending, image, bytes);
    return {bytes.begin(), bytes.end()};
}

bool same(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}
