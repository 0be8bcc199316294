// The process-wide editing context behind the exported calls, and the checks and steps that they
// share.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstdint>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "support/export.h"
#include "support/image.h"

SEGCORE_DATA_API extern VORNSEHybrid* pHybrid;    // null when no engine exists
SEGCORE_DATA_API extern CvMemStorage* storage;    // holds the outline of the latest result
SEGCORE_DATA_API extern CvSeq* contours;          // its first contour
SEGCORE_DATA_API extern int g_exitStatus;         // teardown asked for after the current call
SEGCORE_DATA_API extern IplImage* g_markerImage;  // marks of the pending request, photo size
SEGCORE_DATA_API extern IplImage* g_resultMask;   // mask being delivered, photo size
SEGCORE_DATA_API extern bool g_contoursReady;     // there is an outline to fetch

// Checks: each throws HostError and changes nothing.
void requireSize(int width, int height);
void requirePhoto();
void requireEngine();  // and that it was prepared for a photograph of this size
void requireHistory();
void requireMarkerSize();
void requireBuffer(const void* buffer, const char* name);

// Pixel words of a host as an image of three channels.
ImagePtr imageFromWords(int width, int height, const std::uint32_t* pixels);

// Whether the photograph may be written to a host's buffer.
bool hasPhoto();

// The bodies of the calls that doSegmentationBB runs inside its own. They throw.
void storePhoto(int width, int height, const std::uint32_t* pixels);
void createEngine();
void storeStroke(int count, int* points);
void storeMarkers(int width, int height, const int* values, int strokeType);
// A null blended buffer is left out; everything else is as processSegment says.
void runRequest(std::uint32_t* blended, std::uint8_t* mask);

// Releases photograph, engine, history and outline.
void tearDown() noexcept;
// The last step of the result calls; true after a teardown.
bool tearDownIfExitPending() noexcept;
void releaseOutline() noexcept;

void writePhoto(std::uint32_t* out);

// Finds the contours of g_resultMask into `storage`, and draws them: pixels of exactly 255 in the
// image handed back are the painted outline.
void findOutline();
ImagePtr drawOutline();
void writeMask(std::uint8_t* out);
void paintOutline(const IplImage* outline, std::uint32_t* out);
