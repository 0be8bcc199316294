#include "targets.h"

#include <algorithm>
#include <filesystem>

#include "errors.h"
#include "output_files.h"

namespace fs = std::filesystem;

namespace {

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a == b ||
           (a != kStandardStream && b != kStandardStream && fs::equivalent(a, b, ignored));
}

}  // namespace

std::vector<std::string> wantedPaths(std::vector<std::string> paths) {
    paths.erase(std::remove(paths.begin(), paths.end(), std::string()), paths.end());
    return paths;
}

void checkInputs(const std::vector<std::string>& inputs) {
    if (std::count(inputs.begin(), inputs.end(), kStandardStream) > 1) {
        throw UserError("two inputs come from standard input; give files for all but one");
    }
}

void checkTargets(const std::vector<std::string>& targets, const std::vector<std::string>& inputs) {
    for (std::size_t i = 0; i < targets.size(); ++i) {
        OutputFiles::checkTarget(targets[i]);
        for (std::size_t k = 0; k < i; ++k) {
            if (isSameFile(targets[i], targets[k]) && targets[i] != "/dev/null") {
                throw UserError("two outputs go to " + targets[i] +
                                "; give each output a place of its own");
            }
        }
        for (const std::string& input : inputs) {
            if (targets[i] != kStandardStream && isSameFile(targets[i], input)) {
                throw UserError("output " + targets[i] +
                                " would replace an input; choose another name for the output");
            }
        }
    }
}

std::string endingFor(const std::string& path, PictureContent content) {
    return OutputFiles::isStream(path) ? ".png" : formatFor(path, content);
}
