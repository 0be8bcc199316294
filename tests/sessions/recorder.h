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
    void start(const std::string& session) {
        m_session = session;
        m_step = 0;
    }
    void step(const std::string& name, const Digest& mask, const Digest& outline) {
        add(name, "mask " + mask.text() + " outline " + outline.text());
    }
    // What the last call delivered; takes the outline.
    void step(const std::string& name, const HostSession& host) {
        step(name, Digest().add(host.mask),
             Digest().add(host.blended).add(HostSession::fetchOutline()));
    }
    // Walks the history to its ends, so it comes last.
    void history(HostSession& host) {
        Digest digest;
        for (int i = 0; i < kHistory && canUndo(); ++i) {
            host.undo();
            addState(digest, host);
        }
        host.undo();  // past the first mask: nothing on display
        addState(digest, host);
        for (int i = 0; i <= kHistory && canRedo(); ++i) {
            host.redo();
            addState(digest, host);
        }
        add("history", digest.text());
    }

    const std::vector<std::string>& lines() const { return m_lines; }

  private:
    static constexpr int kHistory = 31;  // masks that the library keeps

    static void addState(Digest& digest, const HostSession& host) {
        const std::vector<std::uint8_t> steps{std::uint8_t{canUndo()}, std::uint8_t{canRedo()}};
        digest.add(host.mask).add(host.blended).add(steps);
    }
    void add(const std::string& name, const std::string& digests) {
        m_lines.push_back(m_session + " " + std::to_string(++m_step) + "-" + name + " " + digests);
    }

    std::string m_session;
    int m_step = 0;
    std::vector<std::string> m_lines;
};

// Editing sessions on made photographs, host call by host call.
void recordSceneSessions(Recorder& recorder);
// The session files of samples/ and of this folder, replayed as every host replays them.
void recordSampleSessions(Recorder& recorder);
