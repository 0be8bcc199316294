#include "pictures/files/library.h"

#include <mutex>

#include "pictures/files/colours.h"
#include "pictures/files/encode_file.h"
#include "pictures/files/read_file.h"
#include "pictures/files/vips_library.h"

namespace {

// The library's errors lie in one buffer for all threads, so calls take turns.
std::mutex& turns() {
    static std::mutex mutex;
    return mutex;
}

Picture read(const std::vector<std::uint8_t>& bytes, const std::string& name,
             const ReadOptions& options) {
    const std::lock_guard<std::mutex> turn(turns());
    startVips();
    return readFile({bytes, name, options});
}

std::vector<std::uint8_t> encode(const Picture& picture, const std::string& ending,
                                 const WriteOptions& options) {
    const std::lock_guard<std::mutex> turn(turns());
    startVips();
    return encodeFile(picture, ending, options);
}

constexpr PictureLibrary kLibrary{read, encode, inSrgb, converted};

}  // namespace

const PictureLibrary* segcore_picture_library() {
    return &kLibrary;
}
