#include <gtest/gtest.h>
#include <algorithm>

#include "command.h"

namespace {

const std::string kOptionsAlone = " | grep -oE -e '--[a-z][a-z-]+' | LC_ALL=C sort -u";

class HelpOf : public testing::TestWithParam<std::string> {
  protected:
    // The options of the command, a line each.
    std::string fromHelp() const { return "segcore " + GetParam() + " --help" + kOptionsAlone; }

    const Workplace m_place;
};

// Whoever adds an option has to tell the man page and the completions.
TEST_P(HelpOf, IsInTheManPage) {
    EXPECT_EQ(m_place.run("segcore " + GetParam() + " --version").out,
              "segcore " SEGCORE_VERSION "\n");
    const Outcome options = m_place.run("set -o pipefail; " + fromHelp());
    EXPECT_EQ(options.code, 0);
    EXPECT_GE(std::count(options.out.begin(), options.out.end(), '\n'), 6);
    const std::string manual = "sed 's/\\\\-/-/g' '" SEGCORE_MAN_PAGE "'" + kOptionsAlone;
    EXPECT_EQ(m_place.run("comm -23 <(" + fromHelp() + ") <(" + manual + ")").out, "");
}

// What each shell offers for $command after a photograph.
TEST_P(HelpOf, IsWhatEachShellOffers) {
    for (const auto& [shell, offers] :
         {std::pair{"bash",
                    R"(bash -c ". '$files/segcore.bash'; COMP_WORDS=(segcore $command p.png --)
                COMP_CWORD=3; _segcore; printf '%s\n' \"\${COMPREPLY[@]}\"")"},
          // The function that would show the options prints them.
          {"zsh", R"(zsh -fc "words=($command p.png --)
                _arguments() { [[ \$* == *'->command'* ]] && state=command || print -rl -- \$@; }
                () { . '$files/_segcore' }")"},
          {"fish", R"(fish -c ". '$files/segcore.fish'
                complete --do-complete 'segcore $command p.png --'" | cut -f 1)"}}) {
        if (m_place.run(std::string("command -v ") + shell).code != 0) {
            continue;  // scripts/setup.sh --tests installs them
        }
        const Outcome offered =
            m_place.run("files='" SEGCORE_COMPLETIONS "' command=" + GetParam() + "\n" + offers +
                        kOptionsAlone);
        EXPECT_EQ(offered.out, m_place.run(fromHelp()).out) << shell << ": " << offered.err;
    }
}

INSTANTIATE_TEST_SUITE_P(All, HelpOf, testing::Values("cut", "replay", "matte", "snap"));

TEST(ManPage, ShowsASessionThatReplays) {
    const Workplace place;
    cv::Mat scribbles = cv::Mat::zeros(400, 600, CV_8UC1);
    scribbles(cv::Rect(300, 150, 20, 20)) = 2;
    place.write("scribbles.png", encoded(scribbles, ".png"));
    const Outcome outcome = place.run("cp '" SEGCORE_SAMPLES
                                      "/coffee.png' .\n"
                                      "sed -n '/^.SH SESSION FILES/,/^.EE/p' '" SEGCORE_MAN_PAGE
                                      "' | sed '1,/^.EX/d; /^.EE/d; s/\\\\-/-/g' >session.json; "
                                      "segcore replay session.json --mask m.png");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");  // the library's log is shown on demand alone
    const Outcome verbose = place.run("segcore replay session.json --verbose --mask m.png");
    EXPECT_EQ(verbose.err.rfind("Info: ", 0), 0U) << verbose.err;
}

}  // namespace
