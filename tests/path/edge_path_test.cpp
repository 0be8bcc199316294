#include "path/edge_path.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "history/marker.h"
#include "support/image.h"

namespace {

struct Scene {
    ImagePtr image;
    ImagePtr labels;
};

Scene randomScene(int width, int height, unsigned seed, int labelCodes) {
    std::mt19937 random(seed);
    Scene scene = {createImage(width, height, 3), createImage(width, height, 1)};
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < 3 * width; ++i) {
            rowOf(scene.image.get(), y)[i] = static_cast<std::uint8_t>(random() % 256);
        }
        for (int x = 0; x < width; ++x) {
            rowOf(scene.labels.get(), y)[x] =
                static_cast<std::uint8_t>(random() % static_cast<unsigned>(labelCodes));
        }
    }
    return scene;
}

// Cost of a permitted step between two neighbouring pixels, straight from the definition; infinite
// across the border of the object.
double stepCost(const Scene& scene, int y1, int x1, int y2, int x2, double alpha) {
    const int from = rowOf(scene.labels.get(), y1)[x1];
    const int to = rowOf(scene.labels.get(), y2)[x2];
    const auto side = [](int code) { return code == 0 || code > 4 ? 0 : (code % 2 == 0 ? 1 : 2); };
    if (side(from) + side(to) == 3 && side(from) * side(to) == 2) {
        return HUGE_VAL;
    }
    double colour = 0.0;
    for (int c = 0; c < 3; ++c) {
        colour += std::pow(
            rowOf(scene.image.get(), y1)[3 * x1 + c] - rowOf(scene.image.get(), y2)[3 * x2 + c], 2);
    }
    const double length = std::pow(y2 - y1, 2) + std::pow(x2 - x1, 2);
    return std::sqrt(alpha * length + (1.0 - alpha) * colour / 3.0);
}

// Bellman-Ford: relax every edge until nothing changes.
std::vector<double> shortestCosts(const Scene& scene, int startY, int startX, double alpha) {
    const int width = scene.image->width;
    const int count = width * scene.image->height;
    std::vector<double> cost(static_cast<std::size_t>(count), HUGE_VAL);
    cost[static_cast<std::size_t>(startY * width + startX)] = 0.0;
    for (bool changed = true; changed;) {
        changed = false;
        for (int i = 0; i < count * count; ++i) {
            const int n = i / count;
            const int m = i % count;
            const int y1 = n / width;
            const int x1 = n % width;
            const int y2 = m / width;
            const int x2 = m % width;
            if (n == m || std::abs(y1 - y2) > 1 || std::abs(x1 - x2) > 1) {
                continue;
            }
            double& known = cost[static_cast<std::size_t>(m)];
            const double offer =
                cost[static_cast<std::size_t>(n)] + stepCost(scene, y1, x1, y2, x2, alpha);
            changed = changed || offer < known;
            known = std::min(known, offer);
        }
    }
    return cost;
}

void expectShortestPaths(const Scene& scene, int startY, int startX, double alpha) {
    const int width = scene.image->width;
    const int height = scene.image->height;
    const ImagePtr costMap(cvCreateImage(cvSize(width, height), IPL_DEPTH_64F, 1));
    const std::vector<int> parents = find_parent_info(scene.image.get(), scene.labels.get(), startY,
                                                      startX, alpha, costMap.get());
    EXPECT_EQ(parents,
              find_parent_info(scene.image.get(), scene.labels.get(), startY, startX, alpha));
    ASSERT_EQ(parents.size(), static_cast<std::size_t>(width * height));
    const std::vector<double> expected = shortestCosts(scene, startY, startX, alpha);
    for (int n = 0; n < width * height; ++n) {
        const double best = expected[static_cast<std::size_t>(n)];
        const double found = cvGet2D(costMap.get(), n / width, n % width).val[0];
        if (std::isinf(best)) {
            EXPECT_EQ(parents[static_cast<std::size_t>(n)], -1);
            EXPECT_EQ(found, kPathUnreached);
            continue;
        }
        EXPECT_NEAR(found, best, 1e-9 * (1.0 + best));
        double walked = 0.0;
        int node = n;
        for (int steps = 0; node != startY * width + startX; ++steps) {
            ASSERT_LT(steps, width * height);
            const int parent = parents[static_cast<std::size_t>(node)];
            ASSERT_GE(parent, 0);
            walked +=
                stepCost(scene, parent / width, parent % width, node / width, node % width, alpha);
            node = parent;
        }
        EXPECT_NEAR(walked, best, 1e-9 * (1.0 + best));
        EXPECT_EQ(parents[static_cast<std::size_t>(node)], node);
    }
}

TEST(EdgePath, CostsAndParentsMatchBellmanFord) {
    const int sizes[][2] = {{7, 5}, {1, 9}, {9, 1}, {1, 1}, {4, 11}};
    unsigned seed = 0;
    for (const auto& size : sizes) {
        for (const double alpha : {0.0, 0.3, 1.0}) {
            expectShortestPaths(randomScene(size[0], size[1], ++seed, 1), 0, 0, alpha);
            expectShortestPaths(randomScene(size[0], size[1], ++seed, 6), size[1] / 2, size[0] - 1,
                                alpha);
        }
    }
}

TEST(EdgePath, CornerPixelsHaveNoNeighboursOutside) {
    const auto around = [](int y, int x) {
        Node_ node;
        assign_index(node, 3, 4, y, x, 0.5);
        std::vector<int> neighbours;
        for (const Neighbour_& step : node.neighbours) {
            neighbours.push_back(step.neighbour);
        }
        return neighbours;
    };
    EXPECT_EQ(around(0, 0), (std::vector{5, 1, -1, -1, -1, -1, -1, 4}));
    EXPECT_EQ(around(2, 3), (std::vector{-1, -1, -1, 7, 6, 10, -1, -1}));
}

TEST(EdgePath, TheFirstOfTwoEqualOffersStands) {
    Scene scene = randomScene(3, 3, 1, 1);
    cvSetZero(scene.image.get());
    // With alpha 1 and one colour, (2, 1) is reached for 1 + sqrt(2) through (1, 0) and (1, 1); the
    // diagonal step to (1, 1) makes it the later one to be expanded.
    const std::vector<int> parents =
        find_parent_info(scene.image.get(), scene.labels.get(), 0, 0, 1.0);
    EXPECT_EQ(parents[4], 0);
    EXPECT_EQ(parents[7], 3);
}

TEST(EdgePath, WeightsCombineLengthAndColour) {
    Scene scene = randomScene(4, 4, 1, 1);
    cvSetZero(scene.image.get());
    rowOf(scene.image.get(), 3)[3 * 2] = 6;
    rowOf(scene.image.get(), 3)[3 * 2 + 2] = 3;
    EXPECT_DOUBLE_EQ(find_weight(scene.image.get(), 0, 1, 3, 2, 0.5), std::sqrt(12.5));
    rowOf(scene.labels.get(), 3)[2] = label::kProbableObject;
    rowOf(scene.labels.get(), 2)[2] = label::kBackground;
    Node_ node;
    assign_index(node, 4, 4, 3, 2, 0.5);
    assign_weight(scene.image.get(), scene.labels.get(), node, 3, 2, 0.5);
    EXPECT_EQ(node.neighbours[3].weight, kPathUnreached);
    EXPECT_DOUBLE_EQ(node.neighbours[1].weight, std::sqrt(8.0));
    EXPECT_DOUBLE_EQ(node.neighbours[4].weight, std::sqrt(8.5));
}

TEST(EdgePath, BadRequestsGiveNoPath) {
    const Scene scene = randomScene(4, 4, 1, 1);
    const ImagePtr small = createImage(3, 4, 1);
    IplImage* image = scene.image.get();
    IplImage* labels = scene.labels.get();
    for (const std::vector<int>& parents :
         {find_parent_info(nullptr, labels, 0, 0, 0.5), find_parent_info(image, nullptr, 0, 0, 0.5),
          find_parent_info(image, small.get(), 0, 0, 0.5),
          find_parent_info(image, labels, 4, 0, 0.5), find_parent_info(image, labels, 0, -1, 0.5),
          find_parent_info(image, labels, 0, 0, 0.5, nullptr),
          find_parent_info(image, labels, 0, 0, 0.5, small.get())}) {
        EXPECT_TRUE(parents.empty());
    }
}

}  // namespace
