#include "measure/robot_summary.h"

#include <gtest/gtest.h>

namespace {

std::vector<RobotResult> courseOf(const std::string& photo, bool large,
                                  const std::vector<double>& ious) {
    std::vector<RobotResult> course;
    for (std::size_t i = 0; i < ious.size(); ++i) {
        RobotResult result;
        result.photo = photo;
        result.method = "grab-cut";
        result.large = large;
        result.strokes = static_cast<int>(i);
        result.score = {1.0 - ious[i], ious[i]};
        result.milliseconds = 100.0 * ious[i];
        course.push_back(result);
    }
    return course;
}

TEST(RobotSummary, CountsInteractionsAndKeepsLargePhotographsApart) {
    std::vector<RobotResult> results = courseOf("a", false, {0.8, 0.86, 0.96});
    for (const auto& course :
         {courseOf("big", true, {0.5, 0.5, 0.5}), courseOf("b", false, {0.5, 0.7, 0.92})}) {
        results.insert(results.end(), course.begin(), course.end());
    }
    results[2].milliseconds.reset();  // nothing was left to paint in a
    RobotOptions options;
    options.strokes = 2;
    const std::vector<MethodSummary> summaries = summariesOf(results, options);
    ASSERT_EQ(summaries.size(), 2U);
    EXPECT_FALSE(summaries[0].large);
    EXPECT_EQ(summaries[0].photos, 2);
    EXPECT_DOUBLE_EQ(summaries[0].byStrokes[1].iou, 0.78);
    EXPECT_DOUBLE_EQ(summaries[0].byStrokes[2].errorRate, 0.06);
    EXPECT_DOUBLE_EQ(*summaries[0].byStrokes[2].milliseconds, 92.0);
    // The box counts: 2 and 3 to 85 %, 3 and 3 to 90 %, and b never comes to 95 %.
    EXPECT_DOUBLE_EQ(summaries[0].interactions[0].mean, 2.5);
    EXPECT_DOUBLE_EQ(summaries[0].interactions[1].mean, 3.0);
    EXPECT_DOUBLE_EQ(summaries[0].interactions[2].mean, 6.5);
    EXPECT_EQ(summaries[0].interactions[2].failures, 1);
    EXPECT_TRUE(summaries[1].large);
    EXPECT_EQ(summaries[1].interactions[0].failures, 1);

    options.start = RobotStart::kNothing;
    EXPECT_DOUBLE_EQ(summariesOf(results, options)[0].interactions[0].mean, 1.5);
    options.strokes = 30;  // a success may then take more than ten
    EXPECT_EQ(failureCountsAs(options), 31);
}

}  // namespace
