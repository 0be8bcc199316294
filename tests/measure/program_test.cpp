#include <gtest/gtest.h>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "../cli/command.h"

namespace {

std::string encoded(const cv::Mat& image) {
    std::vector<std::uint8_t> bytes;
    cv::imencode(".png", image, bytes);
    return {bytes.begin(), bytes.end()};
}

cv::Mat trueMask(const Scene& scene) {
    cv::Mat truth(scene.height, scene.width, CV_8UC1);
    for (int i = 0; i < truth.rows * truth.cols; ++i) {
        truth.data[i] = scene.isObject(i % truth.cols, i / truth.cols) ? 255 : 0;
    }
    return truth;
}

TEST(MeasureProgram, LetsTheRobotCorrectEachMethod) {
    const Workplace place;
    place.write("photo.gt.png", encoded(trueMask(discScene())));
    place.write("photo.box.txt", "30 10 131 111\n");
    place.write("bare.png", place.read("photo.png"));
    const std::string robot =
        "segcore . --only photo,bare --robot --strokes 2 --csv all.csv --curves all.svg";
    const Outcome outcome = place.run(robot + " --json --contact-sheet sheet.png --masks .");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "segcore-measure: bare: skipped, as it has no true mask\n");
    const nlohmann::json document = nlohmann::json::parse(outcome.out);
    ASSERT_EQ(document["results"].size(), 9U);
    for (const nlohmann::json& result : document["results"]) {
        EXPECT_EQ(result["photograph"], "photo");
        EXPECT_LT(result["errorRate"], 0.02);
        EXPECT_GT(result["iou"], 0.85);
    }
    EXPECT_EQ(document["means"][2]["method"], "grab-cut");
    EXPECT_EQ(document["means"][2]["byStrokes"].size(), 3U);

    const std::string csv = place.read("all.csv");
    EXPECT_EQ(csv.substr(0, csv.find('\n')),
              "photograph,method,start,strokes,error,iou,milliseconds");
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 10);
    // Once more gives the same, but for the times.
    EXPECT_EQ(place
                  .run("cut -d, -f-6 all.csv >first; " + robot +
                       " >table; cut -d, -f-6 all.csv | cmp - first")
                  .code,
              0);
    EXPECT_EQ(place.image("sheet.png").size(), cv::Size(9 * 240, 256));
    EXPECT_EQ(place.image("photo.grab-cut+2.png").size(), cv::Size(160, 120));
    // Moved away from the photograph, nothing of the box is left.
    EXPECT_EQ(place.run("segcore . --only photo --robot --box-shift 0,-120").err.substr(0, 45),
              "segcore-measure: photo: skipped, as it has no");
    EXPECT_EQ(place.run("grep -c '<polyline' all.svg").out, "9\n");
    EXPECT_EQ(place.run("grep -c 'mean of 1 .* [012] ' table").out, "9\n");
}

TEST(MeasureProgram, RefusesWrongUse) {
    const Workplace place;
    for (const char* options :
         {"--strokes 2", "--robot --case box", "--robot --from elsewhere", "--robot --strokes -1",
          "--robot --curves all.gif", "--robot --box-shift 3", "--robot --method guess",
          "--robot --from loop --box-shift 3,-3", "--robot --box-shift -2147483648,0"}) {
        EXPECT_EQ(place.run("segcore " + std::string(options) + " .").code, 2) << options;
    }
    EXPECT_TRUE(place.isUntouched());
}

}  // namespace
