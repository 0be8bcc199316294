#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "command.h"
#include "session/region_start.h"
#include "support/filled_contours.h"
#include "support/host_session.h"

namespace {

using Json = nlohmann::json;

cv::Mat filled(const Json& outline) {
    std::vector<std::vector<cv::Point>> contours;
    for (const Json& contour : outline["contours"]) {
        contours.emplace_back();
        for (const Json& pair : contour) {
            contours.back().emplace_back(pair[0], pair[1]);
        }
    }
    return filledEvenOdd(contours, {outline["width"], outline["height"]});
}

// The same contours as a path.
std::string pathOf(const Json& outline) {
    std::ostringstream path;
    for (const Json& contour : outline["contours"]) {
        path << 'M' << contour[0][0] << ' ' << contour[0][1];
        for (std::size_t i = 1; i < contour.size(); ++i) {
            const bool level = contour[i][1] == contour[i - 1][1];
            path << (level ? 'H' : 'V') << contour[i][level ? 0 : 1];
        }
        path << 'Z';
    }
    return path.str();
}

TEST(Outputs, AreWhatTheLibraryDelivers) {
    const Workplace place;
    const Outcome outcome = place.run(
        "l() { segcut --passes 1 --loop-add 30,10 130,20 '120,110 25,100' \"$@\"; }\n"
        "l --preview p.png && l --mask m.png --cutout c.png --edges hard --stats json");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    std::vector<std::string> stages;
    const Json stats = Json::parse(outcome.out);
    for (const Json& stage : stats["stages"]) {
        stages.push_back(stage["stage"]);
    }
    EXPECT_EQ(stages,
              (std::vector<std::string>{"read photograph", "take photograph", "step 1, loop-add",
                                        "colours of the object", "write outputs"}));
    HostSession session(discScene());
    session.loop({30, 10, 130, 20, 120, 110, 25, 100});
    const cv::Mat mask = programMask(session.mask, {session.width, session.height});
    EXPECT_TRUE(same(place.image("m.png"), mask));

    cv::Mat cutout = cv::Mat::zeros(mask.size(), CV_8UC4);
    cv::Mat(mask.size(), CV_8UC4, session.photo.data()).copyTo(cutout, mask);
    EXPECT_TRUE(same(place.image("c.png"), cutout));

    cv::Mat preview;
    cv::cvtColor(cv::Mat(mask.size(), CV_8UC4, session.blended.data()), preview,
                 cv::COLOR_BGRA2BGR);
    EXPECT_TRUE(same(place.image("p.png"), preview));
}

// An object in two corners of the photograph, with a hole that holds an island.
TEST(Outlines, FillToTheMask) {
    const Workplace place;
    place.write("session.json", R"({"photo": "photo.png", "steps": [
        {"op": "box", "box": [30, 10, 130, 110]},
        {"op": "loop-add", "points": [[0, 0], [9, 0], [9, 9], [0, 9]], "edit": true},
        {"op": "loop-add", "points": [[150, 100], [159, 100], [159, 119], [150, 119]],
         "edit": true},
        {"op": "brush-remove", "points": [[80, 60]], "radius": 9, "edit": true},
        {"op": "brush-add", "points": [[80, 60]], "radius": 2, "edit": true}]})");
    const Outcome outcome =
        place.run("segcore replay session.json --mask m.png --json o.json --svg o.svg");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const Json outline = Json::parse(place.read("o.json"));
    EXPECT_TRUE(same(filled(outline), place.image("m.png")));
    const Json parents = outline["parents"];
    EXPECT_EQ(std::count(parents.begin(), parents.end(), -1), 3);
    EXPECT_EQ(parents.size(), 5U);
    const std::string svg = place.read("o.svg");
    for (const std::string& part :
         {" d=\"" + pathOf(outline) + "\"", std::string("fill-rule=\"evenodd\""),
          std::string("viewBox=\"0 0 160 120\"")}) {
        EXPECT_NE(svg.find(part), std::string::npos) << svg;
    }
}

// A disc with a hole of 49 pixels, a corner of 100 and a line of two rows to be left out.
const char* const kSpoiled = R"({"version": 3, "photo": "photo.png",
    "output": {"dropIslands": 99, "keepLargest": true}, "steps": [
        {"op": "box", "box": [30, 10, 130, 110]},
        {"op": "loop-add", "points": [[0, 0], [9, 0], [9, 9], [0, 9]], "edit": true},
        {"op": "loop-remove", "points": [[70, 60], [76, 60], [76, 66], [70, 66]], "edit": true},
        {"op": "loop-add", "points": [[120, 20], [159, 20], [159, 21], [120, 21]], "edit": true}]})";

TEST(Tidying, IsOfAllThatIsDelivered) {
    const Workplace place;
    place.write("s.json", kSpoiled);
    const Outcome outcome = place.run(
        "set -e; segcore replay s.json --no-keep-largest --fill-holes 49 --mask m.png --json "
        "o.json "
        "--cutout c.png --preview p.png --dump-steps steps --save-session again.json\n"
        "segcore replay again.json --preview again.png; cmp p.png again.png\n"
        "segcore replay s.json --fill-holes 9 --smooth 3 --mask largest.png --preview l.png\n"
        "segcore replay s.json --drop-islands 0 --no-keep-largest --mask raw.png");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const cv::Mat raw = place.image("raw.png");
    EXPECT_TRUE(same(raw, place.image("steps/step-004.png")));
    // The line of 80 pixels goes, the corner of 100 stays, the hole is filled.
    cv::Mat expected = raw.clone();
    expected(cv::Rect(120, 20, 40, 2)).setTo(0);
    expected(cv::Rect(70, 60, 7, 7)).setTo(255);
    EXPECT_TRUE(same(place.image("m.png"), expected));
    EXPECT_TRUE(same(filled(Json::parse(place.read("o.json"))), expected));
    std::vector<cv::Mat> channels;
    cv::split(place.image("c.png"), channels);
    EXPECT_TRUE(same(channels[3], expected));
    // The outline runs around the corner and not around the hole.
    cv::Mat painted;
    cv::absdiff(place.image("p.png"), place.image("l.png"), painted);
    EXPECT_GT(cv::countNonZero(painted(cv::Rect(0, 0, 12, 12)).reshape(1)), 0);
    EXPECT_EQ(cv::countNonZero(place.image("largest.png")(cv::Rect(0, 0, 12, 12))), 0);
    EXPECT_EQ(place.image("largest.png").at<std::uint8_t>(63, 73), 0);
    const Json output = Json::parse(place.read("again.json"))["output"];
    EXPECT_EQ(output, Json({{"dropIslands", 99}, {"keepLargest", false}, {"fillHoles", 49}}));
}

TEST(PaintedMarks, AreRequestsOfTheirCodes) {
    const Workplace place;
    cv::Mat colours = cv::Mat::zeros(discScene().height, discScene().width, CV_8UC4);
    cv::Mat codes = cv::Mat::zeros(colours.size(), CV_8UC1);
    const auto paint = [&](const cv::Rect& area, const cv::Scalar& colour, int code) {
        colours(area).setTo(colour);
        codes(area).setTo(code);
    };
    paint({30, 10, 100, 100}, {255, 0, 0, 255}, SEGCORE_MARK_CANDIDATE);
    paint({70, 50, 20, 20}, {0, 255, 0, 255}, SEGCORE_MARK_OBJECT);
    paint({32, 12, 90, 4}, {0, 0, 255, 255}, SEGCORE_MARK_BACKGROUND);
    for (const auto& [name, image] : {std::pair{"colours.png", colours}, {"codes.png", codes}}) {
        place.write(name, encoded(image, ".png"));
        place.run(std::string("segcore cut - <photo.png --touch-up --marks ") + name +
                  " --mask - >m-" + name);
    }
    const cv::Mat mask = place.image("m-colours.png");
    EXPECT_TRUE(same(place.image("m-codes.png"), mask));

    HostSession session(discScene());
    const std::vector<int> markers(codes.begin<std::uint8_t>(), codes.end<std::uint8_t>());
    session.request({30, 10, 129, 10, 129, 109, 30, 109}, markers, SEGCORE_LOOP_ADD);
    EXPECT_TRUE(same(mask, programMask(session.mask, mask.size())));
}

TEST(PaintedMarks, MayHaveSoftEdgesAndTracesOfJpeg) {
    const Workplace place;
    for (const auto& [ground, ending] : {std::pair{cv::Scalar::all(255), ".jpg"},
                                         {cv::Scalar::all(128), ".jpg"},
                                         {cv::Scalar::all(0), ".png"}}) {
        cv::Mat image(discScene().height, discScene().width, CV_8UC4, ground);
        cv::line(image, {60, 60}, {100, 70}, {0, 255, 0, 255}, 3, cv::LINE_AA);
        cv::line(image, {5, 5}, {150, 8}, {0, 0, 255, 255}, 3, cv::LINE_AA);
        cv::GaussianBlur(image, image, {}, 0.7);
        std::vector<std::uint8_t> bytes;
        cv::imencode(ending, image, bytes,
                     ending == std::string(".jpg") ? std::vector<int>{cv::IMWRITE_JPEG_QUALITY, 50}
                                                   : std::vector<int>());
        place.write("marks", {bytes.begin(), bytes.end()});
        const Outcome outcome = place.run("segcut --mask m.png --marks marks");
        EXPECT_EQ(outcome.code, 0) << ground << ending << ": " << outcome.err;
    }
}

TEST(Snap, GoesStraightWhereOnlyLengthCounts) {
    const Outcome snapped = Workplace().run(
        "segcore snap photo.png --from 20,60 --to 110,60 110,20 --alpha 1 --json -");
    EXPECT_EQ(Json::parse(snapped.out)["path"], Json({{20, 60}, {110, 60}, {110, 20}}));
}

TEST(Replay, RepeatsASavedSession) {
    const Workplace place;
    const Outcome outcome = place.run(
        "mkdir kept && s=(--snap-alpha 0.2 --snap-loop-add 40,20 120,20 120,100 40,100)\n"
        "r=(--touch-up --brush-radius 3 --brush-remove 46,60 56,60 --undo --redo)\n"
        "segcut ${s[@]} ${r[@]} --mask cut.png --save-session kept/s.json &&\n"
        "segcore replay kept/s.json --mask replayed.png --dump-steps steps/ &&\n"
        "segcore replay - --photo photo.png --mask piped.png <kept/s.json &&\n"
        "segcut ${s[@]} --mask - --save-session old.json >/dev/null &&\n"
        "segcut --session old.json ${r[@]} --mask continued.png --save-session kept/again.json &&\n"
        "cmp kept/s.json kept/again.json");
    ASSERT_EQ(outcome.code, 0) << outcome.out << outcome.err;
    const cv::Mat cut = place.image("cut.png");
    for (const char* name : {"replayed.png", "piped.png", "continued.png", "steps/step-002.png",
                             "steps/step-004.png"}) {
        EXPECT_TRUE(same(place.image(name), cut)) << name;
    }
    EXPECT_TRUE(same(place.image("steps/step-003.png"), place.image("steps/step-001.png")));
    // The brush bites into the disc's left edge, at (50, 60).
    EXPECT_EQ(cv::countNonZero(cut(cv::Rect(46, 60, 11, 1))), 0);
    EXPECT_EQ(cut.at<std::uint8_t>(60, 80), 255);
}

std::vector<std::string> kindsIn(const std::string& session) {
    std::vector<std::string> kinds;
    const Json document = Json::parse(session);
    for (const Json& step : document["steps"]) {
        kinds.push_back(step.value("correction", ""));
    }
    return kinds;
}

TEST(Replay, RepeatsCorrectionsAsTheyWereMade) {
    const Workplace place;
    place.write("plain.json", R"({"version": 1, "photo": "photo.png", "steps": [
        {"op": "box", "box": [30, 10, 130, 110]}]})");
    const Outcome outcome = place.run(
        "set -e; marks=(--brush-remove 46,60 56,60 --touch-up --brush-remove 80,60 90,60 --undo "
        "--redo --usual --brush-add 70,60 --loop-add 70,50 100,50 100,70 --passes 2 --whole-object "
        "--loop-remove 60,80 90,80 90,110)\n"
        "saved() { \"${@:2}\" --mask $1.png --save-session $1.json\n"
        "segcore replay $1.json --mask again.png --save-session again.json\n"
        "cmp $1.png again.png; cmp $1.json again.json; }\n"
        "saved new boxed \"${marks[@]}\"; saved old segcut --session plain.json \"${marks[@]}\"\n"
        "saved one segcut --passes 1 --box 30,10,130,110\n"
        "segcore replay plain.json --mask plain.png; cmp plain.png one.png\n"
        "saved short segcore cut '" SEGCORE_SAMPLES
        "/coffee.png' --time-budget 1e-9 "
        "--box 70,14,486,390");
    ASSERT_EQ(outcome.code, 0) << outcome.out << outcome.err;
    std::vector<std::string> kinds{"whole-object", "whole-object", "touch-up",    "", "",
                                   "whole-object", "touch-up",     "whole-object"};
    EXPECT_EQ(kindsIn(place.read("new.json")), kinds);
    kinds[0] = "";
    EXPECT_EQ(kindsIn(place.read("old.json")), kinds);
    // Where there is no time to try others, the first start is taken.
    const Json hurried = Json::parse(place.read("short.json"))["steps"][0];
    EXPECT_EQ(hurried["start"], kBoxStarts.front().name);
    EXPECT_EQ(hurried["passes"], 1);
}

}  // namespace
