// What the program does once its arguments are understood.
#pragma once

#include <string>
#include <vector>

#include "pictures/read_picture.h"
#include "results.h"
#include "session/session_file.h"

// What a session gives besides.
struct CutOutputs : ResultOutputs {
    std::string preview;
    std::string session;     // the steps as a session file
    std::string stepFolder;  // the mask after each step
    bool force = false;      // the folder may hold files
};

struct CutInput {
    SessionFile session;              // the photograph, and the steps on it
    std::vector<Step> marks;          // that follow; without a kind each takes the usual one
    std::string sessionName;          // of the file that the photograph has to fit
    std::optional<Edges> usualEdges;  // of cut-outs, where nobody has chosen
    ReadOptions reading;              // of the photograph; the size is that of all pictures
    double timeLimit = 0.0;           // seconds for each request, 0 for no limit
    double timeBudget = 0.0;          // seconds for each step's choice of passes, likewise
};

// Leads a session and writes its results.
void runCut(const CutInput& input, const CutOutputs& outputs);

// An object whose mask comes from elsewhere.
struct MatteRequest {
    std::string photo;
    std::string mask;
    ReadOptions reading;  // of the photograph; the size is that of all pictures
    ResultOutputs outputs;
};

// Makes a cut-out of a photograph and a mask.
void runMatte(const MatteRequest& request);

struct SnapRequest {
    std::string photo;
    ReadOptions reading;
    std::vector<cv::Point> points;
    double alpha = 0.0;
    std::string svg;
    std::string json;
    StatsForm stats = StatsForm::kNone;
};

// Snaps a path to the edges of the photograph and writes it.
void runSnap(const SnapRequest& request);
