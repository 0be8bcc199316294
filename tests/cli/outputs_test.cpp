#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "command.h"
#include "interface/segmentation_core.h"
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

// The contours of a path of M, H, V and Z alone.
Json contoursOfPath(const std::string& svg) {
    const std::size_t start = svg.find(" d=\"") + 4;
    std::istringstream path(svg.substr(start, svg.find('"', start) - start));
    Json contours = Json::array();
    cv::Point at;
    for (char command = 0; path >> command;) {
        switch (command) {
            case 'M':
                path >> at.x >> at.y;
                contours.push_back(Json::array());
                break;
            case 'H':
                path >> at.x;
                break;
            case 'V':
                path >> at.y;
                break;
            default:
                EXPECT_EQ(command, 'Z');
                continue;
        }
        contours.back().push_back({at.x, at.y});
    }
    return contours;
}

TEST(Outputs, AreWhatTheLibraryDelivers) {
    const Workplace place;
    const Outcome outcome = place.run(
        "segcore cut photo.png --loop-add 30,10 130,20 '120,110 25,100' "
        "--mask m.png --cutout c.png --preview p.png --json o.json --svg o.svg --stats json");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    std::vector<std::string> stages;
    const Json stats = Json::parse(outcome.out);
    for (const Json& stage : stats["stages"]) {
        stages.push_back(stage["stage"]);
    }
    EXPECT_EQ(stages,
              (std::vector<std::string>{"read photograph", "set photograph", "prepare engine",
                                        "step 1, loop-add", "write outputs"}));
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

    EXPECT_TRUE(same(filled(Json::parse(place.read("o.json"))), mask));
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
    const Json disc = outline["parents"];
    EXPECT_EQ(std::count(disc.begin(), disc.end(), -1), 3);
    EXPECT_EQ(disc.size(), 5U);
    const std::string svg = place.read("o.svg");
    EXPECT_EQ(contoursOfPath(svg), outline["contours"]);
    EXPECT_NE(svg.find("viewBox=\"0 0 160 120\""), std::string::npos);
    EXPECT_NE(svg.find("fill-rule=\"evenodd\""), std::string::npos);
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
        std::vector<std::uint8_t> png;
        cv::imencode(".png", image, png);
        place.write(name, {png.begin(), png.end()});
        place.run(std::string("segcore cut - <photo.png --marks ") + name + " --mask - >m-" + name);
    }
    const cv::Mat mask = place.image("m-colours.png");
    EXPECT_TRUE(same(place.image("m-codes.png"), mask));

    HostSession session(discScene());
    const std::vector<int> markers(codes.begin<std::uint8_t>(), codes.end<std::uint8_t>());
    session.request({30, 10, 129, 10, 129, 109, 30, 109}, markers, SEGCORE_LOOP_ADD);
    EXPECT_TRUE(same(mask, programMask(session.mask, mask.size())));
}

TEST(Box, MayEndAtThePhotographsSize) {
    const Workplace place;
    place.run("segcore cut photo.png --box 30,10,160,120 --mask size.png");
    place.run("segcore cut photo.png --box 30,10,159,119 --mask last.png");
    EXPECT_TRUE(same(place.image("size.png"), place.image("last.png")));
    EXPECT_EQ(place.image("size.png").size(), cv::Size(160, 120));
}

TEST(Snap, GoesStraightWhereOnlyLengthCounts) {
    const Outcome snapped = Workplace().run(
        "segcore snap photo.png --from 20,60 --to 110,60 110,20 --alpha 1 --json -");
    EXPECT_EQ(Json::parse(snapped.out)["path"], Json({{20, 60}, {110, 60}, {110, 20}}));
}

TEST(Replay, EditsTheMaskAsMarked) {
    const Workplace place;
    place.write("session.json", R"({"photo": "photo.png", "steps": [
        {"op": "box", "box": [30, 10, 130, 110]},
        {"op": "brush-remove", "points": [[80, 60]], "radius": 6, "edit": true},
        {"op": "loop-add", "points": [[2, 2], [12, 2], [12, 12], [2, 12]], "edit": true},
        {"op": "undo"},
        {"op": "redo"}]})");
    const Outcome outcome = place.run("segcore replay session.json --dump-steps steps/");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const cv::Mat box = place.image("steps/step-001.png");
    const cv::Mat hole = place.image("steps/step-002.png");
    const cv::Mat corner = place.image("steps/step-003.png");
    // How the disc's edge is drawn is left open.
    cv::Mat inside = cv::Mat::zeros(box.size(), CV_8UC1);
    cv::circle(inside, {80, 60}, 5, cv::Scalar(255), cv::FILLED);
    cv::Mat outside(box.size(), CV_8UC1, cv::Scalar(255));
    cv::circle(outside, {80, 60}, 7, cv::Scalar(0), cv::FILLED);
    EXPECT_EQ(cv::countNonZero(hole & inside), 0);
    EXPECT_TRUE(same(hole & outside, box & outside));
    cv::Mat expected = hole.clone();
    expected(cv::Rect(2, 2, 11, 11)) = 255;
    EXPECT_TRUE(same(corner, expected));
    EXPECT_TRUE(same(place.image("steps/step-004.png"), hole));
    EXPECT_TRUE(same(place.image("steps/step-005.png"), corner));
}

TEST(Replay, RepeatsASavedSession) {
    const Workplace place;
    const Outcome outcome = place.run(
        "mkdir kept && segcore cut photo.png --snap-alpha 0.2 --snap-loop-add 40,20 120,20 120,100 "
        "40,100 --brush-radius 3 --brush-remove 46,60 56,60 --undo --redo --mask cut.png "
        "--save-session kept/session.json && segcore replay kept/session.json --mask replayed.png "
        "&& segcore replay - --photo photo.png --mask piped.png <kept/session.json");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const cv::Mat cut = place.image("cut.png");
    EXPECT_TRUE(same(place.image("replayed.png"), cut));
    EXPECT_TRUE(same(place.image("piped.png"), cut));
    const Outcome continued = place.run(
        "segcore cut photo.png --snap-alpha 0.2 --snap-loop-add 40,20 120,20 120,100 40,100 --mask "
        "- --save-session old.json >/dev/null && segcore cut photo.png --session old.json "
        "--brush-radius 3 --brush-remove 46,60 56,60 --undo --redo --mask continued.png "
        "--save-session kept/again.json && cmp kept/session.json kept/again.json");
    EXPECT_EQ(continued.code, 0) << continued.out << continued.err;
    EXPECT_TRUE(same(place.image("continued.png"), cut));
    // The brush bites into the disc's left edge, at (50, 60).
    EXPECT_EQ(cv::countNonZero(cut(cv::Rect(46, 60, 11, 1))), 0);
    EXPECT_EQ(cut.at<std::uint8_t>(60, 80), 255);
}

}  // namespace
