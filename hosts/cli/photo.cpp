#include "photo.h"

#include "byte_stream.h"
#include "errors.h"
#include "pictures/picture_error.h"

namespace {

std::string nameFor(const std::string& path) {
    return path == kStandardStream ? "standard input" : path;
}

}  // namespace

Picture readPhoto(const std::string& path, const ReadOptions& options) {
    try {
        return readPicture(readAll(path), nameFor(path), options);
    } catch (const DamagedPicture& error) {
        throw UserError(std::string(error.what()) +
                        "; give a whole file, or go on with what there is by --accept-damaged");
    }
}

Photo photoOf(const Picture& picture, Colours colours, const std::string& path) {
    return photoOf(engineColours(picture, colours), nameFor(path));
}

Picture readCompanion(const std::string& path, std::uint64_t maxPixels) {
    try {
        return readPicture(readAll(path), nameFor(path), {Damaged::kRefused, maxPixels});
    } catch (const DamagedPicture& error) {
        throw UserError(std::string(error.what()) + "; give a whole file");
    }
}

cv::Mat readImageUnchanged(const std::string& path, std::uint64_t maxPixels) {
    return storedPixels(readCompanion(path, maxPixels));
}
