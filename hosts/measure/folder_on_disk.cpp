#include "folder_on_disk.h"

#include <fstream>
#include <iterator>

#include "pictures/engine_colours.h"
#include "pictures/picture_error.h"
#include "session/errors.h"

namespace fs = std::filesystem;

std::vector<std::string> FolderOnDisk::fileNames() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

std::optional<std::string> FolderOnDisk::text(const std::string& file) const {
    std::ifstream stream(m_folder / file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    return std::string{std::istreambuf_iterator<char>(stream), {}};
}

cv::Mat FolderOnDisk::colourPicture(const std::string& file) const {
    const std::optional<Picture> colours = picture(file);
    return colours ? engineColours(*colours, Colours::kAsStored) : cv::Mat();
}

cv::Mat FolderOnDisk::greyPicture(const std::string& file) const {
    const std::optional<Picture> grey = picture(file);
    return grey ? greyPixels(*grey) : cv::Mat();
}

std::optional<Picture> FolderOnDisk::picture(const std::string& file) const {
    const std::optional<std::string> bytes = text(file);
    if (!bytes) {
        return std::nullopt;
    }
    const std::string name = (m_folder / file).string();
    try {
        return readPicture({bytes->begin(), bytes->end()}, name);
    } catch (const DamagedPicture& error) {
        throw UserError(std::string(error.what()) + "; replace it");
    } catch (const PictureError& error) {
        throw UserError(error.what());
    }
}
