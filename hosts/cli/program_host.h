// The command line as a session sees it: interrupts, and marks in image files.
#pragma once

#include "interrupt.h"
#include "photo.h"
#include "session/session_host.h"

class ProgramHost : public SessionHost {
  public:
    explicit ProgramHost(std::uint64_t maxPixels) : m_maxPixels(maxPixels) {}

    void throwIfInterrupted() override { ::throwIfInterrupted(); }
    cv::Mat marksPicture(const std::string& path) override {
        return readImageUnchanged(path, m_maxPixels);
    }

  private:
    std::uint64_t m_maxPixels;  // of a picture of marks
};
