#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "command.h"

namespace {

cv::Mat sceneOf(const Workplace& place) {
    cv::Mat scene;
    cv::cvtColor(place.image("photo.png"), scene, cv::COLOR_BGRA2BGR);
    return scene;
}

const char* const kCut = " --box 30,10,130,110 --mask m.png";

class Damaged : public testing::TestWithParam<const char*> {
  protected:
    Damaged() : m_whole(encoded(sceneOf(m_place), GetParam())) {}

    Outcome cut(const std::string& bytes, const std::string& options = "") const {
        m_place.write("damaged", bytes);
        return m_place.run("segcore cut damaged" + options + kCut);
    }

    const Workplace m_place;
    const std::string m_whole;
};

TEST_P(Damaged, IsRefusedWhereverItIsCutOff) {
    EXPECT_EQ(cut(m_whole).code, 0);
    const std::size_t size = m_whole.size();
    for (const std::size_t kept : {size - 1, size - 9, size / 2, size / 20, std::size_t{30}}) {
        const Outcome outcome = cut(m_whole.substr(0, kept));
        EXPECT_EQ(outcome.code, 1) << kept;
        const bool isJpeg = std::string(GetParam()) == ".jpg";
        for (const char* says : {isJpeg ? "damaged is damaged (Premature end"
                                        : "damaged is damaged (the file ends early",
                                 "--accept-damaged"}) {
            EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;
        }
    }
}

TEST_P(Damaged, GoesOnWithWhatThereIs) {
    // Three quarters of the file show the disc, save for what a file from the bottom up begins with.
    const Outcome outcome = cut(m_whole.substr(0, m_whole.size() * 3 / 4), " --accept-damaged");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const cv::Mat mask = m_place.image("m.png");
    ASSERT_EQ(mask.size(), cv::Size(160, 120));
    EXPECT_EQ(mask.at<std::uint8_t>(60, 80), 255);
    EXPECT_EQ(mask.at<std::uint8_t>(60, 10), 0);
    EXPECT_EQ(cut("no picture", " --accept-damaged").code, 1);
}

INSTANTIATE_TEST_SUITE_P(All, Damaged, testing::Values(".png", ".jpg", ".bmp"));

// Their hundred shared libraries would be loaded at every start.
TEST(StartUp, LoadsNoPictureLibraries) {
    const std::string linked = "readelf -d '" SEGCORE_PROGRAM "' | grep NEEDED";
    const Workplace place;
    EXPECT_EQ(place.run(linked + " | grep -c opencv").out, "2\n");
    EXPECT_EQ(place.run(linked + " | grep -E 'vips|glib|lcms|imgcodecs|jpeg|png'").out, "");
}

TEST(CheckSums, AreLookedAt) {
    const Workplace place;
    std::string png = place.read("photo.png");
    png[png.size() / 2] = static_cast<char>(png[png.size() / 2] ^ 0x10);
    place.write("pixels.png", png);
    // A note of four bytes before the last part, with a check sum that is none.
    png = place.read("photo.png");
    png.insert(png.size() - 12, std::string("\0\0\0\4tEXtA\0bcSUM!", 16));
    place.write("note.png", png);
    for (const auto& [name, part] : {std::pair{"pixels.png", "IDAT"}, {"note.png", "tEXt"}}) {
        const Outcome outcome = place.run(std::string("segcore cut ") + name + kCut);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
        EXPECT_EQ(place.run(std::string("segcore cut --accept-damaged ") + name + kCut).code, 0);
    }
}

TEST(Names, DecideFormats) {
    const Workplace place;
    const Outcome outcome = place.run(
        "boxed --edges hard --mask m.bmp --cutout c.WEBP --preview p.jpg && "
        "boxed --edges hard --mask m.png --cutout c.tiff --preview p.png");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_TRUE(same(place.image("m.bmp"), place.image("m.png")));
    EXPECT_EQ(place.read("m.bmp").substr(0, 2), "BM");
    EXPECT_EQ(place.read("p.jpg").substr(0, 3), "\xFF\xD8\xFF");
    EXPECT_EQ(place.read("c.WEBP").substr(8, 4), "WEBP");
    EXPECT_LT(cv::norm(place.image("p.jpg"), place.image("p.png"), cv::NORM_L1) / 160 / 120 / 3, 4);
    for (const char* name : {"c.WEBP", "c.tiff"}) {
        std::vector<cv::Mat> channels;
        cv::split(place.image(name), channels);
        ASSERT_EQ(channels.size(), 4U) << name;
        EXPECT_TRUE(same(channels[3], place.image("m.png"))) << name;
    }
}

TEST(Formats, AreReadAsTheMessageLists) {
    const Workplace place;
    const std::string message = place.run("segcore cut old.png --mask m.png --undo").err;
    const char* const formats[][2] = {{"PNG", ".png"},  {"JPEG", ".jpg"},  {"BMP", ".bmp"},
                                      {"TIFF", ".tif"}, {"WebP", ".webp"}, {"JPEG 2000", ".jp2"},
                                      {"PNM", ".ppm"}};
    for (const auto& [name, ending] : formats) {
        if (message.find(name) != std::string::npos) {
            place.write("photo", encoded(sceneOf(place), ending));
            EXPECT_EQ(place.run(std::string("segcore cut photo") + kCut).code, 0) << name;
        }
    }
    EXPECT_NE(message.find("PNG, JPEG, BMP"), std::string::npos) << message;
}

TEST(Steps, GoIntoAFolderWithFilesOnlyWhenForced) {
    const Workplace place;
    const Outcome outcome = place.run(
        "s() { boxed --dump-steps steps \"$@\"; }; mkdir steps && s && ! s 2>/dev/null && "
        "rm steps/step-001.png && touch steps/other && ! s 2>/dev/null && s --force && ls steps");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "other\nstep-001.png\n");
}

}  // namespace
