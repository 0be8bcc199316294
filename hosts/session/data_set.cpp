#include "session/data_set.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

#include "session/errors.h"

namespace {

constexpr std::array<const char*, 4> kPictureEndings{".jpg", ".jpeg", ".png", ".bmp"};

// At the last point, which counts as part of the ending.
std::pair<std::string, std::string> nameAndEnding(const std::string& file) {
    const std::size_t point = file.rfind('.');
    return point == std::string::npos ? std::pair{file, std::string()}
                                      : std::pair{file.substr(0, point), file.substr(point)};
}

bool isPhotograph(const std::string& file) {
    const auto [name, ending] = nameAndEnding(file);
    // A true mask or a scribble has a second ending.
    return std::find(kPictureEndings.begin(), kPictureEndings.end(), ending) !=
               kPictureEndings.end() &&
           nameAndEnding(name).second.empty();
}

}  // namespace

DataPhoto::DataPhoto(const DataFolder& folder, std::string file)
    : m_folder(&folder), m_file(std::move(file)), m_name(nameAndEnding(m_file).first) {}

cv::Mat DataPhoto::image() const {
    return m_folder->colourPicture(m_file);
}

cv::Mat DataPhoto::truth() const {
    return m_folder->greyPicture(m_name + ".gt.png");
}

std::vector<int> DataPhoto::numbers(const char* ending) const {
    const std::optional<std::string> text = m_folder->text(m_name + ending);
    std::istringstream stream(text.value_or(""));
    std::vector<int> numbers;
    for (int number = 0; stream >> number;) {
        numbers.push_back(number);
    }
    if (!stream.eof()) {
        throw UserError(m_name + ending + " holds something else than whole numbers; correct it");
    }
    return numbers;
}

cv::Rect DataPhoto::box() const {
    const std::vector<int> edges = numbers(".box.txt");
    if (edges.empty()) {
        return {};
    }
    if (edges.size() != 4) {
        throw UserError(m_name +
                        ".box.txt holds something else than left, top, right and bottom; " +
                        "correct it");
    }
    return {cv::Point(edges[0], edges[1]), cv::Point(edges[2], edges[3])};
}

std::vector<cv::Point> DataPhoto::lasso() const {
    const std::vector<int> coordinates = numbers(".lasso.txt");
    std::vector<cv::Point> loop;
    for (std::size_t i = 0; i + 1 < coordinates.size(); i += 2) {
        loop.emplace_back(coordinates[i], coordinates[i + 1]);
    }
    return loop;
}

cv::Mat DataPhoto::scribbles(const std::string& set) const {
    return m_folder->greyPicture(m_name + "." + set + ".png");
}

std::vector<DataPhoto> photosIn(const DataFolder& folder) {
    std::vector<DataPhoto> photos;
    for (const std::string& file : folder.fileNames()) {
        if (isPhotograph(file)) {
            photos.emplace_back(folder, file);
        }
    }
    std::sort(photos.begin(), photos.end(),
              [](const DataPhoto& a, const DataPhoto& b) { return a.name() < b.name(); });
    return photos;
}
