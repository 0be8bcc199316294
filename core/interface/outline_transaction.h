// Takes back what a call that fails half-way made of the outline.
#pragma once

#include <opencv2/core/core_c.h>

#include <utility>

#include "interface/engine_state.h"

// Sets the outline of the latest result aside while a new one is found. Unless committed, the
// destructor puts it back.
class OutlineTransaction {
  public:
    OutlineTransaction()
        : m_storage(std::exchange(storage, nullptr)),
          m_contours(std::exchange(contours, nullptr)),
          m_ready(g_contoursReady) {}
    ~OutlineTransaction() {
        if (!m_committed) {
            std::swap(storage, m_storage);
            contours = m_contours;
            g_contoursReady = m_ready;
        }
        if (m_storage != nullptr) {
            cvReleaseMemStorage(&m_storage);
        }
    }
    OutlineTransaction(const OutlineTransaction&) = delete;
    OutlineTransaction& operator=(const OutlineTransaction&) = delete;

    void commit() { m_committed = true; }

  private:
    CvMemStorage* m_storage;
    CvSeq* m_contours;
    bool m_ready;
    bool m_committed = false;
};
