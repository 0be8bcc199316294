// How soft the photograph's edge is along a mask's outline, and where its middle lies.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "matting/outline_band.h"

struct EdgeShape {
    float sigma = 0.0F;  // deviation of the blur that turns a step into this edge, pixels
    float shift = 0.0F;  // from the mask's outline to the edge's middle, pixels, positive inwards
    float contrast =
        0.0F;  // root of the mean squared distance of the colours at the two sides, 0..1
    float misfit =
        1.0F;            // share of the profile's variance that the blurred step leaves unexplained
    float trust = 0.0F;  // 0 to 1, how far the measure is to be relied upon
};

class EdgeShapes {
  public:
    static constexpr int kCell = 16;  // side of the squares that are measured, pixels

    static constexpr int kReach = 12;

    // `colours`: three values of 0 to 1 for each pixel of the band, which reaches kReach pixels.
    // `finer`: the shapes in the picture of twice the size, which rule where they are sure; may be null.
    EdgeShapes(const OutlineBand& band, const std::vector<float>& colours, const EdgeShapes* finer,
               const std::function<void()>& checkpoint);

    // Between the centres of the measured squares, interpolated. All of a picture has a shape: where
    // there is nothing to measure, that of what is around, of the whole outline, or a common one.
    EdgeShape at(float x, float y) const;

  private:
    const EdgeShape& cell(int column, int row) const {
        return m_cells[static_cast<size_t>(row) * static_cast<size_t>(m_columns) +
                       static_cast<size_t>(column)];
    }
    EdgeShape& cell(int column, int row) {
        return const_cast<EdgeShape&>(std::as_const(*this).cell(column, row));
    }
    void smooth();
    void takeOver(const EdgeShapes& finer);

    int m_columns;
    int m_rows;
    std::vector<EdgeShape> m_cells;
};
