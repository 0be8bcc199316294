// The command line as a session sees it: interrupts, the kept log and marks in image files.
#pragma once

#include "engine_log.h"
#include "interrupt.h"
#include "photo.h"
#include "session/session_host.h"

class ProgramHost : public SessionHost {
  public:
    void throwIfInterrupted() override { ::throwIfInterrupted(); }
    std::string takeEngineError() override { return ::takeEngineError(); }
    cv::Mat marksPicture(const std::string& path) override { return readImageUnchanged(path); }
};
