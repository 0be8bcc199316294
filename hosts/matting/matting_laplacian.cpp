#include "matting/matting_laplacian.h"

#include <cmath>

namespace {

constexpr double kEpsilon = 1e-6;  // of the paper, for colours of 0 to 1
constexpr int kWindow = 9;

// Number of the plane with the entry of a pixel and the one dy rows below and dx columns right of it.
constexpr size_t planeOf(int dx, int dy) {
    return dy == 0 ? static_cast<size_t>(dx) : static_cast<size_t>(3 + 5 * (dy - 1) + dx + 2);
}

// The window's colours less their mean, so turned and scaled that their products of two are those
// with the inverse of the covariance: rows of the inverse of its Cholesky factor. Double, since flat
// windows have a covariance of hardly more than epsilon in some directions.
void whiten(double (&colour)[kWindow][3]) {
    double mean[3] = {0.0, 0.0, 0.0};
    for (const auto& pixel : colour) {
        for (int c = 0; c < 3; ++c) {
            mean[c] += pixel[c];
        }
    }
    double cov[3][3] = {};
    for (double& m : mean) {
        m /= kWindow;
    }
    for (auto& pixel : colour) {
        for (int c = 0; c < 3; ++c) {
            pixel[c] -= mean[c];
        }
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c <= r; ++c) {
                cov[r][c] += pixel[r] * pixel[c];
            }
        }
    }
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c <= r; ++c) {
            cov[r][c] /= kWindow;
        }
        cov[r][r] += kEpsilon / kWindow;
    }
    const double l00 = std::sqrt(cov[0][0]);
    const double i00 = 1.0 / l00;
    const double l10 = cov[1][0] * i00;
    const double l20 = cov[2][0] * i00;
    const double i11 = 1.0 / std::sqrt(cov[1][1] - l10 * l10);
    const double l21 = (cov[2][1] - l20 * l10) * i11;
    const double i22 = 1.0 / std::sqrt(cov[2][2] - l20 * l20 - l21 * l21);
    for (auto& pixel : colour) {
        pixel[0] *= i00;
        pixel[1] = (pixel[1] - l10 * pixel[0]) * i11;
        pixel[2] = (pixel[2] - l20 * pixel[0] - l21 * pixel[1]) * i22;
    }
}

}  // namespace

MattingLaplacian::MattingLaplacian(const PixelRuns& inner, const PixelRuns& all,
                                   const std::vector<float>& colours,
                                   const std::function<void()>& checkpoint) {
    for (std::vector<float>& plane : m_planes) {
        plane.assign(static_cast<size_t>(all.size()), 0.0F);
    }
    findStretches(inner, all);
    addWindows(inner, all, colours, checkpoint);
}

// All pixels around a run of inner pixels are in the set, so that one run of each row holds them.
void MattingLaplacian::findStretches(const PixelRuns& inner, const PixelRuns& all) {
    m_stretches.reserve(inner.runs().size());
    for (const PixelRun& run : inner.runs()) {
        const int column = run.begin + kRim;
        Stretch stretch{all.find(run.row + kRim, column)->numberOf(column), run.length(), {}};
        for (int row = 0; row <= 2 * kRim; ++row) {
            stretch.toRow[static_cast<size_t>(row)] =
                all.find(run.row + row, column)->numberOf(column) - stretch.first;
        }
        m_stretches.push_back(stretch);
    }
}

void MattingLaplacian::addWindows(const PixelRuns& inner, const PixelRuns& all,
                                  const std::vector<float>& colours,
                                  const std::function<void()>& checkpoint) {
    // The window centred on a pixel has its upper left corner at the same place of the frame of one.
    const PixelRuns centres = grown(inner, 1);
    for (const PixelRun& run : centres.runs()) {
        checkpoint();
        if (run.row < 2 || run.row > inner.height() - 1) {
            continue;  // the window would leave the picture
        }
        int rows[3];
        for (int dy = 0; dy < 3; ++dy) {
            rows[dy] = all.find(run.row + dy, run.begin)->numberOf(run.begin) - run.begin;
        }
        const int begin = std::max(run.begin, 2);
        const int end = std::min(run.end, inner.width());
        for (int x = begin; x < end; ++x) {
            addWindow(colours, rows[0] + x, rows[1] + x, rows[2] + x);
        }
    }
}

// The arguments are the numbers of the first pixels of the window's rows.
void MattingLaplacian::addWindow(const std::vector<float>& colours, int top, int middle,
                                 int bottom) {
    const size_t firsts[3] = {static_cast<size_t>(top), static_cast<size_t>(middle),
                              static_cast<size_t>(bottom)};
    double colour[kWindow][3];
    for (size_t pixel = 0; pixel < kWindow; ++pixel) {
        const float* from = &colours[3 * (firsts[pixel / 3] + pixel % 3)];
        for (size_t c = 0; c < 3; ++c) {
            colour[pixel][c] = static_cast<double>(from[c]);
        }
    }
    whiten(colour);
    for (int a = 0; a < kWindow; ++a) {
        const size_t number = firsts[a / 3] + static_cast<size_t>(a % 3);
        for (int b = a; b < kWindow; ++b) {
            const double alike = colour[a][0] * colour[b][0] + colour[a][1] * colour[b][1] +
                                 colour[a][2] * colour[b][2];
            const double entry = (a == b ? 1.0 : 0.0) - (1.0 + alike) / kWindow;
            m_planes[planeOf(b % 3 - a % 3, b / 3 - a / 3)][number] += static_cast<float>(entry);
        }
    }
}

void MattingLaplacian::multiply(const float* values, const float* extra, float* result) const {
    for (const Stretch& stretch : m_stretches) {
        const float* own = values + stretch.first;
        float* out = result + stretch.first;
        const float* diagonal = m_planes[0].data() + stretch.first;
        const float* added = extra + stretch.first;
        for (int i = 0; i < stretch.length; ++i) {
            out[i] = (diagonal[i] + added[i]) * own[i];
        }
        for (int dy = 0; dy <= kRim; ++dy) {
            const int below = stretch.toRow[static_cast<size_t>(kRim + dy)];
            const int above = stretch.toRow[static_cast<size_t>(kRim - dy)];
            for (int dx = dy == 0 ? 1 : -kRim; dx <= kRim; ++dx) {
                const float* entries = m_planes[planeOf(dx, dy)].data() + stretch.first;
                const float* after = own + below + dx;
                const float* before = own + above - dx;
                const float* mirrored = entries + above - dx;
                for (int i = 0; i < stretch.length; ++i) {
                    out[i] += entries[i] * after[i] + mirrored[i] * before[i];
                }
            }
        }
    }
}
