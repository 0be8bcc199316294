#include "support/scenes.h"

#include <algorithm>
#include <random>

bool Scene::isObject(int x, int y) const {
    const int dx = x - width / 2;
    const int dy = y - height / 2;
    const int radius = std::min(width, height) / 4;
    return dx * dx + dy * dy <= radius * radius;
}

double Scene::errorRate(const std::vector<std::uint8_t>& mask) const {
    int wrong = 0;
    for (int i = 0; i < width * height; ++i) {
        const bool inMask = mask[static_cast<std::size_t>(i)] == 0;
        wrong += inMask != isObject(i % width, i / width) ? 1 : 0;
    }
    return static_cast<double>(wrong) / (width * height);
}

Scene makeDiscScene(int width, int height) {
    Scene scene{width, height, {}};
    // Only the generator's raw output is used: the library's distributions differ between systems.
    std::mt19937 random(2007);
    const auto noise = [&] { return static_cast<int>(random() % 8); };
    const auto add = [&](int blue, int green, int red) {
        scene.pixels.push_back(0xFF000000U |
                               static_cast<std::uint32_t>(red << 16 | green << 8 | blue));
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int n = noise();
            if (scene.isObject(x, y)) {
                add(30 + n, 40 + noise(), 190 + n);
            } else {
                add(90 + 120 * x / width + n, 70 + 90 * y / height + n, 20 + n);
            }
        }
    }
    return scene;
}

const Scene& discScene() {
    static const Scene scene = makeDiscScene(160, 120);
    return scene;
}
