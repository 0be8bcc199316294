// The host's observer: told the stages of a request as the public header says.
#pragma once

#include "engine/stage_watcher.h"

// Thrown out of a request whose observer wants no more of it.
struct EndedByObserver {};

// Passes stages on to the host, for as long as an object lives. Whoever watches already goes on
// watching. Without an observer it does nothing.
class ObservedRequest : public StageWatcher {
  public:
    ObservedRequest();
    ~ObservedRequest() override;
    void begins(Stage stage, int pass) override;
    void ends(Stage stage, int pass) noexcept override;
    void seesWorkingMask(const IplImage* mask, int object) override;

  private:
    void tell(int stage, const IplImage* preview);

    StageWatcher* m_before = nullptr;
    bool m_isSet;
    int m_stageTold = -1;
    double m_fraction = 0.0;
};
