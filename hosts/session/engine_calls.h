// The library's calls as a session makes them: on one photograph at a time, masks as images, and
// failures as UserError. The library has one context per process, so there is one object of this
// class at a time. Threads: one.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "session/photo.h"
#include "session/session_host.h"
#include "session/strokes.h"

class EngineCalls {
  public:
    // The host outlives the object. It is told of the progress of all requests. Throws UserError while
    // there is another object.
    explicit EngineCalls(SessionHost& host);
    ~EngineCalls();
    EngineCalls(const EngineCalls&) = delete;
    EngineCalls& operator=(const EngineCalls&) = delete;

    // Has the engine work on `photo`, which outlives that, with an empty history. Throws UserError for
    // a photograph that the engine refuses.
    void take(const Photo& photo);
    bool holds(const Photo& photo) const { return m_photo == &photo; }

    // As a fresh engine on the photograph: no history, no verdict of earlier requests, no cancel. Throws
    // what the host throws for an interruption so far.
    void reset();

    // Whether the engine also paints the picture that blended() hands out. That is a
    // copy of the photograph for each request, and most are never looked at.
    enum class Wanted { kMask, kPicture };

    // Each leaves what is on display afterwards in hasMask() and mask(). The first two throw UserError
    // when they did not come to their end; the engine is then in no known state until reset().
    void segment(const Request& request, Wanted wanted = Wanted::kPicture);
    void edit(const Request& request, Wanted wanted = Wanted::kPicture);
    void stepBack();
    void stepForward();

    // What `segment` would find, at the size that the engine works at, without the time for the rest.
    // Nothing is recorded or put on display. CV_8UC1, 255 object. Throws as `segment` does.
    cv::Mat workingMask(const Request& request);

    // Makes any mask (CV_8UC1, 255 object) what is on display, by an edit. Neither mask() nor, for
    // Wanted::kMask, blended() has it. Throws as `edit` does.
    void show(const cv::Mat& mask, Wanted wanted);

    bool hasMask() const { return m_hasMask; }
    const cv::Mat& mask() const { return m_mask; }  // CV_8UC1, 255 object; empty when there is none

    // Hands over mask(), all 0 when there is none, to who wants to change it; there is none afterwards.
    cv::Mat takeMask();

    // The photograph with the outline of what is on display painted in, CV_8UC3. Not after a call for
    // the mask alone.
    cv::Mat blended();

  private:
    static int onProgress(const struct segcore_progress* progress, void* self);

    void passMarks(const Request& request);
    void passMarks(const std::vector<cv::Point>& stroke, int strokeType);
    cv::Mat marksBuffer();
    template <typename Call>
    void deliver(Wanted wanted, Call&& call);
    void requireDone();
    void showNone();

    SessionHost& m_host;
    const Photo* m_photo = nullptr;
    // A word for each pixel: the marks on the way into the engine, which copies them, and then the
    // blended picture on the way out. Kept, since fresh memory costs more than what is done in it.
    std::unique_ptr<std::uint32_t[]> m_words;
    std::size_t m_capacity = 0;  // in words
    cv::Mat m_mask;
    bool m_hasMask = false;
    std::exception_ptr m_thrown;  // by the host while it was told of progress
    cv::Mat* m_wanted = nullptr;  // where the working mask goes that ends the running request
};
