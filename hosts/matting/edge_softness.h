// How soft the photograph's edge is along a mask's outline.
#pragma once

#include <functional>
#include <vector>

#include "matting/outline_band.h"
#include "matting/outline_squares.h"

struct EdgeShape {
    float sigma = 1.0F;  // deviation of the blur that turns a step into this edge, pixels
    // Share of the colours' variance near the outline that such an edge does not explain, 0 to 1: near 1
    // where object and surroundings look alike.
    float unexplained = 1.0F;
};

class EdgeShapes {
  public:
    static constexpr int kReach = 12;

    // `colours`: three values of 0 to 1 for each pixel of the band, which reaches kReach pixels.
    // `finer`: the shapes in the picture of twice the size, which rule where they are sure; may be null.
    EdgeShapes(const OutlineBand& band, const std::vector<float>& colours, const EdgeShapes* finer,
               const std::function<void()>& checkpoint);

    // Between the centres of the measured squares, interpolated. All of a picture has a shape: far from
    // the outline it is that of the whole outline.
    EdgeShape at(float x, float y) const;

  private:
    static constexpr int kSquare = 16;  // pixels

    void takeOver(const EdgeShapes& finer);

    Squares<EdgeShape, kSquare> m_squares;
};
