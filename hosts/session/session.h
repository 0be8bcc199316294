// An editing session of the library: one photograph and the steps on it. The library has one
// context per process, so there is one session at a time.
//
// A step is undone as a whole, however many requests it made. A step that fails, is cancelled or
// runs out of time leaves the session as it was before it. Threads: one makes all calls; cancel()
// alone may come from any.
//
// The session keeps the mask of every step and what the user had said by then. Steps with a kind of
// correction need nothing else: each starts from a fresh engine, into which what they build on is
// written. For steps without one the engine's own history serves undo and redo as long as it reaches.
// It holds 31 masks and is lost with each reset, so the mask is written back where it has forgotten.
#pragma once

#include <chrono>
#include <mutex>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "session/engine_calls.h"
#include "session/kept_mask.h"
#include "session/photo.h"
#include "session/photo_border.h"
#include "session/session_host.h"
#include "session/stats.h"
#include "session/step.h"
#include "session/strokes.h"
#include "session/user_marks.h"

class Session {
  public:
    // All three outlive the session. Throws UserError for a photograph that the engine refuses, and
    // while there is another session.
    Session(const Photo& photo, SessionHost& host, Stats& stats);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The step as it was made, with all that was left to the session filled in, so that applying it
    // to the same session gives the same mask. Throws UserError naming the step, "step 3 (brush-add):
    // ...", and what the host throws.
    Step apply(const Step& step);

    // How long each request of a later step may take; 0, as at the start, for no limit. Throws
    // UserError for less than that.
    void setTimeLimit(double seconds);

    // After how long a later step makes do with the passes that it has made; 0, as at the start, for no
    // limit. Choices that a step brings along are followed all the same. Throws as above.
    void setTimeBudget(double seconds);

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
    // The same with the outline of another mask of the photograph's size; the session stays as it is.
    cv::Mat previewOf(const cv::Mat& mask);

  private:
    // The program around, and besides what it says the session's own cancel.
    class Host : public SessionHost {
      public:
        explicit Host(SessionHost& program) : m_program(program) {}
        void throwIfInterrupted() override;
        bool onProgress(const RequestProgress& progress) override {
            return m_program.onProgress(progress);
        }
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
        int requests = 0;  // that the engine's history holds of it, as its last
        bool hasResult = false;
        KeptMask mask;
        UserMarks::Kept marks;
    };

    void take(Step& step);
    void make(Step& step);
    void applyMarks(Step& step);
    void applyDrawn(const Step& drawn, Step& step);
    bool isSingleRequest(const Step& step) const;
    bool hasObject() const;
    void startAfresh(Operation operation);
    void leaveEngineBehind();
    void holdPhoto();
    void askEngine(const Step& drawn);
    void request(const Request& request, bool edit);
    std::vector<BorderMark> borderMarks(const Step& drawn) const;
    void noteMarks(const Step& drawn, const cv::Mat& before);
    void noteSaid(const Step& drawn, bool hadObject);
    void notePainted(bool hadObject);
    void noteRegion(const Drawing& drawing, bool hadObject);
    void findWhole(const Step& drawn, Step& step);
    cv::Mat candidatesFor(const Step& drawn, Step& step);
    Drawing surroundingsOf(const Step& drawn) const;
    cv::Mat firstCandidates(Step& step);
    void stepBack();
    void stepForward();
    void showKept();
    bool shownHasResult() const;
    void requireEngineAtShown();
    void bringEngineToShown();
    bool hasTime() const;

    const Photo& m_photo;
    Host m_host;
    EngineCalls m_engine;
    Stats& m_stats;
    cv::Mat m_result;
    bool m_hasResult = false;
    UserMarks m_marks;
    cv::Mat m_painted;                 // marker codes of the painted marks being applied
    std::vector<ShownStep> m_steps;    // every step that can be undone or redone
    std::size_t m_shown = 0;           // of them, from the first
    std::size_t m_newest = 0;          // steps up to which the engine can redo
    bool m_engineIsElsewhere = false;  // than at the steps shown
    EngineCalls::Wanted m_wanted = EngineCalls::Wanted::kPicture;  // of the step being applied
    int m_requestsMade = 0;          // by the step being applied, into the engine's history
    std::size_t m_stepsApplied = 0;  // undo and redo count, too
    std::string m_stage;             // of the step being applied, in the statistics
    double m_budget = 0.0;           // seconds
    std::chrono::steady_clock::time_point m_stepStart;
};
