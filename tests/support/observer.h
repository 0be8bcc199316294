// An observer of the library's requests for as long as it lives. One at a time.
#pragma once

#include <functional>
#include <utility>

#include "interface/segmentation_core.h"

class ScopedObserver {
  public:
    using Answer = std::function<int(const segcore_progress&)>;

    explicit ScopedObserver(Answer answer) : m_answer(std::move(answer)) {
        segcore_set_observer(
            [](const segcore_progress* progress, void* user) {
                return static_cast<ScopedObserver*>(user)->m_answer(*progress);
            },
            this);
    }
    ~ScopedObserver() { segcore_set_observer(nullptr, nullptr); }
    ScopedObserver(const ScopedObserver&) = delete;
    ScopedObserver& operator=(const ScopedObserver&) = delete;

  private:
    const Answer m_answer;
};
