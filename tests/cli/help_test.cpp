#include <gtest/gtest.h>

#include <algorithm>

#include "command.h"

namespace {

class HelpOf : public testing::TestWithParam<std::string> {};

// Whoever adds an option has to tell the man page and the completion.
TEST_P(HelpOf, AgreesWithTheManPageAndTheCompletion) {
    const Workplace place;
    EXPECT_EQ(place.run("segcore " + GetParam() + " --version").out,
              "segcore " SEGCORE_VERSION "\n");
    const std::string list = " | grep -oE -e '--[a-z][a-z-]+' | sort -u";
    const std::string help = "segcore " + GetParam() + " --help" + list;
    const Outcome options = place.run("set -o pipefail; " + help);
    EXPECT_EQ(options.code, 0);
    EXPECT_GE(std::count(options.out.begin(), options.out.end(), '\n'), 6);

    const std::string manual = "sed 's/\\\\-/-/g' '" SEGCORE_MAN_PAGE "'" + list;
    const Outcome missing = place.run("comm -23 <(" + help + ") <(" + manual + ")");
    EXPECT_EQ(missing.out, "") << "not in the man page";
    const Outcome offered =
        place.run("source '" SEGCORE_COMPLETION "'; COMP_WORDS=(segcore " + GetParam() +
                  R"( photo.png --); COMP_CWORD=3; _segcore; echo "${COMPREPLY[@]}")" + list);
    EXPECT_EQ(offered.out, options.out);
}

INSTANTIATE_TEST_SUITE_P(All, HelpOf, testing::Values("cut", "replay", "snap"));

}  // namespace
