// Digests of a session's results, a line each:
//
//   SESSION STEP mask DIGEST outline DIGEST      after every step
//   SESSION STEP DIGEST                          of a history: all masks back and forth again
//
// A line that changes is a change of what the library does.
#pragma once

#include <string>
#include <vector>

#include "support/digest.h"
#include "support/host_session.h"

class Recorder {
  public:
    void start(const std::string& session);
    void step(const std::string& name, const Digest& mask, const Digest& outline);
    // What the last call delivered; takes the outline.
    void step(const std::string& name, const HostSession& host);
    // Walks the history to its ends, so it comes last.
    void history(HostSession& host);

    const std::vector<std::string>& lines() const { return m_lines; }

  private:
    std::string m_session;
    int m_step = 0;
    std::vector<std::string> m_lines;
};

// Editing sessions on made photographs, host call by host call.
void recordSceneSessions(Recorder& recorder);
// The session files of samples/ and of this folder, replayed as every host replays them.
void recordSampleSessions(Recorder& recorder);
