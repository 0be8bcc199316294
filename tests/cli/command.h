// Command lines run in a folder of their own, and what came of them.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "support/scenes.h"

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

// A folder with a scene as photo.png and an image file called old.png that nothing may touch;
// removed with everything in it. Names are relative to it.
class Workplace {
  public:
    explicit Workplace(const Scene& photo = discScene());
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    void write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;
    cv::Mat image(const std::string& name) const;  // as stored, all channels
    // Nothing but photo.png and old.png is there, and old.png is as it was.
    bool isUntouched() const;

    // A line for bash in the folder. `segcore` is the program, `segcut` its cut of photo.png, and
    // `boxed` cuts out the scene's object.
    Outcome run(const std::string& line) const;

  private:
    std::filesystem::path m_folder;
};

// The library's result as the program writes masks: 255 object.
cv::Mat programMask(const std::vector<std::uint8_t>& hostMask, cv::Size size);
// The bytes of an image file.
std::string encoded(const cv::Mat& image, const char* ending);
bool same(const cv::Mat& a, const cv::Mat& b);
