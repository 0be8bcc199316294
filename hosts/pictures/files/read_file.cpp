#include "pictures/files/read_file.h"

#include <algorithm>

#include "pictures/files/bmp.h"
#include "pictures/files/pnm.h"
#include "pictures/files/vips_reader.h"
#include "pictures/picture_error.h"
#include "pictures/picture_format.h"

namespace {

bool holds(const std::vector<std::uint8_t>& bytes, std::size_t at, const std::string& text) {
    return bytes.size() >= at + text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

bool isHeif(const std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t kBrandAt = 8;
    const auto hasBrand = [&](const char* brand) { return holds(bytes, kBrandAt, brand); };
    constexpr const char* kBrands[] = {"heic", "heix", "heim", "heis", "hevc", "hevx",
                                       "hevm", "hevs", "mif1", "msf1", "avif", "avis"};
    return holds(bytes, 4, "ftyp") && std::any_of(std::begin(kBrands), std::end(kBrands), hasBrand);
}

}  // namespace

std::optional<PictureFormat> formatOf(const std::vector<std::uint8_t>& bytes) {
    const auto beginsWith = [&](const std::string& text) { return holds(bytes, 0, text); };
    if (beginsWith("\xFF\xD8\xFF")) {
        return PictureFormat::kJpeg;
    }
    if (beginsWith("\x89PNG\r\n\x1A\n")) {
        return PictureFormat::kPng;
    }
    if (beginsWith("RIFF") && holds(bytes, 8, "WEBP")) {
        return PictureFormat::kWebp;
    }
    using namespace std::string_literals;
    // The second pair is that of files beyond 4 GB.
    for (const std::string& start : {"II*\0"s, "MM\0*"s, "II+\0"s, "MM\0+"s}) {
        if (beginsWith(start)) {
            return PictureFormat::kTiff;
        }
    }
    if (isHeif(bytes)) {
        return PictureFormat::kHeif;
    }
    if (beginsWith("BM")) {
        return PictureFormat::kBmp;
    }
    if (bytes.size() > 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6') {
        return PictureFormat::kPnm;
    }
    return std::nullopt;
}

Picture readFile(const PictureFile& file) {
    const std::optional<PictureFormat> format = formatOf(file.bytes);
    if (!format) {
        failAsNoPicture(file);
    }
    Picture picture = *format == PictureFormat::kBmp   ? readBmp(file)
                      : *format == PictureFormat::kPnm ? readPnm(file)
                                                       : readByVips(file, *format);
    picture.stored.format = *format;
    return picture;
}

void requireFewPixels(const PictureFile& file, std::int64_t width, std::int64_t height) {
    const auto most = static_cast<std::int64_t>(
        std::min<std::uint64_t>(file.options.maxPixels, std::uint64_t{1} << 40U));
    // Not by the product, which can be larger than the type holds.
    if (width > 0 && height > most / width) {
        throw PictureError(file.name + " has " + std::to_string(width) + " x " +
                           std::to_string(height) + " pixels and at most " + std::to_string(most) +
                           " are taken; reduce it first");
    }
}

void failAsDamaged(const PictureFile& file, const std::string& what) {
    throw DamagedPicture(file.name + " is damaged (" + what + ")");
}

void failAsNoPicture(const PictureFile& file) {
    throw PictureError(file.name +
                       " is not an image that can be decoded, or damaged; give a whole " +
                       readableFormats() + " file");
}
