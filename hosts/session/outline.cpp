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

// Every side runs along x or y.
std::string borderOf(const std::vector<cv::Point>& corners) {
    std::string data = lineThrough({corners.front()});
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const bool isLevel = corners[i].y == corners[i - 1].y;
        data += isLevel ? "H" + std::to_string(corners[i].x) : "V" + std::to_string(corners[i].y);
    }
    return data + "Z";
}

// `origin` is the place of the photograph's corner in the numbers of the path.
std::string svgOf(const char* origin, const char* paint, const std::string& pathData,
                  cv::Size photo) {
    const std::string width = std::to_string(photo.width);
    const std::string height = std::to_string(photo.height);
    return R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" + width + R"(" height=")" + height +
           R"(" viewBox=")" + origin + " " + width + " " + height + "\">\n  <path " + paint +
           R"( d=")" + pathData + "\"/>\n</svg>\n";
}

Json pairsOf(const std::vector<cv::Point>& points) {
    Json pairs = Json::array();
    for (const cv::Point& point : points) {
        pairs.push_back({point.x, point.y});
    }
    return pairs;
}

std::string textOf(const Json& document) {
    return document.dump() + "\n";
}

}  // namespace

std::string asSvg(const std::vector<Contour>& contours, cv::Size photo) {
    std::string data;
    for (const Contour& contour : contours) {
        data += borderOf(contour.corners);
    }
    return svgOf("0 0", R"(fill-rule="evenodd")", data, photo);
}

std::string asJson(const std::vector<Contour>& contours, cv::Size photo,
                   const std::optional<cv::Rect>& crop) {
    Json lines = Json::array();
    Json parents = Json::array();
    for (const Contour& contour : contours) {
        lines.push_back(pairsOf(contour.corners));
        parents.push_back(contour.parent);
    }
    Json document = {{"width", photo.width}, {"height", photo.height}};
    if (crop) {
        document["crop"] = {crop->x, crop->y, crop->width, crop->height};
    }
    document["contours"] = std::move(lines);
    document["parents"] = std::move(parents);
    return textOf(document);
}

std::string pathAsSvg(const std::vector<cv::Point>& path, cv::Size photo) {
    // The view starts half a pixel before the middle of pixel (0, 0).
    return svgOf("-0.5 -0.5", R"(fill="none" stroke="#ffff00")", lineThrough(path), photo);
}

std::string pathAsJson(const std::vector<cv::Point>& path, cv::Size photo) {
    return textOf({{"width", photo.width}, {"height", photo.height}, {"path", pairsOf(path)}});
}
