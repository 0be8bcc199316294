// Session files, and the folders of a data set.
#include <gtest/gtest.h>
#include <map>

#include "session/data_set.h"
#include "session/errors.h"
#include "session/session_file.h"

namespace {

const char* const kOldText = R"({"photo": "in/p.png",
 "steps": [
   {"op": "box", "box": [1, 2, 30, 40]},
   {"op": "brush-remove", "points": [[5, 6], [7, 6]], "radius": 3, "edit": true},
   {"op": "snap-loop-add", "points": [[7, 8]], "alpha": 0.25},
   {"op": "marks", "file": "in/m,\n.png"},
   {"op": "undo"}]}
)";

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
    EXPECT_EQ(file.steps[3].marksFile, "folder/in/m,\n.png");
    EXPECT_EQ(formatSessionFile(file, leave), kOldText);
}

TEST(SessionFile, NotesThePhotographThatItWasMadeOn) {
    SessionFile file;
    file.photo = "folder/p.png";
    const Photo noted = twoPixels();
    notePhoto(file, asImage(noted.words, noted.size()));
    const std::string text = formatSessionFile(file, leave);
    const std::string head =
        "{\"version\": 1,\n \"photo\": \"p.png\",\n \"width\": 2,\n \"height\": 1,";
    EXPECT_EQ(text.substr(0, head.size()), head);
    const SessionFile again = parseSessionFile(text, "s.json", enter);
    const auto complaintAbout = [&again](const Photo& photo) {
        return refusalOf(
            [&] { requireSamePhoto(again, asImage(photo.words, photo.size()), "s.json"); });
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

// Among steps as they were before there were kinds.
const char* const kTextWithKinds = R"({"version": 2,
 "photo": "p.png",
 "steps": [
   {"op": "box", "box": [1, 2, 30, 40]},
   {"op": "loop-add", "points": [[5, 6]], "correction": "whole-object", "passes": 10, "start": "inset"},
   {"op": "brush-remove", "points": [[5, 6]], "edit": true, "correction": "touch-up"},
   {"op": "marks", "file": "m.png", "correction": "whole-object", "passes": 1},
   {"op": "undo"}]}
)";

TEST(SessionFile, KeepsKindsOfCorrections) {
    const SessionFile file = parseSessionFile(kTextWithKinds, "s.json", enter);
    ASSERT_EQ(file.steps.size(), 5U);
    EXPECT_FALSE(file.steps[0].correction || file.steps[0].passes || file.steps[4].correction);
    EXPECT_EQ(file.steps[1].correction, Correction::kWholeObject);
    EXPECT_EQ(file.steps[1].passes, 10);
    EXPECT_EQ(file.steps[1].start, "inset");
    EXPECT_EQ(file.steps[2].correction, Correction::kTouchUp);
    EXPECT_FALSE(file.inSrgb || file.output.isMade() || file.steps[2].toBorder);
    EXPECT_EQ(formatSessionFile(file, leave), kTextWithKinds);
}

const char* const kTextWithOutput = R"({"version": 3,
 "photo": "p.png",
 "colours": "srgb",
 "output": {"edges": "hard", "edgeWidth": 2.5, "feather": 0.0, "smooth": 100, "fillHoles": 2147483647, "dropIslands": 0, "keepLargest": false},
 "steps": [
   {"op": "loop-remove", "points": [[5, 6]], "correction": "touch-up", "toBorder": true}]}
)";

TEST(SessionFile, KeepsHowTheResultIsDelivered) {
    const SessionFile file = parseSessionFile(kTextWithOutput, "s.json", enter);
    EXPECT_TRUE(file.inSrgb);
    EXPECT_TRUE(file.steps[0].toBorder);
    EXPECT_EQ(file.output.edges, Edges::kHard);
    EXPECT_EQ(file.output.edgeWidth, 2.5);
    EXPECT_EQ(file.output.smooth, 100);
    EXPECT_EQ(file.output.keepLargest, false);
    EXPECT_EQ(formatSessionFile(file, leave), kTextWithOutput);

    // Each choice stands by itself.
    OutputChoice later;
    later.edges = Edges::kSoft;
    later.keepLargest = true;
    const OutputChoice both = chosenOver(file.output, later);
    EXPECT_EQ(both.edges, Edges::kSoft);
    EXPECT_EQ(both.feather, 0.0);
    const MaskHygiene hygiene = hygieneOf(both);
    EXPECT_EQ(hygiene.smooth, 100);
    EXPECT_EQ(hygiene.fillHoles, INT32_MAX);
    EXPECT_TRUE(hygiene.keepLargest);
}

TEST(SessionFile, RefusesWhatItCannotMean) {
    const std::string digest(31, '0');
    const std::string kBox = R"("op": "box", "box": [1, 2, 3, 4], )";
    const std::string kDot = R"("op": "brush-add", "points": [[1, 1]], )";
    const std::string kWhole = R"("correction": "whole-object", )";
    const auto corrected = [](const std::string& step) {
        return R"({"version": 2, "photo": "p", "steps": [{)" + step + "}]}";
    };
    const auto delivered = [](const std::string& output) {
        return R"({"version": 3, "photo": "p", "output": {)" + output + R"(}, "steps": []})";
    };
    for (const auto& [text, says] : std::vector<std::pair<std::string, std::string>>{
             {R"({"version": 4, "photo": "p", "corrections": [], "steps": []})", "version 4"},
             {R"({"version": 0, "photo": "p", "steps": []})", "version 0"},
             {R"({"version": 2, "photo": "p", "output": {}, "steps": []})", "needs \"version\": 3"},
             {R"({"photo": "p", "colours": "srgb", "steps": []})", "needs \"version\": 3"},
             {R"({"version": 3, "photo": "p", "colours": "p3", "steps": []})", "there is srgb"},
             {delivered(R"("edges": "round")"), "output has the unknown edges"},
             {delivered(R"("feather": -0.1)"), "\"feather\" is not 0 to 100"},
             {delivered(R"("edgeWidth": 1e308)"), "\"edgeWidth\" is not 0 to 100"},
             {delivered(R"("smooth": 101)"), "\"smooth\" is not 0 to 100"},
             {delivered(R"("fillHoles": -1)"), "\"fillHoles\" is not 0 to 2147483647"},
             {delivered(R"("dropIslands": 1.5)"), "whole number"},
             {delivered(R"("keepLargest": 1)"), "neither true nor false"},
             {delivered(R"("soft": true)"), "output has a field \"soft\""},
             {corrected(kDot + R"("correction": "touch-up", "toBorder": true)"),
              "needs \"version\": 3"},
             {R"({"version": 3, "photo": "p", "steps": [{)" + kDot + R"("toBorder": true}]})",
              "\"toBorder\", which is for"},
             {R"({"photo": "p", "width": 5, "steps": []})", "lacks \"height\""},
             {R"({"photo": "p", "width": 5, "height": 0, "steps": []})", "sizes"},
             {R"({"photo": "p", "digest": ")" + digest + R"(", "steps": []})", "32 hexadecimal"},
             {R"({"photo": "p", "digest": ")" + digest + R"(F", "steps": []})", "32 hexadecimal"},
             {R"({"photo": "p", "steps": [{"op": "undo"}, {"op": "fly"}]})",
              "step 2 has the unknown"},
             {R"({"version": 1, "photo": "p", "steps": [{"op": "box", "correction": "touch-up"}]})",
              "needs \"version\": 2"},
             {R"({"photo": "p", "steps": [{"op": "undo", "passes": 1}]})", "needs \"version\": 2"},
             {corrected(R"("op": "redo", "correction": "touch-up")"), "does not belong"},
             {corrected(kDot + R"("correction": "mend")"), "touch-up, whole-object"},
             {corrected(kDot + R"("correction": "touch-up", "passes": 1)"), "\"passes\" without"},
             {corrected(kBox + R"("start": "whole")"), "\"start\" without"},
             {corrected(kDot + kWhole + R"("start": "whole")"), "boxes and"},
             {corrected(kBox + kWhole + R"("start": "centre")"), "middle-50, upright"},
             {corrected(kBox + kWhole + R"("passes": 0)"), "1 to 10"},
             {corrected(kBox + kWhole + R"("passes": 11)"), "1 to 10"},
             {corrected(kDot + kWhole + R"("edit": true)"), "\"edit\""},
             {R"({"photo": "p", "steps": [{"op": "undo", "radius": 1}]})", "does not belong"},
             {R"({"photo": "p", "steps": [{"op": "brush-add", "points": [[1, 1.5]]}]})", "whole"},
             {R"({"photo": "p", "steps": [)", "not a JSON document"}}) {
        const std::string refusal =
            refusalOf([&text = text] { parseSessionFile(text, "s.json", enter); });
        EXPECT_EQ(refusal.rfind("s.json", 0), 0U);
        EXPECT_NE(refusal.find(says), std::string::npos) << refusal;
    }
}

// A folder in memory; every picture is one pixel of its name's length.
class Folder : public DataFolder {
  public:
    explicit Folder(std::map<std::string, std::string> files) : m_files(std::move(files)) {}

    std::vector<std::string> fileNames() const override {
        std::vector<std::string> names;
        for (const auto& [name, content] : m_files) {
            names.insert(names.begin(), name);
        }
        return names;
    }
    std::optional<std::string> text(const std::string& file) const override {
        return m_files.count(file) == 0 ? std::nullopt : std::optional(m_files.at(file));
    }
    cv::Mat colourPicture(const std::string& file) const override { return picture(file, CV_8UC3); }
    cv::Mat greyPicture(const std::string& file) const override { return picture(file, CV_8UC1); }

  private:
    cv::Mat picture(const std::string& file, int type) const {
        const auto length = static_cast<double>(file.size());
        return m_files.count(file) == 0 ? cv::Mat() : cv::Mat(1, 1, type, cv::Scalar::all(length));
    }

    std::map<std::string, std::string> m_files;
};

TEST(DataSet, FindsPhotographsAndWhatBelongsToThem) {
    const Folder folder({{"b.png", ""},
                         {"a.jpg", ""},
                         {"a.gt.png", ""},
                         {"a.s2.png", ""},
                         {"a.box.txt", "10 20\n30 50"},
                         {"a.lasso.txt", "1 2\n3 4\n5 6\n"},
                         {"c.png", ""},
                         {"c.box.txt", "1 2 3"},
                         {"c.lasso.txt", "1 2 three 4"},
                         {"README.md", ""}});
    const std::vector<DataPhoto> photos = photosIn(folder);
    ASSERT_EQ(photos.size(), 3U);
    EXPECT_EQ(photos[0].name(), "a");
    EXPECT_EQ(photos[1].name(), "b");
    EXPECT_EQ(photos[0].image().at<cv::Vec3b>(0, 0)[2], 5);  // a.jpg
    EXPECT_EQ(photos[0].truth().at<uchar>(0, 0), 8);
    EXPECT_EQ(photos[0].scribbles("s2").at<uchar>(0, 0), 8);
    EXPECT_TRUE(photos[0].scribbles("s1").empty());
    EXPECT_EQ(photos[0].box(), cv::Rect(10, 20, 20, 30));
    EXPECT_EQ(photos[0].lasso(), (std::vector<cv::Point>{{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_TRUE(photos[1].box().empty());
    EXPECT_TRUE(photos[1].lasso().empty());
    EXPECT_THROW(photos[2].box(), UserError);
    EXPECT_THROW(photos[2].lasso(), UserError);
}

}  // namespace
