// The matting Laplacian of Levin, Lischinski and Weiss ("A closed-form solution to natural image
// matting", 2008) over the pixels near an outline: alpha is to be a linear function of the colour in
// every window of 3 x 3 pixels.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "matting/pixel_runs.h"

// A symmetric matrix with a row for each of some pixels ("inner") and for the pixels up to two rows and
// columns around them ("rim"). Pixels more than two rows or columns apart have no entry.
class MattingLaplacian {
  public:
    static constexpr int kRim = 2;

    // `all` is grown(inner, kRim); `colours` has three values of 0 to 1 for each of its pixels, any
    // for those of the frame. All windows within the picture that hold an inner pixel count.
    MattingLaplacian(const PixelRuns& inner, const PixelRuns& all,
                     const std::vector<float>& colours, const std::function<void()>& checkpoint);

    // result = (matrix + extra on the diagonal) * values in the inner pixels' rows; others are left.
    // All three are numbered as `all`.
    void multiply(const float* values, const float* extra, float* result) const;
    float diagonal(int pixel) const { return m_planes[0][static_cast<size_t>(pixel)]; }

    // An inner pixel's run with the way from its pixels to those of the same column two rows above up
    // to two rows below.
    struct Stretch {
        int first;
        int length;
        std::array<int, 5> toRow;
    };
    const std::vector<Stretch>& stretches() const { return m_stretches; }

  private:
    static constexpr size_t kPlanes = 13;

    void findStretches(const PixelRuns& inner, const PixelRuns& all);
    void addWindows(const PixelRuns& inner, const PixelRuns& all, const std::vector<float>& colours,
                    const std::function<void()>& checkpoint);
    void addWindow(const std::vector<float>& colours, int top, int middle, int bottom);

    // Entries of a pixel with itself, with the two right of it, and with the five in each of the two
    // rows below; the others are the same ones seen from the other pixel.
    std::array<std::vector<float>, kPlanes> m_planes;
    std::vector<Stretch> m_stretches;
};
