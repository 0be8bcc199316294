#include "session/session_file.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "session/errors.h"

namespace {

// As a person writes it; the program gives each value a line.
const char* const kOldText = R"({"photo": "in/p.png", "steps": [
    {"op": "box", "box": [1, 2, 30, 40]},
    {"op": "brush-remove", "points": [[5, 6]], "radius": 3, "edit": true},
    {"op": "snap-loop-add", "points": [[7, 8]], "alpha": 0.25},
    {"op": "marks", "file": "in/m.png"},
    {"op": "undo"}]})";

std::string enter(const std::string& name) {
    return "folder/" + name;
}
std::string leave(const std::string& name) {
    return name.substr(std::string("folder/").size());
}

template <typename Call>
std::string refusalOf(const Call& call) {
    try {
        call();
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
    EXPECT_EQ(formatSessionFile(file, leave),
              nlohmann::ordered_json::parse(kOldText).dump(1) + "\n");
}

TEST(SessionFile, NotesThePhotographThatItWasMadeOn) {
    SessionFile file;
    file.photo = "folder/p.png";
    notePhoto(file, twoPixels());
    const std::string text = formatSessionFile(file, leave);
    const std::string head =
        "{\n \"version\": 1,\n \"photo\": \"p.png\",\n \"width\": 2,\n \"height\": 1,";
    EXPECT_EQ(text.substr(0, head.size()), head);
    const SessionFile again = parseSessionFile(text, "s.json", enter);
    const auto complaintAbout = [&again](const Photo& photo) {
        return refusalOf([&] { requireSamePhoto(again, photo, "s.json"); });
    };
    EXPECT_EQ(complaintAbout(twoPixels()), "");
    const Photo upright{1, 2, twoPixels().words};
    EXPECT_NE(complaintAbout(upright).find("2 x 1 pixels and this one has 1 x 2"),
              std::string::npos);
    Photo changed = twoPixels();
    changed.words[0] &= 0xFFFFFFU;  // the engine does not see alpha
    EXPECT_EQ(complaintAbout(changed), "");
    changed.words[1] += 0x010000U;
    EXPECT_NE(complaintAbout(changed).find("other pixels"), std::string::npos);
}

// What `xxhsum -H2` says of the bytes 1 to 12.
TEST(SessionFile, DigestsAreOfBlueGreenAndRedRowByRow) {
    const Photo photo{2, 2, {0xFF030201U, 0xFF060504U, 0xFF090807U, 0xFF0C0B0AU}};
    EXPECT_EQ(digestOf(photo), "be3749deafac90b65b070b3f0db539ff");
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
        const std::string refusal =
            refusalOf([&text = text] { parseSessionFile(text, "s.json", enter); });
        EXPECT_EQ(refusal.rfind("s.json", 0), 0U);
        EXPECT_NE(refusal.find(says), std::string::npos) << refusal;
    }
}

}  // namespace
