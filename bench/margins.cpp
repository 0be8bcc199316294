// What the last request of a session worked on: cuts the photographs of a folder from their marks and
// prints its region as WxH+X+Y of the photograph, beside the mask's error in percent and the number
// of pixels of the true object that the region leaves out.
//
//     segcore-bench-margins FOLDER [--cases CASE,CASE...] [--only NAME,NAME...]
//
// FOLDER and the cases are those of segcore-measure. A host cannot ask for the region; this program
// reads it from the engine.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "measure/folder_on_disk.h"
#include "measure/mark_case.h"
#include "measure/score.h"
#include "support/arguments.h"

namespace {

std::vector<std::string> listOf(const std::string& joined) {
    std::vector<std::string> parts;
    std::istringstream stream(joined);
    for (std::string part; std::getline(stream, part, ',');) {
        parts.push_back(part);
    }
    return parts;
}

// The working region without the borders and margins that were cut off.
cv::Rect workedRegion(cv::Size photo) {
    const auto factor = static_cast<double>(g_imageResizeFactor);
    const auto inPhoto = [factor](int working) { return static_cast<int>(working * factor); };
    const cv::Point first(inPhoto(VORNSEMarker::m_xMinBBox), inPhoto(VORNSEMarker::m_yMinBBox));
    const cv::Point end(inPhoto(VORNSEMarker::m_xMinBBox + pHybrid->m_cropWidth),
                        inPhoto(VORNSEMarker::m_yMinBBox + pHybrid->m_cropHeight));
    return cv::Rect(first, end) & cv::Rect({0, 0}, photo);
}

void report(const DataPhoto& photo, const std::string& markCase) {
    const cv::Mat image = photo.image();
    CaseSession session(photo, image);
    if (!session.apply(markCase)) {
        return;
    }
    const cv::Rect region = workedRegion(image.size());
    const cv::Mat truth = photo.truth();
    std::printf("%-18s %-10s ", photo.name().c_str(), markCase.c_str());
    if (truth.empty()) {
        std::printf("%8s", "-");
    } else {
        std::printf("%8.3f", 100.0 * scoreOf(session.mask(), truth).errorRate);
    }
    std::printf("  %dx%d+%d+%d", region.width, region.height, region.x, region.y);
    if (!truth.empty()) {
        const cv::Mat object = truth == 255;
        std::printf(" leaves out %d", cv::countNonZero(object) - cv::countNonZero(object(region)));
    }
    std::printf("\n");
}

void run(const std::string& directory, Arguments options) {
    const std::vector<std::string> cases = listOf(options.text("--cases", "box,lasso,box+s2"));
    const std::vector<std::string> only = listOf(options.text("--only", ""));
    options.requireAllTaken();
    for (const std::string& markCase : cases) {
        if (const std::string fault = faultOf(markCase); !fault.empty()) {
            throw std::runtime_error(fault);
        }
    }
    const FolderOnDisk folder(directory);
    std::printf("%-18s %-10s %8s  region\n", "photograph", "case", "error %");
    for (const DataPhoto& photo : photosIn(folder)) {
        if (only.empty() || std::find(only.begin(), only.end(), photo.name()) != only.end()) {
            for (const std::string& markCase : cases) {
                report(photo, markCase);
            }
        }
    }
}

}  // namespace

int main(int count, char** list) {
    if (count < 2) {
        std::fprintf(stderr,
                     "usage: segcore-bench-margins FOLDER [--cases CASE,...] [--only NAME,...]\n");
        return EXIT_FAILURE;
    }
    const std::string folder = list[1];
    return runProgram(count - 1, list + 1,
                      [&](const Arguments& arguments) { run(folder, arguments); });
}
