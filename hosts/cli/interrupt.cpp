#include "interrupt.h"

#include <poll.h>
#include <pthread.h>

#include <csignal>

#include "errors.h"
#include "interface/segmentation_core.h"

namespace {

constexpr int kPollMilliseconds = 100;  // longest that an interrupt goes unnoticed while waiting

std::atomic<int> receivedSignal{0};

sigset_t watchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

void watch(const std::atomic<bool>& ending) {
    const sigset_t signals = watchedSignals();
    for (;;) {
        int signal = 0;
        sigwait(&signals, &signal);
        if (ending) {
            return;
        }
        // The note comes before the cancel: a new engine forgets a pending cancel, and who made one
        // then still finds the note.
        receivedSignal = signal;
        cancelSegmentation();
    }
}

}  // namespace

InterruptWatch::InterruptWatch() {
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_thread = std::thread([this] { watch(m_ending); });
}

InterruptWatch::~InterruptWatch() {
    m_ending = true;
    pthread_kill(m_thread.native_handle(), SIGTERM);
    m_thread.join();
}

bool interrupted() {
    return receivedSignal != 0;
}

void throwIfInterrupted() {
    if (interrupted()) {
        throw Interrupted(receivedSignal);
    }
}

void waitUntilReady(int fd, short events) {
    pollfd waited{fd, events, 0};
    do {
        throwIfInterrupted();
    } while (poll(&waited, 1, kPollMilliseconds) == 0);
}
