// The results to look at: a contact sheet and the masks themselves, where they are asked for.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <utility>

#include "contact_sheet.h"
#include "measure/robot_run.h"
#include "measure/score.h"

struct PictureOptions {
    std::string contactSheet;  // file; empty for none
    std::string maskFolder;    // empty: masks are not written
};

class ResultPictures {
  public:
    explicit ResultPictures(PictureOptions options) : m_options(std::move(options)) {}

    struct Result {
        std::string photo;
        std::string way;  // how it came about, for the caption and the mask's name
        std::optional<Score> score;
        cv::Mat image;
        cv::Mat mask;
        cv::Mat scribbles;  // CV_8UC1: 1 background, 2 object; may be empty
    };

    // The results of a photograph, one after another, are a row of the sheet. Throws
    // std::runtime_error for a mask that cannot be written.
    void add(const Result& result);
    // With all strokes so far painted in.
    void add(const RobotView& view);

    // Writes the sheet. Throws std::runtime_error when that fails.
    void finish() const;

  private:
    PictureOptions m_options;
    ContactSheet m_sheet;
    std::optional<std::string> m_photo;  // of the present row
    cv::Mat m_strokes;                   // of the robot with the present method
};
