// Cut-outs with soft and hard edges, cropped and on a ground, of found masks and of those from elsewhere.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "command.h"
#include "pictures/engine_colours.h"
#include "pictures/read_picture.h"

namespace {

using Json = nlohmann::json;

struct Layers {
    cv::Mat colours;
    cv::Mat alpha;
};

Layers layersOf(const cv::Mat& picture) {
    Layers layers;
    cv::cvtColor(picture, layers.colours, cv::COLOR_BGRA2BGR);
    cv::extractChannel(picture, layers.alpha, 3);
    return layers;
}

int partlyOpaque(const cv::Mat& alpha) {
    return cv::countNonZero(alpha) - cv::countNonZero(alpha == 255);
}

cv::Mat shrunk(const cv::Mat& mask, int pixels) {
    cv::Mat result;
    cv::erode(mask, result, cv::Mat(), {-1, -1}, pixels, cv::BORDER_CONSTANT, 255);
    return result;
}

TEST(CutOut, IsSoftUnlessToldOtherwise) {
    const Workplace place;
    const Outcome outcome = place.run(
        "set -e; boxed --cutout soft.png --alpha a.png --mask m.png --save-session s.json --stats\n"
        "boxed --edges hard --cutout hard.png --alpha ha.png --save-session h.json\n"
        "segcore replay s.json --cutout again.png; cmp soft.png again.png\n"
        "segcore replay h.json --cutout again.png; cmp hard.png again.png\n"
        "segcore replay h.json --feather 2 --cutout again.png; cmp hard.png again.png\n"
        "segcore replay s.json --edges hard --feather 0 --save-session a.json\n"
        "segcore replay a.json --mask again.png; cmp again.png m.png\n"
        "segcore replay s.json --quality 20 --mask m.webp --alpha a.webp --cutout c.webp\n"
        "segcore replay h.json --edges soft --cutout again.png; cmp soft.png again.png\n"
        "segcore matte photo.png --from-mask m.png --cutout again.png; cmp soft.png again.png\n"
        "segcore matte photo.png --from-mask m.png --edges hard --alpha again.png\n"
        "cmp ha.png again.png; cmp ha.png m.png\n"
        "segcore replay s.json --feather 3 --cutout feathered.png\n"
        "segcore replay s.json --feather 3 --unseen zero --cutout bare.png\n"
        "segcore replay s.json --unseen zero --cutout zero.png");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("soft edges"), std::string::npos);
    const cv::Mat mask = place.image("m.png");
    const Layers soft = layersOf(place.image("soft.png"));
    EXPECT_TRUE(same(soft.alpha, place.image("a.png")));
    EXPECT_GT(partlyOpaque(soft.alpha), 0);
    // As grey pictures come back from WebP, which knows colours alone.
    for (const auto& [name, stored] : {std::pair{"m.webp", mask}, {"a.webp", soft.alpha}}) {
        cv::Mat colours;
        cv::cvtColor(stored, colours, cv::COLOR_GRAY2BGR);
        EXPECT_TRUE(same(place.image(name), colours)) << name;
    }
    EXPECT_EQ(cv::countNonZero((soft.alpha != 255) & shrunk(mask, 12)), 0);
    EXPECT_EQ(cv::countNonZero(soft.alpha & shrunk(~mask, 12)), 0);
    EXPECT_TRUE(same(layersOf(place.image("hard.png")).alpha, mask));
    const Layers feathered = layersOf(place.image("feathered.png"));
    EXPECT_GT(partlyOpaque(feathered.alpha), partlyOpaque(soft.alpha));
    EXPECT_TRUE(same(feathered.colours, soft.colours));
    const Layers bare = layersOf(place.image("bare.png"));
    cv::Mat shown;
    cv::inRange(bare.colours, cv::Scalar::all(0), cv::Scalar::all(0), shown);
    EXPECT_EQ(cv::countNonZero(~shown & (bare.alpha == 0)), 0);
    // The disc is red. So are the pixels that show nothing of it, unless they are to be zero.
    const cv::Vec3b unseen = soft.colours.at<cv::Vec3b>(2, 2);
    EXPECT_EQ(soft.alpha.at<std::uint8_t>(2, 2), 0);
    EXPECT_GT(unseen[2], unseen[0] + 50);
    const Layers zero = layersOf(place.image("zero.png"));
    EXPECT_EQ(zero.colours.at<cv::Vec3b>(2, 2), cv::Vec3b(0, 0, 0));
    EXPECT_TRUE(same(zero.alpha, soft.alpha));
}

// A session from before there was a choice is delivered as it was.
TEST(CutOut, IsHardForASessionThatSaysNothing) {
    const Workplace place;
    place.write("old.json", R"({"photo": "photo.png", "steps": [
        {"op": "box", "box": [30, 10, 130, 110]}]})");
    const Outcome outcome = place.run(
        "set -e; segcore replay old.json --cutout hard.png --save-session again.json\n"
        "segcore cut photo.png --session old.json --cutout soft.png --save-session new.json");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(partlyOpaque(layersOf(place.image("hard.png")).alpha), 0);
    EXPECT_GT(partlyOpaque(layersOf(place.image("soft.png")).alpha), 0);
    EXPECT_EQ(Json::parse(place.read("again.json"))["version"], 1);
    // The steps were made on the colours as stored.
    const Json continued = Json::parse(place.read("new.json"));
    EXPECT_FALSE(continued.contains("colours"));
    EXPECT_EQ(continued["output"], Json({{"edges", "soft"}}));
}

// The number at a place in a file, highest byte first.
int numberAt(const std::string& bytes, std::size_t at) {
    int number = 0;
    for (std::size_t i = at; i < at + 4; ++i) {
        number = number * 256 + static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

TEST(CutOut, IsCroppedToTheObject) {
    const Workplace place;
    const Outcome outcome = place.run(
        "set -e; c() { boxed --edges hard \"$@\"; }; c --cutout whole.png --mask m.png\n"
        "c --crop --cutout tight.png --json tight.json\n"
        "c --crop 5 --cutout wide.png --alpha wa.png --mask whole-mask.png --json wide.json\n"
        "c --crop 9999 --cutout all.png; segcore cut --crop photo.png --box 30,10,130,110 "
        "--cutout soft.png");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const cv::Mat whole = place.image("whole.png");
    const cv::Rect object = cv::boundingRect(place.image("m.png"));
    const cv::Rect wide(object.x - 5, object.y - 5, object.width + 10, object.height + 10);
    for (const auto& [name, part] : {std::pair{"tight", object}, {"wide", wide}}) {
        const std::string png = place.read(std::string(name) + ".png");
        EXPECT_TRUE(same(place.image(std::string(name) + ".png"), whole(part)));
        EXPECT_EQ(Json::parse(place.read(std::string(name) + ".json"))["crop"],
                  Json({part.x, part.y, part.width, part.height}));
        const std::size_t offset = png.find("oFFs");
        ASSERT_NE(offset, std::string::npos);
        EXPECT_EQ(numberAt(png, offset + 4), part.x);
        EXPECT_EQ(numberAt(png, offset + 8), part.y);
    }
    EXPECT_TRUE(same(place.image("wa.png"), layersOf(place.image("wide.png")).alpha));
    EXPECT_TRUE(same(place.image("whole-mask.png"), place.image("m.png")));
    EXPECT_TRUE(same(place.image("all.png"), whole));
    EXPECT_NE(place.image("soft.png").size(), whole.size());
}

TEST(CutOut, StandsOnAGround) {
    const Workplace place;
    cv::Mat left(30, 80, CV_8UC3,
                 cv::Scalar(200, 100, 50));  // half as wide as it has to be, and long
    left.colRange(40, 80).setTo(cv::Scalar(0, 0, 255));
    place.write("ground.png", encoded(left, ".png"));
    const Outcome outcome = place.run(
        "set -e; boxed --cutout cut.png --save-session s.json\n"
        "r() { segcore replay s.json --cutout \"$@\"; }\n"
        "r colour.png --background 3264c8; r named.jpg --background white --quality 100\n"
        "r picture.png --background ground.png; r itself.png --background photo --crop 3\n"
        "same() { r a.png --background $1; r b.png --background $2; cmp a.png b.png; }\n"
        "same '#3264C8' 3264c8; same F80 ff8800; same '#fff' White; same BLACK 000000\n"
        "same Photo photo; for w in '#ff' ff88 +fff fffffff '##fff'; do\n"
        "r c.png --background $w 2>/dev/null && exit 3; done; true");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const Layers cut = layersOf(place.image("cut.png"));
    cv::Mat expected(cut.colours.size(), CV_8UC3);
    expected.forEach<cv::Vec3b>([&](cv::Vec3b& pixel, const int* at) {
        const double share = cut.alpha.at<std::uint8_t>(at) / 255.0;
        const cv::Vec3b ground(200, 100, 50);
        for (int c = 0; c < 3; ++c) {
            pixel[c] = cv::saturate_cast<std::uint8_t>(share * cut.colours.at<cv::Vec3b>(at)[c] +
                                                       (1 - share) * ground[c]);
        }
    });
    const cv::Mat colour = place.image("colour.png");
    ASSERT_EQ(colour.type(), CV_8UC3);
    EXPECT_LE(cv::norm(colour, expected, cv::NORM_INF), 1.0);
    EXPECT_EQ(place.image("named.jpg").at<cv::Vec3b>(3, 3), cv::Vec3b(255, 255, 255));
    const cv::Mat picture = place.image("picture.png");
    EXPECT_EQ(picture.at<cv::Vec3b>(3, 3), cv::Vec3b(200, 100, 50));
    EXPECT_EQ(picture.at<cv::Vec3b>(3, 156), cv::Vec3b(0, 0, 255));
    const cv::Mat itself = place.image("itself.png");
    const cv::Rect part = cv::boundingRect(cut.alpha);
    EXPECT_TRUE(same(itself(cv::Rect({3, 3}, part.size())), place.image("photo.png")(part)));
}

// The picture over a ground of its size and depth, as any program lays it there.
cv::Mat laidOver(const cv::Mat& cutout, const cv::Mat& ground) {
    const double opaque = cutout.depth() == CV_16U ? 65535.0 : 255.0;
    cv::Mat colours;
    cv::Mat share;
    cv::Mat under;
    cutout.convertTo(colours, CV_64F);
    ground.convertTo(under, CV_64F);
    cv::extractChannel(colours, share, 3);
    cv::merge(std::vector<cv::Mat>(3, share / opaque), share);
    const int blueGreenRed[] = {0, 0, 1, 1, 2, 2};
    cv::Mat seen(colours.size(), CV_64FC3);
    cv::mixChannels(&colours, 1, &seen, 1, blueGreenRed, 3);
    return seen.mul(share) + under.mul(cv::Scalar::all(1.0) - share);
}

// Every pixel that a hard edge shows is the photograph's. A soft one's colours are the object's alone.
TEST(CutOut, WithHardEdgesOverItsPhotographIsThatPhotograph) {
    const Workplace place;
    const cv::Mat photo = layersOf(place.image("photo.png")).colours;
    cv::Mat deep;
    photo.convertTo(deep, CV_16U, 257, 77);
    place.write("deep.png", encoded(deep, ".png"));
    for (const char* const ending : {"png", "tif", "webp"}) {
        SCOPED_TRACE(ending);
        const Outcome outcome =
            place.run(std::string("set -e; m='--box 30,10,130,110 --edges hard --cutout'\n") +
                      "segcore cut photo.png $m c." + ending + "; segcore cut deep.png $m d." +
                      ending + "; boxed --cutout s." + ending);
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        const auto distance = [&](const char* name, const cv::Mat& ground) {
            cv::Mat wide;
            ground.convertTo(wide, CV_64F);
            return cv::norm(laidOver(place.image(std::string(name) + ending), ground), wide,
                            cv::NORM_INF);
        };
        EXPECT_LE(distance("c.", photo), 1.0);
        EXPECT_GT(distance("s.", photo), 1.0);
        if (std::string(ending) != "webp") {  // which has 8 bits
            EXPECT_LE(distance("d.", deep), 1.0);
        }
    }
}

// The sample has an Adobe RGB profile: blue 200, green 100, red 50 of sRGB are other numbers there.
TEST(CutOut, KeepsDepthAndProfileAndItsGroundLooksAsAsked) {
    const Workplace place;
    cv::Mat deep;
    cv::cvtColor(place.image("photo.png"), deep, cv::COLOR_BGRA2BGR);
    deep.convertTo(deep, CV_16U, 257, 77);
    place.write("deep.png", encoded(deep, ".png"));
    const Outcome outcome =
        place.run("set -e; segcore replay '" SEGCORE_SAMPLES
                  "/rocket.json' --background 3264c8 --cutout r.png\n"
                  "segcore cut deep.png --box 30,10,130,110 --cutout d.png --alpha da.png\n"
                  "segcore cut deep.png --box 30,10,130,110 --background 3264c8 --cutout dg.png");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const std::string bytes = place.read("r.png");
    const Picture onGround = readPicture({bytes.begin(), bytes.end()}, "r.png");
    ASSERT_FALSE(onGround.notes.profile.empty());
    const cv::Vec3b stored = onGround.pixels.at<cv::Vec3b>(5, 5);
    EXPECT_GT(cv::norm(stored, cv::Vec3b(200, 100, 50), cv::NORM_INF), 5.0);
    const cv::Vec3b seen = engineColours(onGround, Colours::kSrgb).at<cv::Vec3b>(5, 5);
    EXPECT_LE(cv::norm(seen, cv::Vec3b(200, 100, 50), cv::NORM_INF), 1.0);

    const cv::Mat cut = place.image("d.png");
    ASSERT_EQ(cut.type(), CV_16UC4);
    EXPECT_EQ(place.image("da.png").type(), CV_16UC1);
    const cv::Vec4w middle = cut.at<cv::Vec4w>(60, 80);
    EXPECT_EQ(cv::Vec3w(middle[0], middle[1], middle[2]), deep.at<cv::Vec3w>(60, 80));
    EXPECT_EQ(middle[3], 65535);
    EXPECT_EQ(place.image("dg.png").at<cv::Vec3w>(3, 3), cv::Vec3w(200 * 257, 100 * 257, 50 * 257));
}

TEST(Matte, TakesAnyMask) {
    const Workplace place;
    const cv::Size size(160, 120);
    cv::Mat grey(size, CV_8UC1, cv::Scalar(127));
    const cv::Rect object(40, 30, 60, 50);
    grey(object).setTo(128);
    cv::Mat withAlpha(size, CV_8UC4, cv::Scalar(9, 200, 30, 0));
    withAlpha(object).setTo(cv::Scalar(1, 2, 3, 255));
    cv::Mat deep = cv::Mat::zeros(size, CV_16UC1);
    deep(object).setTo(0x8000);
    place.write("grey.png", encoded(grey, ".png"));
    place.write("alpha.png", encoded(withAlpha, ".png"));
    place.write("deep.png", encoded(deep, ".png"));
    std::vector<std::uint8_t> bilevel;
    cv::imencode(".png", grey >= 128, bilevel, {cv::IMWRITE_PNG_BILEVEL, 1});
    place.write("bits.png", {bilevel.begin(), bilevel.end()});
    for (const char* name : {"grey", "alpha", "deep", "bits"}) {
        const Outcome outcome = place.run(std::string("segcore matte photo.png --from-mask ") +
                                          name + ".png --mask m.png");
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_TRUE(same(place.image("m.png"), grey == 128)) << name;
    }
}

}  // namespace
