#include <gtest/gtest.h>
#include <algorithm>
#include <opencv2/core.hpp>

#include "command.h"

namespace {

struct Fault {
    const char* line;
    int code;
    const char* says;  // what is wrong; the line has to go on with what to do
};

const Fault kFaults[] = {
    {"segcore cut absent.png --box 30,10,130,110 --mask old.png", 1, "read absent.png"},
    {"segcore cut old.png --box 30,10,130,110 --mask m.png", 1, "JPEG"},
    {"segcut --brush-add 20,20 160,20 --mask old.png", 1,
     "160,20 lies outside the photograph of 160 x 120 pixels; x must be 0 to 159 and y 0 to 119"},
    {"segcut --box 20,20,161,120 --mask old.png", 1,
     "161,120 lies outside the photograph of 160 x 120 pixels; x must be 0 to 160 and y 0 to 120"},
    {"segcut --box 2,2,2,2 --mask old.png", 1, "the mask is empty"},
    {"boxed --undo --mask old.png", 1, "no result"},
    {"segcut --undo --box 30,10,130,110 --mask old.png", 1, "to undo"},
    {"segcut --brush-remove 9,9 --mask old.png", 1, "nothing to remove"},
    {"segcut --marks old.png --mask m.png", 1, "old.png is not an image"},
    {"segcut --marks photo.png --mask old.png", 1, "no picture of marks"},
    {"segcut --mask old.png", 1, "no marks"},
    {"boxed", 1, "nothing to write"},
    {"boxed --mask gone/m.png", 1, "write gone/m.png"},
    {"boxed --mask ./photo.png", 1, "replace an input"},
    {"boxed --dump-steps s --svg old.png --mask /dev/full", 1, "No space left"},
    {"segcut --undo --redo --time-limit -1 --mask old.png", 2, "'-1' is no number of seconds"},
    {"boxed --time-limit 1e-9 --dump-steps s --mask old.png", 1,
     "step 1 (box): the segmentation reached its time limit"},
    {"segcut --brush-add 80,60 --brush-radius 5 --mask old.png", 2, "--brush-radius"},
    {"segcut --passes 2 --touch-up --brush-add 80,60 --mask old.png", 2, "--passes: holds"},
    {"segcut --passes 11 --brush-add 80,60 --mask old.png", 2, "'11' is no number of passes"},
    {"boxed --usual --mask old.png", 2, "--usual: holds"},
    {"segcut --box 1,2,3 --mask old.png", 2, "--box: '1,2,3'"},
    {"segcut --brush-radius x --mask old.png", 2, "--brush-radius: 'x'"},
    {"segcut --frobnicate --mask old.png", 2, "--frobnicate is no option"},
    {"segcore crop photo.png --mask old.png", 2, "crop is no command"},
    {"segcore", 2, "no command"},
    {"segcore cut --stats photo.png a b --mask old.png", 2, "a b are more than"},
    {"boxed --mask old.png --mask a.png", 2, "takes one"},
    {"boxed --mask", 2, "--mask needs a value"},
    {"boxed --drop-islands 20000 --mask old.png", 1, "nothing of the object is left"},
    {"boxed --smooth 101 --mask old.png", 2, "--smooth"},
    {"boxed --fill-holes -1 --mask old.png", 2, "--fill-holes"},
    {"boxed --mask m.xyz", 1, ".xyz"},
    {"boxed --mask m", 1, "its format"},
    {"boxed --mask m.jpg", 1, "blurs"},
    {"boxed --cutout c.bmp", 1, "no transparency"},
    {"boxed --cutout c.jpg", 1, "or give a --background"},
    {"boxed --cutout - | boxed --background - --cutout c.jpg", 1, "transparent in places"},
    {"boxed --background reddish --cutout c.jpg", 1, "neither a colour nor a file"},
    {"boxed --background '' --cutout c.png", 2, "--background: names nothing"},
    {"boxed --background old.png --cutout old.png", 1, "replace an input"},
    {"boxed --edges round --cutout c.png", 2, "--edges"},
    {"boxed --feather -1 --cutout c.png", 2, "--feather"},
    {"boxed --feather nan --cutout c.png", 2, "--feather: 'nan' is no number of pixels"},
    {"boxed --edge-width inf --cutout c.png", 2, "--edge-width: 'inf'"},
    {"boxed --edge-width nan --cutout c.png", 2, "--edge-width: 'nan'"},
    {"boxed --crop -1 --cutout c.png", 2, "-1 is no option"},
    {"boxed --max-pixels 19199 --cutout c.png", 1, "19199"},
    {"boxed --max-pixels -1 --cutout c.png", 2, "--max-pixels: '-1' is no number of pixels"},
    {"boxed --max-pixels 1e30 --cutout c.png", 2, "--max-pixels: '1e30'"},
    {"boxed --max-pixels 20000 --background '" SEGCORE_SAMPLES "/rocket.jpg' --cutout c.png", 1,
     "20000"},
    {"segcut --max-pixels 20000 --marks '" SEGCORE_SAMPLES "/rocket.jpg' --mask old.png", 1,
     "20000"},
    {"segcore matte photo.png --max-pixels 20000 --from-mask '" SEGCORE_SAMPLES
     "/rocket.jpg' --mask old.png",
     1, "20000"},
    {"segcore matte photo.png --accept-damaged --from-mask <(head -c 700 photo.png) --mask old.png",
     1, "); give a whole file\n"},
    {"boxed --accept-damaged --background <(head -c 700 photo.png) --cutout c.png", 1,
     "); give a whole file\n"},
    {"boxed --edges hard --feather 2 --cutout c.png", 2, "--feather: is for soft edges"},
    {"boxed --edges hard --edge-width 2 --alpha a.png", 2, "--edge-width: is for soft edges"},
    {"boxed --edges hard --mask m.png", 2, "--edges: no output uses it"},
    {"boxed --crop --mask m.png", 2, "--crop: no output uses it"},
    {"boxed --background white --alpha a.png", 2, "--background: no output uses it"},
    {"boxed --unseen zero --alpha a.png", 2, "--unseen: no output uses it"},
    {"boxed --quality 80 --cutout c.png --mask m.webp", 2, "--quality: no output uses it"},
    {"boxed --compression 5 --cutout c.webp", 2, "--compression: no output uses it"},
    {"boxed --compression 5 --cutout c.xyz", 1, ".xyz"},
    {"segcore matte photo.png --from-mask photo.png --mask m.png --feather 2", 2,
     "--feather: no output uses it"},
    {"segcore matte photo.png --cutout c.png", 2, "--from-mask"},
    {"segcore matte - --from-mask - --cutout c.png <photo.png", 1,
     "two inputs come from standard input"},
    {"segcore cut - --box 30,10,130,110 --background - --cutout c.png <photo.png", 1,
     "two inputs come from standard input"},
    {R"(echo '{"photo": "-", "steps": [{"op": "box", "box": [30, 10, 130, 110]}]}' |
                 segcore replay - --mask old.png)",
     1, "two inputs come from standard input"},
    {"segcore matte photo.png --from-mask photo.png", 1, "nothing to write"},
    {"segcore matte photo.png --from-mask photo.png --cutout c.png", 1, "photo.png is no mask"},
    {"segcore matte photo.png --from-mask absent.png --cutout c.png", 1, "read absent.png"},
    {"segcore matte photo.png --from-mask '" SEGCORE_SAMPLES "/rocket.jpg' --cutout c.png", 1,
     "640 x 427 pixels and the photograph 160 x 120"},
    {"segcore matte photo.png --from-mask old.png --mask old.png", 1, "replace an input"},
    {"boxed --mask old.png --dump-steps .", 1, "holds files"},
    {"segcore cut --help >/dev/full", 1, "No space left"},
    {"boxed --stats >/dev/full", 1, "No space left"},
    {"head -c 700 photo.png | segcore cut - --box 30,10,130,110 --mask old.png", 1,
     "standard input is damaged"},
    {"segcut --marks <(head -c 700 photo.png) --mask old.png", 1, "is damaged"},
    {R"(echo '{"photo": "photo.png", "steps": [{"op": "box", "box": [1]}]}' |
                 segcore replay - --mask old.png)",
     1, "step 1"},
    {R"(echo '{"photo": "photo.png", "width": 9, "height": 120, "steps": []}' |
                 boxed --session - --mask old.png)",
     1, "was made on a photograph of 9 x 120 pixels"},
    {R"(echo '{"photo": "photo.png", "steps": [
                 {"op": "box", "box": [30, 10, 130, 110]}, {"op": "redo"}]}' |
                 segcore replay - --mask old.png)",
     1, "step 2 (redo): there is nothing to redo"},
    {"segcore snap photo.png --from 1,1 --to 9,120 --svg old.png", 1, "9,120 lies out"}};

TEST(Faults, FailInOneLineAndWriteNothing) {
    for (const auto& [line, code, says] : kFaults) {
        SCOPED_TRACE(line);
        const Workplace place;
        const Outcome outcome = place.run(line);
        EXPECT_EQ(outcome.code, code);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err.rfind("segcore: ", 0), 0U) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        for (const char* const part : {says, "; "}) {
            EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
        }
        EXPECT_TRUE(place.isUntouched());
    }
}

// How long the program has been able to handle an interrupt when it comes, and what it reads.
class Interrupt : public testing::TestWithParam<std::tuple<std::string, std::string>> {};

TEST_P(Interrupt, EndsTheRunWithoutATrace) {
    const Workplace place(makeDiscScene(640, 480));
    const auto& [seconds, photo] = GetParam();
    // Two hundred boxes are many seconds' work, and standard input never delivers anything. The
    // interrupt waits for the shell's child to have become the program, and for that to block the
    // signal: bit 1 of the mask in hexadecimal.
    const Outcome outcome = place.run(
        std::string(
            "exec 3< <(exec sleep 60); for i in {1..200}; do b+=' --box 40,30,600,450'; done\n") +
        SEGCORE_RUNNER " " SEGCORE_PROGRAM " cut " + photo +
        " $b --mask old.png --dump-steps s <&3 & p=$!\n" +
        "until [ \"$(</proc/$p/comm)\" != bash ] && grep -q 'SigBlk:.*[2367abef]$' "
        "/proc/$p/status; do :; done\n" +
        "sleep " + seconds + "; kill -INT $p; wait $p");
    EXPECT_EQ(outcome.code, 130);
    EXPECT_EQ(outcome.err, "segcore: interrupted, nothing was written\n");
    EXPECT_TRUE(place.isUntouched());
}

INSTANTIATE_TEST_SUITE_P(All, Interrupt,
                         testing::Combine(testing::Values("0", "0.09", "0.31"),
                                          testing::Values("photo.png", "-")));

// Where all of the picture is edge, soft edges take most of the time.
TEST(SoftEdges, AreLeftWhenTheUserStopsThem) {
    const cv::Size size(1000, 800);
    cv::Mat noise(size, CV_8UC3);
    cv::randu(noise, 0, 256);
    cv::Mat stripes = cv::Mat::zeros(size, CV_8UC1);
    for (int x = 0; x < size.width; x += 16) {
        stripes.colRange(x, std::min(x + 8, size.width)).setTo(255);
    }
    const Workplace place;
    place.write("noise.png", encoded(noise, ".png"));
    place.write("stripes.png", encoded(stripes, ".png"));
    const Outcome outcome = place.run(
        "ms() { echo $(($(date +%s%N) / 1000000)); }\n"
        "m() { exec " SEGCORE_RUNNER " '" SEGCORE_PROGRAM
        "' matte noise.png --from-mask stripes.png --alpha $1; }\n"
        "a=$(ms); (m whole.png); b=$(ms); m a.png & p=$!\n"
        "t=$((b - a)); sleep $((t * 2 / 5000)).$(printf %03d $((t * 2 / 5 % 1000))); kill -INT $p; "
        "wait $p\n"
        "code=$?; c=$(ms); echo \"$t $((c - b))\" >&2\n"
        "[ $code = 130 ] && [ $((4 * (c - b))) -lt $((3 * t)) ] && ls");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "noise.png\nold.png\nphoto.png\nstripes.png\nwhole.png\n");
}

}  // namespace
