#include "session/session_file.h"

#include <gtest/gtest.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdio>

#include "session/errors.h"

namespace {

const char* const kOldText = R"({
 "photo": "in/p.png",
 "steps": [
  {
   "op": "box",
   "box": [
    1,
    2,
    30,
    40
   ]
  },
  {
   "op": "brush-remove",
   "points": [
    [
     5,
     6
    ]
   ],
   "radius": 3,
   "edit": true
  },
  {
   "op": "snap-loop-add",
   "points": [],
   "alpha": 0.25
  },
  {
   "op": "marks",
   "file": "in/m.png"
  },
  {
   "op": "undo"
  }
 ]
}
)";

std::string enter(const std::string& name) {
    return "folder/" + name;
}
std::string leave(const std::string& name) {
    return name.substr(std::string("folder/").size());
}

std::string without(std::string text, const std::string& part) {
    return text.erase(text.find(part), part.size());
}

std::string refusalOf(const std::string& text) {
    try {
        parseSessionFile(text, "s.json", enter);
    } catch (const UserError& error) {
        return error.what();
    }
    return "";
}

Photo twoPixels() {
    return {2, 1, {0xFF030201U, 0xFF060504U}};
}

TEST(SessionFile, KeepsItsFormWithoutAPhotographNoted) {
    const SessionFile file = parseSessionFile(kOldText, "s.json", enter);
    EXPECT_EQ(file.photo, "folder/in/p.png");
    ASSERT_EQ(file.steps.size(), 5U);
    EXPECT_EQ(file.steps[0].points, (std::vector<cv::Point>{{1, 2}, {30, 40}}));
    EXPECT_EQ(file.steps[1].operation, Operation::kBrushRemove);
    EXPECT_EQ(file.steps[1].radius, 3);
    EXPECT_TRUE(file.steps[1].edit);
    EXPECT_EQ(file.steps[2].alpha, 0.25);
    EXPECT_EQ(file.steps[3].marksFile, "folder/in/m.png");
    EXPECT_EQ(file.steps[4].operation, Operation::kUndo);
    EXPECT_EQ(formatSessionFile(file, leave), without(kOldText, "   \"points\": [],\n"));
}

TEST(SessionFile, NotesThePhotographThatItWasMadeOn) {
    SessionFile file;
    file.photo = "folder/p.png";
    notePhoto(file, twoPixels());
    const std::string text = formatSessionFile(file, leave);
    EXPECT_EQ(
        text.rfind("{\n \"version\": 1,\n \"photo\": \"p.png\",\n \"width\": 2,\n \"height\": 1,",
                   0),
        0U)
        << text;
    const SessionFile again = parseSessionFile(text, "s.json", enter);
    EXPECT_NO_THROW(requireSamePhoto(again, twoPixels(), "s.json"));

    const auto complaintAbout = [&again](const Photo& photo) -> std::string {
        try {
            requireSamePhoto(again, photo, "s.json");
        } catch (const UserError& error) {
            return error.what();
        }
        return "";
    };
    const Photo upright{1, 2, twoPixels().words};
    EXPECT_NE(complaintAbout(upright).find("2 x 1 pixels and this one has 1 x 2"),
              std::string::npos);
    Photo redder = twoPixels();
    redder.words[1] += 0x010000U;
    EXPECT_NE(complaintAbout(redder).find("other pixels"), std::string::npos);
    Photo transparent = twoPixels();
    transparent.words[0] &= 0xFFFFFFU;  // the engine does not see alpha
    EXPECT_EQ(complaintAbout(transparent), "");
}

TEST(SessionFile, DigestsAreOfBlueGreenAndRedRowByRow) {
    const unsigned char bytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const XXH128_hash_t hash = XXH3_128bits(bytes, sizeof bytes);
    char expected[33];
    std::snprintf(expected, sizeof expected, "%016llx%016llx",
                  static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    const Photo photo{2, 2, {0xFF030201U, 0xFF060504U, 0xFF090807U, 0xFF0C0B0AU}};
    EXPECT_EQ(digestOf(photo), expected);
}

TEST(SessionFile, RefusesWhatItCannotMean) {
    const std::string digest(31, '0');
    for (const auto& [text, says] : std::vector<std::pair<std::string, std::string>>{
             {R"({"version": 2, "photo": "p", "corrections": [], "steps": []})", "version 2"},
             {R"({"photo": "p", "width": 5, "steps": []})", "lacks \"height\""},
             {R"({"photo": "p", "width": 5, "height": 0, "steps": []})", "sizes"},
             {R"({"photo": "p", "digest": ")" + digest + R"(", "steps": []})", "32 hexadecimal"},
             {R"({"photo": "p", "digest": ")" + digest + R"(F", "steps": []})", "32 hexadecimal"},
             {R"({"photo": "p", "steps": [{"op": "undo"}, {"op": "fly"}]})",
              "step 2 has the unknown"},
             {R"({"photo": "p", "steps": [{"op": "undo", "radius": 1}]})", "does not belong"},
             {R"({"photo": "p", "steps": [{"op": "brush-add", "points": [[1, 1.5]]}]})", "whole"},
             {R"({"photo": "p", "steps": [)", "not a JSON document"}}) {
        EXPECT_NE(refusalOf(text).find(says), std::string::npos) << refusalOf(text);
        EXPECT_EQ(refusalOf(text).rfind("s.json", 0), 0U);
    }
}

}  // namespace
