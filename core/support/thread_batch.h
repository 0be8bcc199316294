// Worker threads of one phase of a computation: started one by one, joined in the same order.
#pragma once

#include <pthread.h>

#include <vector>

#include "support/log.h"

class ThreadBatch {
  public:
    // Room for `capacity` threads, so that starting one never allocates here.
    explicit ThreadBatch(int capacity) { m_threads.reserve(static_cast<std::size_t>(capacity)); }
    ~ThreadBatch() { join(); }
    ThreadBatch(const ThreadBatch&) = delete;
    ThreadBatch& operator=(const ThreadBatch&) = delete;

    // Runs `entry` on a new thread. Where none is to be had, `work` (what `entry` does before it
    // ends its thread) runs here instead, and the call returns when it is done.
    void start(void* (*entry)(void*), void (*work)(void*), void* argument) {
        pthread_t thread;
        const int failure = pthread_create(&thread, nullptr, entry, argument);
        if (failure == 0) {
            m_threads.push_back(thread);
        } else {
            SEGCORE_LOG_ERROR("Cannot start a thread (error %d), its work runs on the caller",
                              failure);
            work(argument);
        }
    }

    void join() {
        for (const pthread_t thread : m_threads) {
            pthread_join(thread, nullptr);
        }
        m_threads.clear();
    }

  private:
    std::vector<pthread_t> m_threads;
};
