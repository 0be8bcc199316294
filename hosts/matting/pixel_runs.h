// A set of pixels near an outline, as stretches of rows. It takes memory for the pixels that it holds,
// not for the picture, and numbers them: values of each pixel are kept in plain arrays beside it.
#pragma once

#include <cstddef>
#include <vector>

struct PixelRun {
    int row;
    int begin;  // first column
    int end;    // the column after the last one
    int first;  // number of the pixel (begin, row); the next ones follow

    int length() const { return end - begin; }
    int numberOf(int column) const { return first + column - begin; }
};

class PixelRuns {
  public:
    PixelRuns() = default;
    // An empty set of pixels of a picture.
    PixelRuns(int width, int height);

    // Adds the pixels [begin, end) of a row, cut at the picture's border. Runs come row by row and
    // from left to right; one that touches or overlaps the last one continues it.
    void add(int row, int begin, int end);

    int width() const { return m_width; }
    int height() const { return m_height; }
    int size() const { return m_size; }  // pixels
    const std::vector<PixelRun>& runs() const { return m_runs; }

    // The runs of a row are those numbered from firstOf(row) to firstOf(row + 1), the latter left out.
    int firstOf(int row) const {
        return row < m_nextRow ? m_firstOfRow[static_cast<size_t>(row)] : count();
    }
    // The run that holds a pixel, null for none.
    const PixelRun* find(int row, int column) const;

  private:
    int count() const { return static_cast<int>(m_runs.size()); }

    int m_width = 0;
    int m_height = 0;
    int m_size = 0;
    int m_nextRow = 0;  // rows from here on have no runs yet
    std::vector<PixelRun> m_runs;
    std::vector<int> m_firstOfRow;
};

// All pixels at most `reach` rows and columns from one of the set, in a picture with a frame of as many
// pixels around it, so that none of them is cut: (x, y) becomes (x + reach, y + reach).
PixelRuns grown(const PixelRuns& pixels, int reach);
