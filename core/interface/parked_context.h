// Parts of the editing context set aside while a call replaces them, so that a call that fails puts
// them back.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstdint>
#include <vector>

#include "engine/hybrid.h"
#include "history/bit_planes.h"

// What initSegmentationEngine replaces.
struct EngineParts {
    VORNSEHybrid* hybrid;
    float resizeFactor;
    IplImage* source;
    IplImage* labels;
    IplImage* textureHorizontal;
    IplImage* textureVertical;
    int width;
    int height;
    double noiseLevel;
    bool grey;
    bool homogenous;
    bool exitApp;

    void take();
    void putBack();
    void release();
};

// What a new photograph and its first request replace besides.
struct PhotoParts {
    IplImage* photo;
    int width;
    int height;
    IplImage* previousResult;
    IplImage* markers;
    std::vector<int> strokePoints;
    int strokeType;
    BitPlanes planes;
    int planesWidth;
    int planesHeight;
    int bottom;
    int current;
    int top;
    CvMemStorage* outlineStorage;
    CvSeq* outline;
    bool outlineReady;

    void take();
    void putBack();
    void release();
};

// Takes the parts out of the context. release() when their replacement stands; otherwise the
// destructor releases the replacement and puts the parts back.
template <typename Parts>
class Parked {
  public:
    Parked() { m_parts.take(); }
    ~Parked() {
        if (!m_released) {
            m_parts.putBack();
        }
    }
    Parked(const Parked&) = delete;
    Parked& operator=(const Parked&) = delete;

    void release() {
        m_parts.release();
        m_released = true;
    }

  private:
    Parts m_parts{};
    bool m_released = false;
};
