// Ctrl-C and termination requests. While an InterruptWatch lives, a thread of its own waits for the
// signals and cancels the running segmentation; the rest of the program asks between its steps and
// before it blocks. Waiting in a thread rather than in a signal handler keeps the cancel call an
// ordinary call.
#pragma once

#include <atomic>
#include <thread>

class InterruptWatch {
  public:
    // Blocks SIGINT and SIGTERM in the calling thread and in all threads that it starts later.
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

  private:
    std::atomic<bool> m_ending{false};
    std::thread m_thread;
};

bool interrupted();
void throwIfInterrupted();
// Waits until `fd` is ready for the poll events; throws Interrupted when the user stops the wait.
void waitUntilReady(int fd, short events);
