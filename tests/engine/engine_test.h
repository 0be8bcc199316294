// Images as text, and an engine on a made photograph, for tests that drive single stages.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/image.h"
#include "support/log_capture.h"

// One string a row: '.' is 0, '#' is 255, a digit its value.
using Rows = std::vector<std::string>;

inline ImagePtr imageOf(const Rows& rows) {
    ImagePtr image =
        createImage(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), 1);
    for (int y = 0; y < image->height; ++y) {
        for (int x = 0; x < image->width; ++x) {
            const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
            rowOf(image.get(), y)[x] =
                static_cast<std::uint8_t>(c == '.' ? 0 : (c == '#' ? 255 : c - '0'));
        }
    }
    return image;
}

inline Rows textOf(const IplImage* image) {
    Rows rows;
    for (int y = 0; y < image->height; ++y) {
        rows.emplace_back();
        for (int x = 0; x < image->width; ++x) {
            const int value = rowOf(image, y)[x];
            rows.back() += value < 10 ? ".123456789"[value] : value == 255 ? '#' : '?';
        }
    }
    return rows;
}

struct Area {
    int x;
    int y;
    int width;
    int height;
};

// A one-channel image of zeros with rectangles of a value in it.
inline ImagePtr imageWith(int width, int height, const std::vector<Area>& areas, int value) {
    ImagePtr image = createImage(width, height, 1);
    cvSetZero(image.get());
    for (const Area& area : areas) {
        cv::cvarrToMat(image.get())(cv::Rect(area.x, area.y, area.width, area.height)) = value;
    }
    return image;
}

constexpr std::uint32_t greyWord(int value) {
    return static_cast<std::uint32_t>(value) * 0x010101U;
}

constexpr std::uint32_t kBlueWord = 0x2030A0U;

class EngineTest : public testing::Test {
  protected:
    ~EngineTest() override {
        dropRequest();
        deinitSegmentation();
        freeLocalBuffers();
        resetSegmentationInterface();
        clearLog();
    }

    // Starts the engine on a photograph with the pixel word that `colour(x, y)` gives.
    template <typename Colour>
    VORNSEHybrid& start(int width, int height, Colour colour) {
        std::vector<std::uint32_t> words;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                words.push_back(colour(x, y));
            }
        }
        dropRequest();
        setSourceImage(width, height, words.data());
        initSegmentationEngine(0);
        clearLog();
        return *pHybrid;
    }
    // What a test made up of a request that is under way.
    static void dropRequest() {
        if (pHybrid != nullptr) {
            pHybrid->clearMemory();
        }
    }
    VORNSEHybrid& startBlue(int width, int height) {
        return start(width, height, [](int, int) { return kBlueWord; });
    }

    static void setRegion(const Area& region) {
        VORNSEMarker::m_xMinBBox = region.x;
        VORNSEMarker::m_yMinBBox = region.y;
        pHybrid->m_cropWidth = region.width;
        pHybrid->m_cropHeight = region.height;
    }
    static void setStroke(int type, std::vector<int> points) {
        VORNSEMarker::currentStroke.m_strokeType = type;
        VORNSEMarker::currentStroke.m_points = std::move(points);
    }
    static void setLabels(ImagePtr labels) {
        releaseImage(VORNSEMarker::m_labelImage);
        VORNSEMarker::m_labelImage = labels.release();
    }
};

// A model of one component with unit covariance: its density at x is weight * exp(-|x - mean|^2 /
// 2).
inline VORNSEColorModel unitModel(double c0, double c1, double c2, double weight = 1.0) {
    VORNSEColorModel model;
    model.m_weight[0] = weight;
    const double mean[kChannels] = {c0, c1, c2};
    for (int i = 0; i < kChannels; ++i) {
        model.m_mean[0][i] = mean[i];
        model.m_covariance[0][4 * i] = 1.0;
    }
    model.setDeterminant();
    model.setInverseCovariance();
    return model;
}
