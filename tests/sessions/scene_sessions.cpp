#include <opencv2/core.hpp>
#include <random>

#include "recorder.h"

namespace {

struct Colour {
    int blue;
    int green;
    int red;
};

// A photograph made pixel by pixel: `colour(x, y, noise)`, where every call of noise(n) gives a
// number from 0 to n - 1. Channels are cut off at 0 and 255.
template <typename Paint>
Scene paint(int width, int height, unsigned seed, Paint colour) {
    Scene scene{width, height, {}};
    std::mt19937 random(seed);
    const auto noise = [&random](int range) {
        return static_cast<int>(random() % static_cast<unsigned>(range));
    };
    const auto channel = [](int value) {
        return static_cast<std::uint32_t>(std::min(std::max(value, 0), 255));
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Colour pixel = colour(x, y, noise);
            scene.pixels.push_back(0xFF000000U | channel(pixel.red) << 16U |
                                   channel(pixel.green) << 8U | channel(pixel.blue));
        }
    }
    return scene;
}

bool inDisc(int x, int y, int centreX, int centreY, int radius) {
    return (x - centreX) * (x - centreX) + (y - centreY) * (y - centreY) <= radius * radius;
}

// Object and background share colours, so that the trials of the smoothness weight differ.
Scene mixedScene(int width, int height, unsigned seed) {
    return paint(width, height, seed, [=](int x, int y, auto noise) {
        const bool object = inDisc(x, y, width / 2, height / 2, height / 3);
        const int stripe = (x / 7 + y / 5) % 3 * 28;
        const int grain = noise(60);
        return object ? Colour{70 + stripe + grain, 60 + noise(40), 110 + grain}
                      : Colour{95 + grain, 70 + noise(50), 75 + stripe + noise(30)};
    });
}

// One even background, which the engine tells from others and then lets the first pass come back.
Scene flatScene(int width, int height, unsigned seed) {
    return paint(width, height, seed, [=](int x, int y, auto noise) {
        if (inDisc(x, y, width / 2, height / 2, height / 4)) {
            return Colour{40 + noise(12), 60 + noise(12), 150 + noise(12)};
        }
        // A halo between object and background: where the passes disagree.
        if (inDisc(x, y, width / 2, height / 2, height / 4 + 9)) {
            return Colour{120 + noise(40), 125 + noise(40), 170 + noise(20)};
        }
        return Colour{200 + noise(4), 200 + noise(4), 200 + noise(4)};
    });
}

// The patch in the corner is a colour of its own in the first background model, and too small a part
// of the later ones, which take in the rest of the box.
Scene patchScene(int width, int height, unsigned seed) {
    return paint(width, height, seed, [=](int x, int y, auto noise) {
        if (inDisc(x, y, width / 2, height / 2, height / 4)) {
            return Colour{60 + noise(40), 60 + noise(50), 150 + noise(40)};
        }
        if (x < 12 && y < 24) {
            return Colour{30 + noise(10), 30 + noise(10), 160 + noise(20)};
        }
        if (inDisc(x, y, width / 2, height / 2, height / 4 + 8)) {
            return Colour{120 + noise(60), 110 + noise(60), 140 + noise(60)};
        }
        return Colour{180 + noise(20), 170 + noise(20), 160 + noise(20)};
    });
}

// A background of one colour, whose model has no spread but the noise that is added to it.
Scene evenScene(int width, int height, unsigned seed) {
    return paint(width, height, seed, [=](int x, int y, auto noise) {
        return inDisc(x, y, width / 2, height / 2, height / 4)
                   ? Colour{182 + noise(12), 170 + noise(30), 180 + noise(40)}
                   : Colour{200, 200, 200};
    });
}

// Box, brushes, loops, undo and redo, direct edits, in places that depend on the size alone.
void everyKindOfStep(Recorder& recorder, const char* name, const Scene& scene) {
    recorder.start(name);
    HostSession host(scene);
    const int w = scene.width;
    const int h = scene.height;
    const auto step = [&](const char* what) { recorder.step(what, host); };
    const auto brush = [&](int x, int y, int code, int type) {
        const int columns = std::max(w / 12, 1);
        const int rows = std::max(h / 20, 1);
        const int middle = y + rows / 2;
        host.request({x, middle, x + columns - 1, middle},
                     host.rectangle(x, y, columns, rows, code), type);
    };
    host.box(w / 6, h / 8, w - 1 - w / 6, h - 1 - h / 8);
    step("box");
    brush(w / 2, h / 2, SEGCORE_MARK_BACKGROUND, SEGCORE_BRUSH_REMOVE);
    step("brush-remove");
    brush(w / 5, h / 4, SEGCORE_MARK_OBJECT, SEGCORE_BRUSH_ADD);
    step("brush-add");
    host.undo();
    step("undo");
    host.redo();
    step("redo");
    const std::vector<int> removed{w / 2,     h / 3,     w * 3 / 4, h / 3,
                                   w * 3 / 4, h * 2 / 3, w / 2,     h * 2 / 3};
    host.request(removed, host.loopMarkers(removed), SEGCORE_LOOP_REMOVE);
    step("loop-remove");
    host.cutOut(host.rectangle(w / 3, h / 3, std::max(w / 9, 1), std::max(h / 9, 1),
                               SEGCORE_MARK_BACKGROUND));
    step("edit");
    host.undo();
    step("undo");
    host.loop({w / 3, h / 10, w * 4 / 5, h / 5, w * 3 / 4, h * 4 / 5, w / 5, h * 3 / 4});
    step("loop-add");
    // Marks of every code in one request, with candidates at the photograph's edge.
    std::vector<int> marks = host.rectangle(0, 0, w, h, SEGCORE_MARK_CANDIDATE);
    cv::Mat rows(h, w, CV_32SC1, marks.data());
    rows.row(0) = SEGCORE_MARK_BACKGROUND;
    rows.row(h / 2) = SEGCORE_MARK_OBJECT;
    rows.row(h - 1) = 3;
    host.request({0, 0, w - 1, 0, w - 1, h - 1, 0, h - 1}, marks, SEGCORE_LOOP_ADD);
    step("all-marks");
    recorder.history(host);
}

void wideBox(Recorder& recorder, const char* name, const Scene& scene) {
    recorder.start(name);
    HostSession host(scene);
    host.box(14, 10, 148, 112);
    recorder.step("box", host);
    host.request({100, 60, 110, 60}, host.rectangle(98, 56, 14, 8, SEGCORE_MARK_BACKGROUND),
                 SEGCORE_BRUSH_REMOVE);
    recorder.step("brush-remove", host);
}

void cancelled(Recorder& recorder) {
    recorder.start("cancelled");
    HostSession host(makeDiscScene(330, 260));
    host.box(60, 40, 270, 220);
    recorder.step("box", host);
    cancelSegmentation();
    host.box(40, 30, 290, 230);
    recorder.step("cancelled-box", host);
    host.undo();
    recorder.step("undo", host);
    recorder.history(host);
    resetSegmentationInterface();
    host.box(40, 30, 290, 230);
    recorder.step("box-after-reset", host);
    recorder.history(host);
}

void boxAtOnce(Recorder& recorder) {
    recorder.start("box-at-once");
    const Scene scene = mixedScene(360, 250, 10);
    HostSession host(discScene());
    host.width = scene.width;
    host.height = scene.height;
    host.photo = scene.pixels;
    host.blended = scene.pixels;
    host.mask.assign(scene.pixels.size(), 255);
    doSegmentationBB(scene.width, scene.height, scene.pixels.data(), 60, 30, 300, 220,
                     host.mask.data());
    recorder.step("box", host);
    host.request({90, 60, 120, 60}, host.rectangle(85, 55, 40, 10, SEGCORE_MARK_BACKGROUND),
                 SEGCORE_BRUSH_REMOVE);
    recorder.step("brush-remove", host);
    recorder.history(host);
}

// More masks than the history holds.
void longHistory(Recorder& recorder) {
    recorder.start("long-history");
    HostSession host(makeDiscScene(70, 50));
    host.box(10, 6, 60, 44);
    for (int i = 0; i < 40; ++i) {
        host.cutOut(host.rectangle(i, i % 40, 20, 9,
                                   i % 3 == 0 ? SEGCORE_MARK_BACKGROUND : SEGCORE_MARK_OBJECT));
    }
    for (int i = 0; i < 5; ++i) {
        host.undo();
    }
    host.cutOut(host.rectangle(1, 1, 30, 3, SEGCORE_MARK_OBJECT));
    recorder.step("edits", host);
    recorder.history(host);
}

}  // namespace

void recordSceneSessions(Recorder& recorder) {
    const auto steps = [&](const char* name, const Scene& scene) {
        everyKindOfStep(recorder, name, scene);
    };
    steps("disc", discScene());
    steps("disc-reduced", makeDiscScene(480, 330));
    steps("mixed", mixedScene(200, 150, 3));
    steps("mixed-reduced", mixedScene(420, 300, 4));
    steps("grey", paint(170, 130, 5, [](int x, int y, auto noise) {
              const int light = inDisc(x, y, 85, 65, 34) ? 150 + x % 3 * 20 : 60 + y / 2;
              const int level = light + noise(24);
              return Colour{level, level, level};
          }));
    steps("letterbox", paint(180, 140, 6, [](int x, int y, auto noise) {
              if (y < 18 || y >= 122 || x < 12) {
                  return Colour{noise(2), noise(2), noise(2)};
              }
              return inDisc(x, y, 90, 70, 34) ? Colour{40 + noise(30), 120 + noise(20), 200}
                                              : Colour{120 + noise(50), 90 + noise(40), 40 + x / 3};
          }));
    steps("islands", paint(210, 150, 7, [](int x, int y, auto noise) {
              const bool object = inDisc(x, y, 70, 75, 24) || inDisc(x, y, 140, 75, 20) ||
                                  (x / 9 % 4 == 0 && y / 9 % 5 == 0);
              return object ? Colour{30 + noise(20), 170 + noise(30), 190}
                            : Colour{150 + noise(60), 60 + y / 3, 60 + noise(40)};
          }));
    steps("flat", flatScene(160, 120, 8));
    steps("flat-reduced", flatScene(400, 260, 9));
    wideBox(recorder, "patch", patchScene(160, 120, 2));
    wideBox(recorder, "even", evenScene(160, 120, 8));
    steps("column", makeDiscScene(1, 90));
    steps("row", makeDiscScene(120, 2));
    cancelled(recorder);
    boxAtOnce(recorder);
    longHistory(recorder);
}
