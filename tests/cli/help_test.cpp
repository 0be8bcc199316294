#include <gtest/gtest.h>

#include <set>

#include "command.h"

namespace {

std::set<std::string> longOptionsIn(const std::string& text) {
    std::set<std::string> options;
    for (auto at = text.find("--"); at != std::string::npos; at = text.find("--", at)) {
        const auto end = text.find_first_not_of("-abcdefghijklmnopqrstuvwxyz", at);
        const std::string option = text.substr(at, end - at);
        if (option.size() > 3) {
            options.insert(option);
        }
        at += option.size();
    }
    return options;
}

class HelpOf : public testing::TestWithParam<std::string> {};

// Whoever adds an option has to tell the man page and the completion.
TEST_P(HelpOf, AgreesWithTheManPageAndTheCompletion) {
    const Workplace place;
    const Outcome help = place.run("segcore " + GetParam() + " --help");
    EXPECT_EQ(help.code, 0);
    const std::set<std::string> options = longOptionsIn(help.out);
    EXPECT_GE(options.size(), 6U);

    const std::set<std::string> documented =
        longOptionsIn(place.run("sed 's/\\\\-/-/g' '" SEGCORE_MAN_PAGE "'").out);
    for (const std::string& option : options) {
        EXPECT_EQ(documented.count(option), 1U) << option << " is not in the man page";
    }
    const Outcome offered =
        place.run("source '" SEGCORE_COMPLETION "'; COMP_WORDS=(segcore " + GetParam() +
                  R"( photo.png --); COMP_CWORD=3; _segcore; echo "${COMPREPLY[@]}")");
    EXPECT_EQ(longOptionsIn(offered.out), options);
}

TEST_P(HelpOf, TellsTheVersion) {
    EXPECT_EQ(Workplace().run("segcore " + GetParam() + " --version").out,
              "segcore " SEGCORE_VERSION "\n");
}

INSTANTIATE_TEST_SUITE_P(All, HelpOf, testing::Values("cut", "replay", "snap"));

}  // namespace
