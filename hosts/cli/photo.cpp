#include "photo.h"

#include "byte_stream.h"
#include "errors.h"
#include "pictures/picture_error.h"

namespace {

std::string nameFor(const std::string& path) {
    return path == kStandardStream ? "standard input" : path;
}

}  // namespace

Photo readPhoto(const std::string& path, Damaged damaged) {
    try {
        return photoOf(readPicture(readAll(path), nameFor(path), Channels::kColour, damaged),
                       nameFor(path));
    } catch (const DamagedPicture& error) {
        throw UserError(std::string(error.what()) +
                        "; give a whole file, or go on with what there is by --accept-damaged");
    }
}

cv::Mat readImageUnchanged(const std::string& path) {
    try {
        return readPicture(readAll(path), nameFor(path), Channels::kAsStored, Damaged::kRefused);
    } catch (const DamagedPicture& error) {
        throw UserError(std::string(error.what()) + "; give a whole file");
    }
}
