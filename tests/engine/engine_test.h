// Images as text, and an engine on a made photograph, for tests that drive single stages.
#pragma once

#include <gtest/gtest.h>
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/image_bytes.h"
#include "support/log_capture.h"

// One string a row: '.' is 0, '#' is 255, a digit its value.
using Rows = std::vector<std::string>;
using Area = cv::Rect;

inline ImagePtr imageOf(const Rows& rows) {
    Bytes bytes;
    for (const std::string& row : rows) {
        std::transform(row.begin(), row.end(), std::back_inserter(bytes), [](char c) {
            return static_cast<std::uint8_t>(c == '.' ? 0 : (c == '#' ? 255 : c - '0'));
        });
    }
    return imageOf(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), 1, bytes);
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
inline Rows textOf(const ImagePtr& image) {
    return textOf(image.get());
}

inline void fill(const ImagePtr& image, const Area& area, int value) {
    cv::cvarrToMat(image.get())(area) = value;
}

// A one-channel image of zeros with rectangles of a value in it.
inline ImagePtr imageWith(int width, int height, const std::vector<Area>& areas, int value) {
    ImagePtr image = imageOf(width, height, 1, Bytes(static_cast<std::size_t>(width * height)));
    for (const Area& area : areas) {
        fill(image, area, value);
    }
    return image;
}

constexpr std::uint32_t greyWord(int value) {
    return static_cast<std::uint32_t>(value) * 0x010101U;
}

constexpr std::uint32_t kBlueWord = 0x2030A0U;

struct EngineTest : testing::Test {
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
    static Area region() {
        return {VORNSEMarker::m_xMinBBox, VORNSEMarker::m_yMinBBox, pHybrid->m_cropWidth,
                pHybrid->m_cropHeight};
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

// A model of one component with unit covariance: its density at x is
// weight * exp(-|x - (c0, c1, c2)|^2 / 2).
inline VORNSEColorModel unitModel(double c0, double c1, double c2, double weight = 1.0) {
    VORNSEColorModel model;
    model.m_weight[0] = weight;
    model.m_mean[0][0] = c0;
    model.m_mean[0][1] = c1;
    model.m_mean[0][2] = c2;
    for (const int i : {0, 4, 8}) {
        model.m_covariance[0][i] = 1.0;
    }
    model.setDeterminant();
    model.setInverseCovariance();
    return model;
}
