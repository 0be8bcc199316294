// A TIFF file is a header with the place of a directory, which is a list of entries of twelve bytes: tag,
// type, count, and the value or its place. A directory with further entries goes to the end of the file,
// and the header is made to point at it. EXIF blocks are TIFF files themselves, in either byte order.
#include "pictures/files/tiff_parts.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kEntryBytes = 12;
constexpr std::size_t kValueBytes = 4;
constexpr std::uint16_t kLong = 4;
constexpr std::uint16_t kRational = 5;
// Bytes of a value by its type, from 0 on.
constexpr std::size_t kTypeBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};

constexpr std::uint16_t kXResolution = 282;
constexpr std::uint16_t kXPosition = 286;
constexpr std::uint16_t kYPosition = 287;
constexpr std::uint16_t kExtraSamples = 338;  // 0 unknown, 1 and 2 alpha
constexpr std::uint16_t kExif = 34665;
constexpr std::uint16_t kGps = 34853;
// Description, make, model, software, time, artist, copyright.
constexpr std::uint16_t kOfMainDirectory[] = {270, 271, 272, 305, 306, 315, 33432};
constexpr std::uint16_t kInteroperability = 40965;  // the place of a directory of no more use

constexpr std::array<std::uint8_t, 6> kExifStart{'E', 'x', 'i', 'f', 0, 0};

struct Entry {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    Bytes value;  // in the order of little-endian machines
};
using Directory = std::vector<Entry>;

class Source {
  public:
    Source(const std::uint8_t* bytes, std::size_t size)
        : m_bytes(bytes), m_size(size), m_isBigEndian(size > 0 && bytes[0] == 'M') {}

    bool holds(std::uint64_t at, std::uint64_t count) const {
        return at <= m_size && count <= m_size - at;
    }
    std::size_t size() const { return m_size; }
    bool isBigEndian() const { return m_isBigEndian; }
    std::uint32_t number(std::size_t at, std::size_t count) const {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < count; ++i) {
            number = number << 8U | m_bytes[at + (m_isBigEndian ? i : count - 1 - i)];
        }
        return number;
    }
    // `count` values of `unit` bytes each, turned into the order of little-endian machines.
    Bytes values(std::size_t at, std::size_t count, std::size_t unit) const {
        Bytes bytes(m_bytes + at, m_bytes + at + count * unit);
        for (std::size_t i = 0; m_isBigEndian && i < count; ++i) {
            const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(i * unit);
            std::reverse(start, start + static_cast<std::ptrdiff_t>(unit));
        }
        return bytes;
    }

  private:
    const std::uint8_t* m_bytes;
    std::size_t m_size;
    bool m_isBigEndian;
};

// None for a value of an unknown type, outside of the file or of more than `room` bytes.
std::optional<Entry> entryAt(const Source& source, std::size_t at, std::size_t room) {
    Entry entry;
    entry.tag = static_cast<std::uint16_t>(source.number(at, 2));
    entry.type = static_cast<std::uint16_t>(source.number(at + 2, 2));
    entry.count = source.number(at + 4, 4);
    if (entry.type == 0 || entry.type >= std::size(kTypeBytes)) {
        return std::nullopt;
    }
    const std::size_t unit = kTypeBytes[entry.type];
    const std::uint64_t size = std::uint64_t{entry.count} * unit;
    const std::size_t valueAt = size <= kValueBytes ? at + 8 : source.number(at + 8, 4);
    if (size > room || !source.holds(valueAt, size)) {
        return std::nullopt;
    }
    // A rational number is two numbers.
    const bool isPair = entry.type == kRational || entry.type == 10;
    entry.value = source.values(valueAt, entry.count * (isPair ? 2U : 1U), isPair ? 4 : unit);
    return entry;
}

Directory directoryAt(const Source& source, std::size_t at) {
    Directory directory;
    if (!source.holds(at, 2)) {
        return directory;
    }
    const std::size_t count = source.number(at, 2);
    // Values lie side by side. Where they are more than the file, it names the same ones over and over.
    std::size_t room = source.size();
    for (std::size_t i = 0; i < count && source.holds(at + 2 + i * kEntryBytes, kEntryBytes); ++i) {
        std::optional<Entry> entry = entryAt(source, at + 2 + i * kEntryBytes, room);
        if (entry) {
            room -= entry->value.size();
            directory.push_back(std::move(*entry));
        }
    }
    return directory;
}

const Entry* find(const Directory& directory, std::uint16_t tag) {
    const auto found = std::find_if(directory.begin(), directory.end(),
                                    [tag](const Entry& entry) { return entry.tag == tag; });
    return found == directory.end() ? nullptr : &*found;
}

std::uint32_t firstNumber(const Entry& entry) {
    return Source(entry.value.data(), entry.value.size()).number(0, kValueBytes);
}

void add(Bytes& bytes, std::uint32_t number, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    }
}

// What directories refer to lies at even places.
std::uint32_t placeAtEnd(Bytes& bytes) {
    bytes.resize(bytes.size() + bytes.size() % 2);
    return static_cast<std::uint32_t>(bytes.size());
}

// Returns the place of the directory.
std::uint32_t append(Bytes& tiff, Directory directory) {
    std::sort(directory.begin(), directory.end(),
              [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
    for (Entry& entry : directory) {
        if (entry.value.size() > kValueBytes) {
            const std::uint32_t place = placeAtEnd(tiff);
            tiff.insert(tiff.end(), entry.value.begin(), entry.value.end());
            entry.value.clear();
            add(entry.value, place, 4);
        }
        entry.value.resize(kValueBytes);
    }
    const std::uint32_t start = placeAtEnd(tiff);
    add(tiff, static_cast<std::uint32_t>(directory.size()), 2);
    for (const Entry& entry : directory) {
        add(tiff, entry.tag, 2);
        add(tiff, entry.type, 2);
        add(tiff, entry.count, 4);
        tiff.insert(tiff.end(), entry.value.begin(), entry.value.end());
    }
    add(tiff, 0, 4);  // no further directory
    return start;
}

// Nothing for files beyond 4 GB, which are of another form.
Directory mainDirectory(const Source& source) {
    constexpr std::uint32_t kUsualForm = 42;
    const bool isKnown = source.holds(0, kHeaderBytes) && source.number(2, 2) == kUsualForm;
    return isKnown ? directoryAt(source, source.number(4, 4)) : Directory();
}

// Of a file to be written again, which the library made in the order of this machine.
Directory mainDirectory(const Bytes& tiff) {
    return !tiff.empty() && tiff[0] == 'I' ? mainDirectory(Source(tiff.data(), tiff.size()))
                                           : Directory();
}

Bytes withMainDirectory(Bytes tiff, Directory directory) {
    const std::uint32_t place = append(tiff, std::move(directory));
    for (unsigned i = 0; i < 4; ++i) {
        tiff[4 + i] = static_cast<std::uint8_t>(place >> (8 * i));
    }
    return tiff;
}

// Files up to 4 GB and beyond differ in how many bytes counts and places have.
struct Layout {
    std::size_t firstPlaceAt;
    std::size_t placeBytes;
    std::size_t numberOfEntriesBytes;
    std::size_t entryBytes() const { return 4 + 2 * placeBytes; }
};
constexpr Layout kUsualLayout{4, 4, 2};
constexpr Layout kLargeLayout{8, 8, 8};

std::uint64_t placeAt(const Source& source, std::size_t at, std::size_t bytes) {
    if (bytes <= 4) {
        return source.number(at, bytes);
    }
    const std::uint64_t first = source.number(at, 4);
    const std::uint64_t second = source.number(at + 4, 4);
    return source.isBigEndian() ? first << 32U | second : second << 32U | first;
}

// Values of unknown types take nothing from the picture.
bool isValueInside(const Source& source, std::size_t entryAt, const Layout& layout) {
    const std::uint32_t type = source.number(entryAt + 2, 2);
    const std::uint64_t unit = type < std::size(kTypeBytes) ? kTypeBytes[type] : 0;
    const std::uint64_t count = placeAt(source, entryAt + 4, layout.placeBytes);
    if (unit == 0 || count <= layout.placeBytes / unit) {
        return true;
    }
    const std::uint64_t place = placeAt(source, entryAt + 4 + layout.placeBytes, layout.placeBytes);
    return count <= source.size() / unit && source.holds(place, count * unit);
}

// Pixels divided by a resolution, which is a rational number itself.
Entry lengthOf(std::uint16_t tag, int pixels, const Entry& resolution) {
    const Source parts(resolution.value.data(), resolution.value.size());
    std::uint64_t above = static_cast<std::uint64_t>(pixels) * parts.number(4, 4);
    std::uint64_t below = parts.number(0, 4);
    const std::uint64_t common = std::max<std::uint64_t>(1, std::gcd(above, below));
    above /= common;
    below /= common;
    for (; above > UINT32_MAX; above /= 2) {
        below /= 2;
    }
    Entry length{tag, kRational, 1, {}};
    add(length.value, static_cast<std::uint32_t>(above), 4);
    add(length.value, static_cast<std::uint32_t>(below), 4);
    return length;
}

void copyReferred(const Source& source, const Directory& from, std::uint16_t tag, Bytes& tiff,
                  Directory& to) {
    const Entry* const place = find(from, tag);
    if (place == nullptr || place->value.size() != kValueBytes) {
        return;
    }
    Directory copied = directoryAt(source, firstNumber(*place));
    copied.erase(std::remove_if(copied.begin(), copied.end(),
                                [](const Entry& entry) { return entry.tag == kInteroperability; }),
                 copied.end());
    Entry entry{tag, kLong, 1, {}};
    add(entry.value, append(tiff, std::move(copied)), 4);
    to.push_back(entry);
}

// Of a camera's notes, from the main directory of one file to that of another.
void copyNotes(const Source& source, Bytes& tiff, Directory& directory) {
    const Directory noted = mainDirectory(source);
    for (const std::uint16_t tag : kOfMainDirectory) {
        const Entry* const entry = find(noted, tag);
        if (entry != nullptr && find(directory, tag) == nullptr) {
            directory.push_back(*entry);
        }
    }
    for (const std::uint16_t tag : {kExif, kGps}) {
        copyReferred(source, noted, tag, tiff, directory);
    }
}

}  // namespace

bool isTiffCutOff(const Bytes& tiff) {
    const Source source(tiff.data(), tiff.size());
    constexpr std::uint32_t kLargeForm = 43;
    const bool isLarge = source.holds(0, kHeaderBytes) && source.number(2, 2) == kLargeForm;
    const Layout& layout = isLarge ? kLargeLayout : kUsualLayout;
    if (!source.holds(layout.firstPlaceAt, layout.placeBytes)) {
        return true;
    }
    const std::uint64_t start = placeAt(source, layout.firstPlaceAt, layout.placeBytes);
    if (!source.holds(start, layout.numberOfEntriesBytes)) {
        return true;
    }
    auto at = static_cast<std::size_t>(start);
    const std::uint64_t count = placeAt(source, at, layout.numberOfEntriesBytes);
    at += layout.numberOfEntriesBytes;
    if (count > source.size() / layout.entryBytes() ||
        !source.holds(at, count * layout.entryBytes())) {
        return true;
    }
    for (std::uint64_t i = 0; i < count; ++i, at += layout.entryBytes()) {
        if (!isValueInside(source, at, layout)) {
            return true;
        }
    }
    return false;
}

bool tiffTellsAlpha(const Bytes& tiff) {
    const Directory directory = mainDirectory(Source(tiff.data(), tiff.size()));
    const Entry* const further = find(directory, kExtraSamples);
    return further != nullptr && !further->value.empty() && further->value[0] != 0;
}

Bytes tiffWithPosition(Bytes tiff, cv::Point position) {
    Directory directory = mainDirectory(tiff);
    const Entry* const x = find(directory, kXResolution);
    const Entry* const y = find(directory, kXResolution + 1);
    if (x == nullptr || y == nullptr || x->type != kRational || y->type != kRational) {
        return tiff;
    }
    const Entry entries[] = {lengthOf(kXPosition, position.x, *x),
                             lengthOf(kYPosition, position.y, *y)};
    directory.insert(directory.end(), std::begin(entries), std::end(entries));
    return withMainDirectory(std::move(tiff), std::move(directory));
}

Bytes exifOfTiff(const Bytes& tiff) {
    Bytes block{'I', 'I', 42, 0, 0, 0, 0, 0};
    Directory directory;
    copyNotes(Source(tiff.data(), tiff.size()), block, directory);
    if (directory.empty()) {
        return {};
    }
    block = withMainDirectory(std::move(block), std::move(directory));
    block.insert(block.begin(), kExifStart.begin(), kExifStart.end());
    return block;
}

Bytes tiffWithExif(Bytes tiff, const Bytes& exif) {
    const bool isNamed = exif.size() >= kExifStart.size() &&
                         std::equal(kExifStart.begin(), kExifStart.end(), exif.begin());
    const std::size_t skipped = isNamed ? kExifStart.size() : 0;
    Directory directory = mainDirectory(tiff);
    if (directory.empty()) {
        return tiff;
    }
    copyNotes(Source(exif.data() + skipped, exif.size() - skipped), tiff, directory);
    return withMainDirectory(std::move(tiff), std::move(directory));
}
