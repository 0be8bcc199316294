// XMP is RDF in XML; a property stands as an attribute or as an element. The few that matter here are
// found in the text itself, so that everything else stays as it was written.
#include "pictures/files/whole_photograph.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char* kSpaces = " \t\r\n";
constexpr std::size_t kNone = std::string::npos;

bool isSpace(char letter) {
    return std::string(kSpaces).find(letter) != kNone;
}

// The names that a text gives a namespace. Usually it is one, the same in all files.
std::vector<std::string> prefixesOf(const std::string& text, const std::string& nameSpace) {
    std::vector<std::string> prefixes;
    const std::string start = "xmlns:";
    for (std::size_t at = text.find(start); at != kNone; at = text.find(start, at)) {
        at += start.size();
        const std::size_t end = text.find_first_of(" \t\r\n=", at);
        const std::size_t quote = text.find_first_not_of(" \t\r\n=", end);
        if (quote == kNone) {
            break;
        }
        const std::string prefix = text.substr(at, end - at);
        if (text.compare(quote + 1, nameSpace.size(), nameSpace) == 0 &&
            text.compare(quote + 1 + nameSpace.size(), 1, text, quote, 1) == 0 &&
            std::count(prefixes.begin(), prefixes.end(), prefix) == 0) {
            prefixes.push_back(prefix);
        }
    }
    return prefixes;
}

struct Span {
    std::size_t start;
    std::size_t end;
};

// The value of a property whose name ends at `at`; none for another property or for an end tag.
std::optional<Span> valueAt(const std::string& text, std::size_t nameStart, std::size_t at) {
    const char before = nameStart == 0 ? '\0' : text[nameStart - 1];
    const bool isElement = before == '<';
    const std::size_t next = text.find_first_not_of(kSpaces, at);
    if (next == kNone || (!isElement && (!isSpace(before) || text[next] != '='))) {
        return std::nullopt;
    }
    if (isElement) {
        const std::size_t tagEnd = text.find('>', at);
        const std::size_t end = text.find('<', at);
        const bool isThisName = next > at || text[next] == '>';
        return isThisName && tagEnd < end && end != kNone && text[tagEnd - 1] != '/'
                   ? std::optional<Span>({tagEnd + 1, end})
                   : std::nullopt;
    }
    const std::size_t quote = text.find_first_not_of(kSpaces, next + 1);
    const std::size_t end = quote == kNone ? kNone : text.find(text[quote], quote + 1);
    return end == kNone ? std::nullopt : std::optional<Span>({quote + 1, end});
}

void sayUpright(std::string& text, const std::string& prefix) {
    const std::string name = prefix + ":Orientation";
    for (std::size_t at = text.find(name); at != kNone; at = text.find(name, at + name.size())) {
        if (const std::optional<Span> value = valueAt(text, at, at + name.size())) {
            text.replace(value->start, value->end - value->start, "1");
        }
    }
}

// False when one of them has no end.
bool dropThumbnails(std::string& text, const std::string& prefix) {
    const std::string start = "<" + prefix + ":Thumbnails";
    const std::string endTag = "</" + prefix + ":Thumbnails";
    for (std::size_t at = text.find(start); at != kNone; at = text.find(start, at)) {
        const std::size_t tagEnd = text.find('>', at);
        const bool isEmpty = tagEnd != kNone && text[tagEnd - 1] == '/';
        const std::size_t end = isEmpty ? tagEnd : text.find('>', text.find(endTag, at));
        if (end == kNone) {
            return false;
        }
        text.erase(at, end + 1 - at);
    }
    return true;
}

std::size_t number(const Bytes& bytes, std::size_t at, std::size_t count) {
    std::size_t number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        number = number << 8U | bytes[at + i];
    }
    return number;
}

bool holds(const Bytes& bytes, std::size_t at, const std::string& text) {
    return at <= bytes.size() && text.size() <= bytes.size() - at &&
           std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

Bytes xmpOfCutOut(const Bytes& xmp) {
    constexpr std::size_t kWideStart = 4;  // one of the first bytes of UTF-16 and UTF-32 is 0
    const std::size_t looked = std::min(xmp.size(), kWideStart);
    if (std::count(xmp.begin(), xmp.begin() + static_cast<std::ptrdiff_t>(looked), 0) > 0) {
        return {};
    }
    std::string text(xmp.begin(), xmp.end());
    for (const std::string& prefix : prefixesOf(text, "http://ns.adobe.com/tiff/1.0/")) {
        sayUpright(text, prefix);
    }
    for (const std::string& prefix : prefixesOf(text, "http://ns.adobe.com/xap/1.0/")) {
        if (!dropThumbnails(text, prefix)) {
            return {};
        }
    }
    return {text.begin(), text.end()};
}

// A resource: "8BIM", a number of two bytes, a name with its length in front, four bytes of length, and
// so many bytes; name and bytes end at even places.
Bytes iptcOfCutOut(const Bytes& iptc) {
    constexpr std::size_t kKept[] = {0x0404, 0x040A, 0x040B};  // IPTC, rights reserved, address
    const std::string start("Photoshop 3.0\0", 14);
    const std::string mark = "8BIM";
    std::size_t at = holds(iptc, 0, start) ? start.size() : 0;
    if (at == 0 && !holds(iptc, 0, mark)) {
        return iptc;
    }
    const auto place = [&](std::size_t p) { return iptc.begin() + static_cast<std::ptrdiff_t>(p); };
    const std::size_t head = at;
    Bytes kept(iptc.begin(), place(head));
    while (holds(iptc, at, mark) && iptc.size() - at > 6) {
        const std::size_t name = at + 6;
        const std::size_t size = name + (iptc[name] + 2U) / 2 * 2;
        if (size + 4 > iptc.size() || number(iptc, size, 4) > iptc.size() - size - 4) {
            break;
        }
        const std::size_t length = number(iptc, size, 4);
        const std::size_t end = std::min(iptc.size(), size + 4 + (length + 1) / 2 * 2);
        if (std::count(std::begin(kKept), std::end(kKept), number(iptc, at + 4, 2)) > 0) {
            kept.insert(kept.end(), place(at), place(end));
        }
        at = end;
    }
    return kept.size() > head ? kept : Bytes();
}
