// A host's editing session on the exported calls: one photograph, marks drawn as a host draws them,
// and the buffers that the results arrive in. One at a time, since the engine is process-wide.
#pragma once

#include <cstdint>
#include <vector>

#include "interface/segmentation_core.h"
#include "support/scenes.h"

class HostSession {
  public:
    // Stores the photograph and starts the engine; the destructor takes both down.
    explicit HostSession(const Scene& scene);
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // Requests; each returns processSegment's result. Points are x, y pairs in photograph pixels.
    // Loops and boxes add their inside as candidate.
    int box(int left, int top, int right, int bottom) {
        return loop({left, top, right, top, right, bottom, left, bottom});
    }
    int loop(const std::vector<int>& points) {
        return request(points, loopMarkers(points), SEGCORE_LOOP_ADD);
    }
    int request(std::vector<int> points, const std::vector<int>& markers, int strokeType);

    void undo() { step(::undo); }
    void redo() { step(::redo); }
    void cutOut(const std::vector<int>& markers);
    static std::vector<int> fetchOutline();

    std::vector<int> noMarkers() const { return std::vector<int>(photo.size(), SEGCORE_MARK_NONE); }
    std::vector<int> loopMarkers(const std::vector<int>& points) const;
    std::vector<int> rectangle(int x, int y, int columns, int rows, int code) const;

    int width;
    int height;
    std::vector<std::uint32_t> photo;
    std::vector<std::uint32_t> blended;  // the photograph again before every call
    std::vector<std::uint8_t> mask;      // keeps the last mask delivered; 255 at the start

  private:
    void step(decltype(::undo) call);
};
