// Photographs cut from the marks that their folder holds, a result for each case.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "measure/score.h"
#include "result_pictures.h"
#include "session/data_set.h"

struct CaseOptions {
    std::vector<std::string> cases{"box", "lasso", "box+s2"};
    double timeLimit = 0.0;  // of each request in seconds, 0 for none
};

struct CaseResult {
    std::string photo;
    std::string markCase;
    bool large = false;
    std::optional<Score> score;  // none without a true mask
    double milliseconds = 0.0;
};

// One result for each case whose marks the photograph has.
std::vector<CaseResult> cutCases(const DataPhoto& photo, const CaseOptions& options,
                                 ResultPictures& pictures);

struct CaseMean {
    int count = 0;
    double errorRate = 0.0;
    double iou = 0.0;
    double milliseconds = 0.0;
};

// Of the results with a score, by case and whether the photographs are large.
std::map<std::pair<std::string, bool>, CaseMean> meansOf(const std::vector<CaseResult>& results);
