#include "session/outline.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

std::string lineThrough(const std::vector<cv::Point>& points) {
    std::string data;
    char command = 'M';
    for (const cv::Point& point : points) {
        data += command + std::to_string(point.x) + " " + std::to_string(point.y);
        command = 'L';
    }
    return data;
}

std::string svgOf(const std::string& pathData, cv::Size photo) {
    const std::string width = std::to_string(photo.width);
    const std::string height = std::to_string(photo.height);
    // The view starts half a pixel before the middle of pixel (0, 0).
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
           "\" viewBox=\"-0.5 -0.5 " + width + " " + height +
           "\">\n  <path fill=\"none\" stroke=\"#ffff00\" fill-rule=\"evenodd\" d=\"" + pathData +
           "\"/>\n</svg>\n";
}

Json pairsOf(const std::vector<cv::Point>& points) {
    Json pairs = Json::array();
    for (const cv::Point& point : points) {
        pairs.push_back({point.x, point.y});
    }
    return pairs;
}

std::string jsonOf(const char* name, Json lines, cv::Size photo) {
    const Json document = {
        {"width", photo.width}, {"height", photo.height}, {name, std::move(lines)}};
    return document.dump() + "\n";
}

}  // namespace

std::string asSvg(const Outline& outline, cv::Size photo) {
    std::string data;
    for (const std::vector<cv::Point>& contour : outline) {
        data += lineThrough(contour) + 'Z';
    }
    return svgOf(data, photo);
}

std::string asJson(const Outline& outline, cv::Size photo) {
    Json contours = Json::array();
    for (const std::vector<cv::Point>& contour : outline) {
        contours.push_back(pairsOf(contour));
    }
    return jsonOf("contours", std::move(contours), photo);
}

std::string pathAsSvg(const std::vector<cv::Point>& path, cv::Size photo) {
    return svgOf(lineThrough(path), photo);
}

std::string pathAsJson(const std::vector<cv::Point>& path, cv::Size photo) {
    return jsonOf("path", pairsOf(path), photo);
}
