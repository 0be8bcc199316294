// What the program does once its arguments are understood.
#pragma once

#include <string>
#include <vector>

#include "pictures/read_picture.h"
#include "session/session_file.h"

enum class StatsForm { kNone, kText, kJson };

// Paths, empty when not wanted; "-" is standard output.
struct CutOutputs {
    std::string mask;
    std::string cutout;
    std::string preview;
    std::string svg;
    std::string json;
    std::string session;     // the steps as a session file
    std::string stepFolder;  // the mask after each step
    bool force = false;      // the folder may hold files
    StatsForm stats = StatsForm::kNone;
    OutputChoice choice;  // goes before the session file's
};

struct CutInput {
    SessionFile session;                  // the photograph, and the steps on it
    std::vector<Step> marks;              // that follow; without a kind each takes the usual one
    std::string sessionName;              // of the file that the photograph has to fit
    Damaged damaged = Damaged::kRefused;  // the photograph
    double timeLimit = 0.0;               // seconds for each request, 0 for no limit
    double timeBudget = 0.0;              // seconds for each step's choice of passes, likewise
};

// Leads a session and writes its results.
void runCut(const CutInput& input, const CutOutputs& outputs);

struct SnapRequest {
    std::string photo;
    Damaged damaged = Damaged::kRefused;
    std::vector<cv::Point> points;
    double alpha = 0.0;
    std::string svg;
    std::string json;
    StatsForm stats = StatsForm::kNone;
};

// Snaps a path to the edges of the photograph and writes it.
void runSnap(const SnapRequest& request);
