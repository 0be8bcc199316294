#include "support/scenes.h"

#include <algorithm>
#include <random>

namespace {

constexpr int kBar = 24;

std::size_t areaOf(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

// Only the generator's raw output is used: the library's distributions differ between systems.
class Noise {
  public:
    int upTo(int range) { return static_cast<int>(m_generator() % static_cast<unsigned>(range)); }

  private:
    std::mt19937 m_generator{2007};
};

std::uint32_t word(int blue, int green, int red) {
    return 0xFF000000U | static_cast<std::uint32_t>(red) << 16 |
           static_cast<std::uint32_t>(green) << 8 | static_cast<std::uint32_t>(blue);
}

template <typename Colour>
Scene paint(std::string name, int width, int height, std::vector<Disc> discs, Colour colour) {
    Scene scene{std::move(name), width, height, {}, std::move(discs)};
    scene.pixels.reserve(areaOf(width, height));
    Noise noise;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            scene.pixels.push_back(colour(scene.isObject(x, y), x, y, noise));
        }
    }
    return scene;
}

auto discOnGradient(int width, int height) {
    return [=](bool object, int x, int y, Noise& noise) {
        const int n = noise.upTo(8);
        return object ? word(30 + n, 40 + noise.upTo(8), 190 + n)
                      : word(90 + 120 * x / width + n, 70 + 90 * y / height + n, 20 + n);
    };
}

Disc middleDisc(int width, int height) {
    return {width / 2, height / 2, std::min(width, height) / 4};
}

Scene named(Scene scene, const char* name) {
    scene.name = name;
    return scene;
}

}  // namespace

bool Scene::isObject(int x, int y) const {
    return std::any_of(discs.begin(), discs.end(),
                       [=](const Disc& disc) { return disc.contains(x, y); });
}

double Scene::errorRate(const std::vector<std::uint8_t>& mask) const {
    int wrong = 0;
    for (int y = 0, i = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, ++i) {
            wrong += (mask[static_cast<std::size_t>(i)] == 0) != isObject(x, y) ? 1 : 0;
        }
    }
    return wrong / static_cast<double>(areaOf(width, height));
}

Scene makeDiscScene(int width, int height) {
    return paint("disc", width, height, {middleDisc(width, height)}, discOnGradient(width, height));
}

const Scene& discScene() {
    static const Scene scene = makeDiscScene(160, 120);
    return scene;
}

const Scene& largeDiscScene() {
    static const Scene scene = named(makeDiscScene(640, 480), "large_disc");
    return scene;
}

const Scene& letterboxScene() {
    static const Scene scene =
        paint("letterbox", 160, 144, {middleDisc(160, 144)},
              [inner = discOnGradient(160, 144)](bool object, int x, int y, Noise& noise) {
                  const bool bar = y < kBar || y >= 144 - kBar;
                  return bar ? word(0, 0, 0) : inner(object, x, y, noise);
              });
    return scene;
}

const Scene& greyScene() {
    static const Scene scene = paint("grey", 160, 120, {middleDisc(160, 120)},
                                     [](bool object, int x, int /*y*/, Noise& noise) {
                                         const int v = (object ? 200 : 40 + x / 4) + noise.upTo(8);
                                         return word(v, v, v);
                                     });
    return scene;
}

const Scene& lineScene() {
    static const Scene scene = paint("line", 1, 90, {{0, 45, 20}}, discOnGradient(1, 90));
    return scene;
}

const Scene& islandsScene() {
    static const Scene scene =
        paint("islands", 200, 120, {{55, 60, 25}, {145, 60, 25}}, discOnGradient(200, 120));
    return scene;
}

const Scene& noiseScene() {
    static const Scene scene =
        paint("noise", 120, 90, {}, [](bool /*object*/, int /*x*/, int /*y*/, Noise& noise) {
            const int blue = noise.upTo(256);
            const int green = noise.upTo(256);
            return word(blue, green, noise.upTo(256));
        });
    return scene;
}

const std::vector<const Scene*>& allScenes() {
    static const std::vector<const Scene*> scenes = {
        &discScene(), &largeDiscScene(), &letterboxScene(), &greyScene(),
        &lineScene(), &islandsScene(),   &noiseScene()};
    return scenes;
}
