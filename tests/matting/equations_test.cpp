#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <random>

#include "matting/alpha_solver.h"
#include "matting/connected_alpha.h"
#include "matting/reduction.h"

namespace {

constexpr int kSide = 20;
constexpr int kPixels = kSide * kSide;
constexpr int kRim = MattingLaplacian::kRim;

struct Picture {
    std::vector<std::uint8_t> bytes;

    explicit Picture(unsigned seed) {
        std::mt19937 random(seed);
        for (int i = 0; i < 3 * kPixels; ++i) {  // smooth with some noise, and a flat corner
            const int x = i / 3 % kSide;
            const int y = i / 3 / kSide;
            const bool isFlat = x + y < 12;
            const int slope = isFlat ? 0 : 4 * x + y * (i % 3);
            const int noise = isFlat ? 0 : static_cast<int>(random() % 40U);
            bytes.push_back(static_cast<std::uint8_t>(60 + slope + noise));
        }
    }
    ColourPlane plane() const { return {{bytes.data(), 3 * kSide, kSide, kSide}, 3}; }
    Eigen::Vector3d colour(int x, int y) const {
        const std::uint8_t* pixel = &bytes[static_cast<size_t>(3 * (y * kSide + x))];
        return Eigen::Vector3d(pixel[0], pixel[1], pixel[2]) / 255.0;
    }
};

// As in the paper, window by window; only windows with an inner pixel.
Eigen::MatrixXd denseLaplacian(const Picture& picture, const PixelRuns& inner) {
    Eigen::MatrixXd laplacian = Eigen::MatrixXd::Zero(kPixels, kPixels);
    for (int cy = 1; cy + 1 < kSide; ++cy) {
        for (int cx = 1; cx + 1 < kSide; ++cx) {
            bool counts = false;
            Eigen::Matrix<double, 3, 9> colours;
            for (int i = 0; i < 9; ++i) {
                colours.col(i) = picture.colour(cx - 1 + i % 3, cy - 1 + i / 3);
                counts |= inner.find(cy - 1 + i / 3, cx - 1 + i % 3) != nullptr;
            }
            if (!counts) {
                continue;
            }
            colours.colwise() -= colours.rowwise().mean().eval();
            const Eigen::Matrix3d covariance =
                colours * colours.transpose() / 9.0 + Eigen::Matrix3d::Identity() * 1e-6 / 9.0;
            const Eigen::Matrix<double, 9, 9> alike =
                colours.transpose() * covariance.inverse() * colours;
            for (int i = 0; i < 9; ++i) {
                for (int j = 0; j < 9; ++j) {
                    laplacian((cy - 1 + i / 3) * kSide + cx - 1 + i % 3,
                              (cy - 1 + j / 3) * kSide + cx - 1 + j % 3) +=
                        (i == j ? 1.0 : 0.0) - (1.0 + alike(i, j)) / 9.0;
                }
            }
        }
    }
    return laplacian;
}

// A slanting band from one side of the picture to the other and some single pixels.
PixelRuns innerPixels() {
    PixelRuns inner(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        inner.add(y, y - 3, y + 4);
        if (y % 5 == 0) {
            inner.add(y, 17, 18);
        }
    }
    return inner;
}

struct Equations {
    Picture picture;
    PixelRuns inner = innerPixels();
    PixelRuns all = grown(inner, kRim);
    MattingLaplacian sparse;
    Eigen::MatrixXd dense;

    explicit Equations(unsigned seed)
        : picture(seed),
          sparse(inner, all, coloursOf(picture.plane(), 0, all, kRim), [] {}),
          dense(denseLaplacian(picture, inner)) {}

    size_t numberOf(int x, int y) const {
        return static_cast<size_t>(all.find(y + kRim, x + kRim)->numberOf(x + kRim));
    }
    // Calls act(number here, number in the dense matrix) for the inner pixels in order.
    template <typename Act>
    void forInner(Act&& act) const {
        for (const PixelRun& run : inner.runs()) {
            for (int x = run.begin; x < run.end; ++x) {
                act(numberOf(x, run.row), run.row * kSide + x);
            }
        }
    }
    Eigen::VectorXd spread(const std::vector<float>& values) const {
        Eigen::VectorXd result = Eigen::VectorXd::Zero(kPixels);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                if (const PixelRun* run = all.find(y + kRim, x + kRim)) {
                    result[y * kSide + x] =
                        static_cast<double>(values[static_cast<size_t>(run->numberOf(x + kRim))]);
                }
            }
        }
        return result;
    }
};

std::vector<float> randomValues(int count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<float> values;
    for (int i = 0; i < count; ++i) {
        values.push_back(static_cast<float>(random() % 1000U) / 999.0F);
    }
    return values;
}

}  // namespace

TEST(MattingLaplacian, IsTheDenseOne) {
    for (unsigned seed = 0; seed < 4; ++seed) {
        const Equations equations(seed);
        const std::vector<float> values = randomValues(equations.all.size(), seed);
        std::vector<float> product(values.size(), 7.0F);
        equations.sparse.multiply(values.data(), std::vector<float>(values.size(), 0.25F).data(),
                                  product.data());
        const Eigen::VectorXd spread = equations.spread(values);
        const Eigen::VectorXd expected = equations.dense * spread + 0.25 * spread;
        std::vector<bool> isInner(values.size());
        equations.forInner([&](size_t here, int there) {
            isInner[here] = true;
            EXPECT_NEAR(static_cast<double>(product[here]), expected[there], 2e-5);
            EXPECT_NEAR(static_cast<double>(equations.sparse.diagonal(static_cast<int>(here))),
                        equations.dense(there, there), 1e-5);
        });
        for (size_t pixel = 0; pixel < values.size(); ++pixel) {
            EXPECT_TRUE(isInner[pixel] || product[pixel] == 7.0F);
        }
    }
}

TEST(AlphaSolver, FindsTheMinimum) {
    for (unsigned seed = 0; seed < 4; ++seed) {
        const Equations equations(seed);
        const int count = equations.inner.size();
        AlphaPrior prior{randomValues(count, seed + 10), randomValues(count, seed + 20)};
        for (float& weight : prior.weight) {
            weight += 0.05F;
        }
        const std::vector<float> start = randomValues(equations.all.size(), seed + 30);
        std::vector<float> alpha = start;
        EXPECT_GT(solveAlpha(equations.inner, equations.sparse, prior, alpha, [] {}), 3);

        // The dense equations of the inner pixels, the others' values moved to the right.
        Eigen::MatrixXd matrix(count, count);
        Eigen::VectorXd right(count);
        std::vector<int> inner;
        std::vector<size_t> here;
        equations.forInner([&](size_t number, int there) {
            here.push_back(number);
            inner.push_back(there);
        });
        Eigen::VectorXd fixed = equations.spread(start);
        for (const int pixel : inner) {
            fixed[pixel] = 0.0;
        }
        const Eigen::VectorXd pull = equations.dense * fixed;
        for (int i = 0; i < count; ++i) {
            const auto index = static_cast<size_t>(i);
            const auto weight = static_cast<double>(prior.weight[index]);
            for (int j = 0; j < count; ++j) {
                matrix(i, j) = equations.dense(inner[index], inner[static_cast<size_t>(j)]);
            }
            matrix(i, i) += weight;
            right[i] = weight * static_cast<double>(prior.target[index]) - pull[inner[index]];
        }
        const Eigen::VectorXd expected = matrix.ldlt().solve(right);
        for (int i = 0; i < count; ++i) {
            // A thousandth of alpha is not to be seen.
            EXPECT_NEAR(static_cast<double>(alpha[here[static_cast<size_t>(i)]]), expected[i],
                        1e-3);
        }
        for (size_t pixel = 0; pixel < alpha.size(); ++pixel) {
            const bool isInner = std::find(here.begin(), here.end(), pixel) != here.end();
            EXPECT_TRUE(isInner || alpha[pixel] == start[pixel]);
        }
    }
}

// The plain definition: the best way from the mask, whose worst pixel counts, found by trying again.
TEST(ConnectedAlpha, HasNoHazeAndNoHoles) {
    for (unsigned seed = 0; seed < 8; ++seed) {
        const Equations equations(seed);
        const std::vector<float> before = randomValues(equations.all.size(), seed);
        std::vector<std::uint8_t> inside(before.size());
        for (size_t pixel = 0; pixel < inside.size(); ++pixel) {
            inside[pixel] = pixel % 20 < 7 ? 1 : 0;
        }
        std::vector<float> after = before;
        connectToOutline(equations.sparse.stretches(), inside, after);
        std::vector<float> expected = before;
        for (const bool ofObject : {true, false}) {
            const auto level = [&](size_t pixel) {
                return ofObject ? expected[pixel] : 1.0F - expected[pixel];
            };
            std::vector<float> reached(before.size());
            for (size_t pixel = 0; pixel < before.size(); ++pixel) {
                reached[pixel] = (inside[pixel] != 0) == ofObject ? level(pixel) : 0.0F;
            }
            for (int again = 0; again < kPixels; ++again) {
                for (const PixelRun& run : equations.inner.runs()) {
                    for (int x = run.begin; x < run.end; ++x) {
                        const size_t pixel = equations.numberOf(x, run.row);
                        for (int near = 0; near < 9; ++near) {
                            const PixelRun* other =
                                equations.all.find(run.row + kRim - 1 + near / 3, x + kRim);
                            const auto number =
                                static_cast<size_t>(other->numberOf(x + kRim - 1 + near % 3));
                            reached[pixel] =
                                std::max(reached[pixel], std::min(level(pixel), reached[number]));
                        }
                    }
                }
            }
            equations.forInner([&](size_t pixel, int) {
                if ((inside[pixel] != 0) != ofObject) {
                    expected[pixel] = ofObject ? reached[pixel] : 1.0F - reached[pixel];
                }
            });
        }
        EXPECT_EQ(after, expected) << seed;
        EXPECT_NE(after, before);
    }
}
