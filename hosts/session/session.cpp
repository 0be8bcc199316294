#include "session/session.h"

#include <opencv2/imgproc.hpp>
#include <utility>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "session/painted_marks.h"
#include "session/photo_border.h"
#include "session/snapped_loop.h"
#include "session/trusted_changes.h"
#include "session/whole_object.h"

namespace {

void requireChoices(const Step& step) {
    if (step.passes && (*step.passes < 1 || *step.passes > kMostPasses)) {
        throw UserError(std::to_string(*step.passes) + " passes are not possible; make 1 to " +
                        std::to_string(kMostPasses));
    }
    if (!step.start.empty() && regionStartNamed(step.start) == nullptr) {
        throw UserError("there is no start \"" + step.start + "\"; leave it out for the best one");
    }
}

}  // namespace

void Session::Host::throwIfInterrupted() {
    m_program.throwIfInterrupted();
    const std::lock_guard<std::mutex> lock(m_access);
    throwIfCancelled();
}

void Session::Host::throwIfCancelled() const {
    if (m_cancelled) {
        throw UserError("cancelled; the session is as it was before",
                        UserError::Reason::kCancelled);
    }
}

void Session::Host::cancel() {
    const std::lock_guard<std::mutex> lock(m_access);
    if (m_inStep) {
        m_cancelled = true;
        cancelSegmentation();
    }
}

void Session::Host::beginStep() {
    const std::lock_guard<std::mutex> lock(m_access);
    m_inStep = true;
    m_cancelled = false;
}

void Session::Host::endStep() {
    const std::lock_guard<std::mutex> lock(m_access);
    throwIfCancelled();
    m_inStep = false;
}

bool Session::Host::abandonStep() {
    const std::lock_guard<std::mutex> lock(m_access);
    m_inStep = false;
    return std::exchange(m_cancelled, false);
}

Session::Session(const Photo& photo, SessionHost& host, Stats& stats)
    : m_photo(photo),
      m_host(host),
      m_engine(m_host),
      m_stats(stats),
      m_result(cv::Mat::zeros(photo.size(), CV_8UC1)),
      m_marks(photo.size()) {
    setTimeLimit(0.0);
    m_stats.measure("take photograph", [&] { m_engine.take(m_photo); });
}

void Session::setTimeLimit(double seconds) {
    if (!(seconds >= 0.0)) {  // the engine would take it for its own limit
        throw UserError("a time limit is 0 seconds, for none, or more");
    }
    segcore_set_time_limit(seconds);
}

void Session::setTimeBudget(double seconds) {
    if (!(seconds >= 0.0)) {
        throw UserError("a time budget is 0 seconds, for none, or more");
    }
    m_budget = seconds;
}

bool Session::hasTime() const {
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - m_stepStart;
    return m_budget == 0.0 || spent.count() < m_budget;
}

Step Session::apply(const Step& step) {
    const std::string number = "step " + std::to_string(m_stepsApplied + 1);
    m_stage = number + ", " + (step.edit ? "edit " : "") + nameOf(step.operation);
    m_stepStart = std::chrono::steady_clock::now();
    Step made = step;
    try {
        take(made);
    } catch (const UserError& error) {
        throw UserError(number + " (" + nameOf(step.operation) + "): " + error.what(),
                        error.reason);
    }
    ++m_stepsApplied;
    return made;
}

void Session::take(Step& step) {
    const std::size_t shownBefore = m_shown;
    m_requestsMade = 0;
    m_host.beginStep();
    try {
        make(step);
    } catch (...) {
        m_engineIsElsewhere = m_host.abandonStep() || m_engineIsElsewhere || m_requestsMade > 0 ||
                              m_shown != shownBefore;
        m_shown = shownBefore;
        showKept();
        throw;
    }
}

void Session::make(Step& step) {
    if (step.operation == Operation::kUndo || step.operation == Operation::kRedo) {
        step.operation == Operation::kUndo ? stepBack() : stepForward();
        m_host.throwIfInterrupted();
        m_host.endStep();
        return showKept();
    }
    applyMarks(step);
    ShownStep made{m_requestsMade, m_hasResult, KeptMask(m_result), m_marks.kept()};
    m_steps.reserve(m_shown + 1);
    m_host.throwIfInterrupted();
    m_host.endStep();
    // From here on nothing fails.
    m_steps.resize(m_shown);
    m_steps.push_back(std::move(made));
    m_newest = ++m_shown;
}

void Session::applyMarks(Step& step) {
    requireChoices(step);
    if (removes(step.operation) && !m_hasResult) {
        throw UserError(std::string(nameOf(step.operation)) +
                        " has nothing to remove from; mark the object first, for example by a box");
    }
    if (step.operation == Operation::kMarks) {
        m_painted =
            paintedMarks(m_host.marksPicture(step.marksFile), step.marksFile, m_photo.size());
    }
    if (isSnappedLoop(step.operation)) {
        return applyDrawn(snapLoop(step, m_photo, m_host, m_stats), step);
    }
    applyDrawn(step, step);
}

// `drawn` is what the engine is asked for, which for a loop that snaps is the plain loop found.
void Session::applyDrawn(const Step& drawn, Step& step) {
    const bool whole = step.correction == Correction::kWholeObject && !step.edit;
    if (whole && !isSingleRequest(step)) {
        return findWhole(drawn, step);
    }
    const cv::Mat before = m_result;
    if (step.correction) {
        startAfresh(step.operation);
    } else {
        requireEngineAtShown();
    }
    m_wanted = step.correction ? EngineCalls::Wanted::kMask : EngineCalls::Wanted::kPicture;
    askEngine(drawn);
    if (step.correction) {
        leaveEngineBehind();
    }
    if (step.toBorder && !step.edit && cv::countNonZero(before) > 0) {
        m_result = m_result.clone();
        carryToBorder(borderMarks(drawn), before, m_result);
    }
    noteMarks(drawn, before);
}

bool Session::isSingleRequest(const Step& step) const {
    return !hasObject() && step.passes == 1 && step.start.empty() && isRegion(step.operation);
}

bool Session::hasObject() const {
    return m_hasResult && cv::countNonZero(m_result) > 0;
}

void Session::startAfresh(Operation operation) {
    m_engineIsElsewhere = true;
    holdPhoto();
    m_engine.reset();
    // An empty mask on display would clip the last rows and columns of what is added; without one, a
    // mark that removes would add.
    if (m_hasResult && (removes(operation) || hasObject())) {
        m_engine.show(m_result, EngineCalls::Wanted::kMask);
    }
}

// The engine's history holds nothing of the steps before.
void Session::leaveEngineBehind() {
    m_engineIsElsewhere = true;
    m_requestsMade = 0;
}

void Session::holdPhoto() {
    if (!m_engine.holds(m_photo)) {
        m_engine.take(m_photo);
    }
}

void Session::askEngine(const Step& drawn) {
    if (drawn.operation != Operation::kMarks) {
        return request(requestFor(drawn, m_photo.size()), drawn.edit);
    }
    if (!m_hasResult) {
        return request(firstPaintedRequest(m_painted), false);
    }
    for (const int code : {SEGCORE_MARK_CANDIDATE, SEGCORE_MARK_OBJECT, SEGCORE_MARK_BACKGROUND}) {
        if (const auto painted = paintedRequest(m_painted, code, m_result)) {
            request(*painted, false);
        }
    }
}

void Session::request(const Request& request, bool edits) {
    m_host.throwIfInterrupted();
    m_engineIsElsewhere = true;
    m_stats.measure(m_stage, [&] {
        edits ? m_engine.edit(request, m_wanted) : m_engine.segment(request, m_wanted);
    });
    m_engineIsElsewhere = false;
    m_hasResult = m_engine.hasMask();
    m_result = m_hasResult ? m_engine.mask() : cv::Mat::zeros(m_photo.size(), CV_8UC1);
    ++m_requestsMade;
}

// In the order of the requests that they became.
std::vector<BorderMark> Session::borderMarks(const Step& drawn) const {
    if (drawn.operation != Operation::kMarks) {
        return {
            {drawingOf(drawn, m_photo.size()), removes(drawn.operation), isBrush(drawn.operation)}};
    }
    const cv::Rect all({0, 0}, m_photo.size());
    return {{{all, m_painted == SEGCORE_MARK_CANDIDATE}, false, false},
            {{all, m_painted == SEGCORE_MARK_OBJECT}, false, true},
            {{all, m_painted == SEGCORE_MARK_BACKGROUND}, true, true}};
}

void Session::noteMarks(const Step& drawn, const cv::Mat& before) {
    const bool hadObject = cv::countNonZero(before) > 0;
    if (hadObject) {
        m_marks.markChanges(before, m_result);
    }
    noteSaid(drawn, hadObject);
}

// What a mark says by itself, whatever became of it.
void Session::noteSaid(const Step& drawn, bool hadObject) {
    if (drawn.operation == Operation::kMarks) {
        return notePainted(hadObject);
    }
    const Drawing drawing = drawingOf(drawn, m_photo.size());
    if (isBrush(drawn.operation) || drawn.edit) {
        m_marks.mark(drawing,
                     removes(drawn.operation) ? SEGCORE_MARK_BACKGROUND : SEGCORE_MARK_OBJECT);
        if (!removes(drawn.operation) && m_marks.hasRegion() && !m_marks.isWithinRegion(drawing)) {
            m_marks.addRegion(surroundingsOf(drawn));
        }
    } else if (!removes(drawn.operation)) {
        noteRegion(drawing, hadObject);
    }
}

void Session::notePainted(bool hadObject) {
    const cv::Rect all({0, 0}, m_photo.size());
    const cv::Mat region = m_painted == SEGCORE_MARK_CANDIDATE;
    const cv::Mat object = m_painted == SEGCORE_MARK_OBJECT;
    if (cv::countNonZero(region) > 0) {
        noteRegion({all, region}, hadObject);
    }
    m_marks.mark({all, object}, SEGCORE_MARK_OBJECT);
    m_marks.mark({all, m_painted == SEGCORE_MARK_BACKGROUND}, SEGCORE_MARK_BACKGROUND);
    if (m_marks.hasRegion() && !m_marks.isWithinRegion({all, object})) {
        m_marks.addRegion({all, spread(object, kMarkSpread)});
    }
}

// An object that was found without a box or loop may lie outside of one that comes later.
void Session::noteRegion(const Drawing& drawing, bool hadObject) {
    if (hadObject && !m_marks.hasRegion()) {
        const cv::Rect all({0, 0}, m_photo.size());
        m_marks.addRegion({all, cv::Mat(all.size(), CV_8UC1, cv::Scalar(255))});
    }
    m_marks.addRegion(drawing);
}

void Session::findWhole(const Step& drawn, Step& step) {
    m_engineIsElsewhere = true;
    const bool corrects = hasObject();
    noteSaid(drawn, corrects);
    const cv::Mat candidates = candidatesFor(drawn, step);
    holdPhoto();
    const bool exact = step.passes.has_value();
    const int usual = corrects || m_marks.hasRegion() ? kUsualPasses : kPassesWithoutRegion;
    const FoundObject found = m_stats.measure(m_stage, [&] {
        return findObject(m_engine, {m_marks, candidates, step.passes.value_or(usual),
                                     [&] { return exact || hasTime(); }});
    });
    step.passes = found.passes;
    cv::Mat mask = found.mask;
    if (corrects && isBrush(drawn.operation)) {
        keepTrustedChanges(m_result, drawingOf(drawn, m_photo.size()), mask);
    }
    m_result = mask;
    m_hasResult = true;
    leaveEngineBehind();
}

// Where the object is looked for first: the last result as the mark changes it.
cv::Mat Session::candidatesFor(const Step& drawn, Step& step) {
    // In a region where nothing was found a stroke tells more than the region does, and what is to be
    // removed is never a place to look.
    const bool tellsMore =
        removes(drawn.operation) || (isBrush(drawn.operation) && m_marks.hasRegion());
    if (!hasObject() && !tellsMore) {
        return firstCandidates(step);
    }
    cv::Mat candidates = m_result.clone();
    if (drawn.operation == Operation::kMarks) {
        candidates.setTo(255, m_painted == SEGCORE_MARK_CANDIDATE);
        candidates.setTo(255, spread(m_painted == SEGCORE_MARK_OBJECT, kMarkSpread));
        candidates.setTo(0, spread(m_painted == SEGCORE_MARK_BACKGROUND, kMarkSpread));
        return candidates;
    }
    const Drawing around = surroundingsOf(drawn);
    candidates(around.where).setTo(removes(drawn.operation) ? 0 : 255, around.inside);
    return candidates;
}

// What a mark is a better guess for than the last result.
Drawing Session::surroundingsOf(const Step& drawn) const {
    return drawingOf(drawn, m_photo.size(), spreadReach(m_photo.size()));
}

cv::Mat Session::firstCandidates(Step& step) {
    if (!isRegion(step.operation)) {
        return m_marks.firstCandidates();
    }
    const RegionStart* named = regionStartNamed(step.start);
    if (named == &kLoopStart || (named == nullptr && isLoop(step.operation))) {
        step.start = kLoopStart.name;
        return loopStart(m_photo, m_marks.region());
    }
    const ChosenStart chosen = m_stats.measure(m_stage + ", start", [&] {
        return chooseBoxStart(m_engine, m_photo, m_marks.region(), named,
                              [this] { return hasTime(); });
    });
    step.start = chosen.start->name;
    return chosen.candidates;
}

void Session::stepBack() {
    if (!canUndo()) {
        throw UserError("there is nothing to undo; remove the undo or put a mark before it");
    }
    const int requests = m_steps[m_shown - 1].requests;
    if (requests == 0) {
        --m_shown;
        m_engineIsElsewhere = true;
        return;
    }
    requireEngineAtShown();
    --m_shown;
    for (int left = requests; left > 0; --left) {
        m_stats.measure(m_stage, [&] { m_engine.stepBack(); });
    }
    requireEngineAtShown();
}

void Session::stepForward() {
    if (!canRedo()) {
        throw UserError("there is nothing to redo; remove the redo or put an undo before it");
    }
    const int requests = m_steps[m_shown].requests;
    if (requests == 0) {
        ++m_shown;
        m_engineIsElsewhere = true;
        return;
    }
    requireEngineAtShown();
    ++m_shown;
    m_engineIsElsewhere = m_shown > m_newest;
    for (int left = requests; left > 0 && !m_engineIsElsewhere; --left) {
        m_stats.measure(m_stage, [&] { m_engine.stepForward(); });
    }
    requireEngineAtShown();
}

bool Session::shownHasResult() const {
    return m_shown > 0 && m_steps[m_shown - 1].hasResult;
}

void Session::showKept() {
    m_hasResult = shownHasResult();
    m_result = m_hasResult ? m_steps[m_shown - 1].mask.unpacked(m_photo.size())
                           : cv::Mat::zeros(m_photo.size(), CV_8UC1);
    m_marks = m_shown > 0 ? UserMarks(m_steps[m_shown - 1].marks, m_photo.size())
                          : UserMarks(m_photo.size());
}

void Session::requireEngineAtShown() {
    // The engine shows none where its history ends: after 31 masks, or after the last reset.
    if (!m_engineIsElsewhere && m_engine.hasMask() == shownHasResult()) {
        return;
    }
    try {
        m_stats.measure(m_stage, [&] { bringEngineToShown(); });
    } catch (const UserError& error) {
        if (error.reason == UserError::Reason::kCancelled ||
            error.reason == UserError::Reason::kEndedByObserver) {
            throw;
        }
        throw UserError(std::string("the mask could not be put back (") + error.what() +
                            "); free some memory and try again",
                        UserError::Reason::kOutOfMemory);
    }
}

// The reset also takes down the flag of a cancel or of the time limit, which refuses every request.
void Session::bringEngineToShown() {
    m_engineIsElsewhere = true;  // until all of this has worked; else it is tried again next time
    holdPhoto();
    m_engine.reset();
    m_newest = m_shown;
    if (shownHasResult()) {
        m_engine.show(m_steps[m_shown - 1].mask.unpacked(m_photo.size()),
                      EngineCalls::Wanted::kPicture);
    }
    m_engineIsElsewhere = false;
}

cv::Mat Session::preview() {
    m_stage = "mask back into the engine";
    requireEngineAtShown();
    return m_engine.blended();
}

cv::Mat Session::previewOf(const cv::Mat& mask) {
    holdPhoto();
    m_engineIsElsewhere = true;
    m_engine.reset();
    m_engine.show(mask.clone(), EngineCalls::Wanted::kPicture);  // the engine takes all rows as one
    return m_engine.blended();
}
