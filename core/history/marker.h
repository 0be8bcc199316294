// The process-wide store that every stage shares: the photograph, the working images, the current
// stroke, the region of interest and the engine's flags.
//
// Threads: m_exitApp may be raised from a second thread at any time; everything else belongs to the
// one thread that drives the engine.
//
// Conventions used throughout the library:
// - Pixel (x, y) lies at row start y * widthStep, byte x * channels; three-channel images hold the
//   host's channels 0, 1, 2 (blue, green, red for the usual pixel word).
// - Labels, marks and strokes have the codes of support/codes.h.
// - "Photo size" is the host's photograph, "working size" the reduced image that is segmented.
#pragma once

#include <opencv2/core/core_c.h>

#include <atomic>
#include <vector>

#include "support/codes.h"
#include "support/export.h"

struct strokeInfo {
    std::vector<int> m_points;  // x, y, x, y, ... in photo pixels
    int m_strokeType = 0;
};

class SEGCORE_DATA_API VORNSEMarker {
  public:
    static IplImage* m_originalImage;  // photo size, 3 channels
    static int m_originalWidth;
    static int m_originalHeight;
    static IplImage* m_srcImage;  // working size, 3 channels
    static int m_width;
    static int m_height;
    static IplImage* m_labelImage;  // working size, 1 channel, label codes
    static IplImage* m_prevResult;  // photo size, 1 channel, the mask shown when a request starts
    static IplImage* m_texHor;      // working size, 1 channel, grey photographs only
    static IplImage* m_texVer;
    static int m_xMinBBox;  // region of interest in working pixels
    static int m_xMaxBBox;
    static int m_yMinBBox;
    static int m_yMaxBBox;
    static double m_noiseLevel;  // added to the diagonal of singular covariances
    static bool m_isGreyScale;
    static bool m_isHomogenous;
    static std::atomic<bool> m_exitApp;
    static strokeInfo currentStroke;

    // Does nothing; the counterpart of dellocator.
    static void allocator();
    // Puts the flags and the noise level at their start values. Forgets m_labelImage without
    // releasing it: callers run this on a fresh store.
    static void initializer();
    // Forgets the marks of an edit: label image, previous result, flags and stroke points. The
    // photograph and what was computed from it stay.
    static void resetMarkers();
    // Releases every image and empties the stroke.
    static void dellocator();
};

static_assert(std::atomic<bool>::is_always_lock_free, "the cancel flag is polled in inner loops");
