// The peak of resident memory as the system tells it.
#pragma once

#include "session/stats.h"

class MemoryPeak : public MemoryMeter {
  public:
    void forgetPeak() override;
    // Since it was last forgotten, or since the program started where the system does not forget.
    double peakMegabytes() override;
};
