// An editing session of the library: one photograph and the steps on it. The library has one
// context per process, so there is one session at a time.
//
// A step is undone as a whole, however many requests it made. A step that fails, is cancelled or
// runs out of time leaves the session as it was before it. Threads: one makes all calls; cancel()
// alone may come from any.
//
// The engine's own history serves undo and redo as long as it reaches. It holds 31 masks and is lost
// with the reset that a cancelled request needs, so the session keeps the mask of every step, too,
// and writes it back where the engine has forgotten it.
#pragma once

#include <cstdint>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "session/kept_mask.h"
#include "session/photo.h"
#include "session/session_host.h"
#include "session/stats.h"
#include "session/step.h"
#include "session/strokes.h"

class Session {
  public:
    // All three outlive the session. Throws UserError for a photograph that the engine refuses.
    Session(const Photo& photo, SessionHost& host, Stats& stats);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Throws UserError naming the step, "step 3 (brush-add): ...", and what the host throws.
    void apply(const Step& step);

    // How long each request of a later step may take; 0, as at the start, for no limit. Throws
    // UserError for less than that.
    void setTimeLimit(double seconds);

    // Ends the step that is being applied; it then throws UserError for the reason kCancelled.
    // Without one nothing happens. From any thread.
    void cancel() { m_host.cancel(); }

    bool canUndo() const { return m_shown > 0; }
    bool canRedo() const { return m_shown < m_steps.size(); }

    // False before the first request and after everything is undone.
    bool hasResult() const { return m_hasResult; }
    // CV_8UC1, 255 object, 0 the rest; all 0 without a result.
    const cv::Mat& result() const { return m_result; }
    // The photograph with the object's outline painted in.
    cv::Mat preview();

  private:
    // The program around, and besides what it says the session's own cancel.
    class Host : public SessionHost {
      public:
        explicit Host(SessionHost& program) : m_program(program) {}
        void throwIfInterrupted() override;
        cv::Mat marksPicture(const std::string& name) override {
            return m_program.marksPicture(name);
        }

        // A cancel counts from beginStep until endStep, which throws for one, or abandonStep, which
        // tells whether there was one.
        void cancel();
        void beginStep();
        void endStep();
        bool abandonStep();

      private:
        void throwIfCancelled() const;

        SessionHost& m_program;
        std::mutex m_access;  // to what follows
        bool m_inStep = false;
        bool m_cancelled = false;
    };

    struct ShownStep {
        int requests = 0;
        bool hasResult = false;
        KeptMask mask;
    };

    void take(const Step& step);
    void make(const Step& step);
    void applyMarks(const Step& step);
    void applyPaintedMarks(const Step& step);
    void request(const Request& request, bool edit);
    void stepBack();
    void stepForward();
    template <typename Call>
    bool deliver(Call&& call);
    bool edit(const Request& request);
    void requireDone();
    bool shownHasResult() const;
    void requireEngineAtShown();
    void bringEngineToShown();

    const Photo& m_photo;
    Host m_host;
    Stats& m_stats;
    std::vector<std::uint32_t> m_blended;
    std::vector<std::uint8_t> m_delivered;
    cv::Mat m_result;
    bool m_hasResult = false;
    std::vector<ShownStep> m_steps;    // every step that can be undone or redone
    std::size_t m_shown = 0;           // of them, from the first
    std::size_t m_newest = 0;          // steps up to which the engine can redo
    bool m_engineIsElsewhere = false;  // than at the steps shown
    int m_requestsMade = 0;            // by the step being applied
    std::size_t m_stepsApplied = 0;    // undo and redo count, too
    std::string m_stage;               // of the step being applied, in the statistics
};
