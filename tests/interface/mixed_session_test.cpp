// Whole sessions: hundreds of calls in any order, good and bad, photographs of extreme sizes, and
// cancels from a second thread. Meant for the sanitizer builds above all.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <opencv2/core.hpp>
#include <random>
#include <string_view>
#include <thread>

#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

// A host that keeps its buffers at the size of the photograph that it passed last.
class MixedCalls {
  public:
    explicit MixedCalls(unsigned seed) : m_random(seed) { newPhoto(); }
    ~MixedCalls() {
        deinitSegmentation();
        freeLocalBuffers();
        resetSegmentationInterface();
    }
    MixedCalls(const MixedCalls&) = delete;
    MixedCalls& operator=(const MixedCalls&) = delete;

    std::size_t run(int calls) {
        for (int call = 0; call < calls; ++call) {
            step();
            for (const std::uint8_t byte : m_mask) {
                EXPECT_TRUE(byte == 0 || byte == 255);
            }
            keep(m_mask);
            keep(m_blended);
            m_blended = m_photo;
        }
        return m_digest;
    }

  private:
    template <typename T>
    void keep(const std::vector<T>& values) {
        const std::string_view bytes(reinterpret_cast<const char*>(values.data()),
                                     values.size() * sizeof(T));
        m_digest = m_digest * 31 + std::hash<std::string_view>()(bytes);
    }

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    // Now and then outside of 0 .. limit - 1.
    int around(int limit) { return below(limit + 6) - 3; }

    void newPhoto() {
        const int sizes[][2] = {{48, 40}, {64, 30}, {1, 1},  {1, 20},    {20, 1},   {17, 2},
                                {2, 3},   {3, 3},   {9, 60}, {330, 250}, {40, 2000}};
        const int choice = below(22);
        const auto& size = sizes[choice < 11 ? choice : choice % 2];
        const Scene scene = makeDiscScene(size[0], size[1]);
        m_width = scene.width;
        m_height = scene.height;
        m_photo = m_blended = scene.pixels;
        m_mask.assign(m_photo.size(), 255);
    }

    void mark() {
        m_points.clear();
        for (int i = 2 * below(6); i > 0; --i) {
            m_points.push_back(around(i % 2 == 0 ? m_width : m_height));
        }
        setCurrentMarkerVector(static_cast<int>(m_points.size()), m_points.data());
        std::vector<int> markers(m_photo.size());
        const int left = below(m_width);
        const int top = below(m_height);
        const cv::Rect marked(left, top, 1 + below(m_width - left), 1 + below(m_height - top));
        cv::Mat(m_height, m_width, CV_32SC1, markers.data())(marked) = below(5);
        setMarkerImage(below(20) == 0 ? m_height : m_width, m_height, markers.data(), below(5));
    }

    void step() {
        std::uint32_t* const blended = below(30) == 0 ? nullptr : m_blended.data();
        std::uint8_t* const mask = below(30) == 0 ? nullptr : m_mask.data();
        const std::function<void()> calls[] = {
            [&] {
                newPhoto();
                setSourceImage(m_width, m_height, m_photo.data());
            },
            [&] {
                newPhoto();
                doSegmentationBB(m_width, m_height, m_photo.data(), around(m_width),
                                 around(m_height), around(m_width), around(m_height),
                                 m_mask.data());
            },
            [&] { setSourceImage(below(2), -below(2), m_photo.data()); },
            [] { deinitSegmentation(); },
            [] { resetSegmentationInterface(); },
            [] { cancelSegmentation(); },
            [] { exitSegmentation(); },
            [] { freeLocalBuffers(); },
            [&] { undo(blended, mask); },
            [&] { redo(blended, mask); },
            [&] { copySourceImage(m_blended.data()); },
            [&] { keep(HostSession::fetchOutline()); },
            [&] { processSegment(0, 0, 0, blended, mask); },
            [&] {
                mark();
                cutOutImage(0, 0, 0, blended, mask);
            },
            [] { initSegmentationEngine(0); },
            [&] {
                mark();
                keep(std::vector<int>{processSegment(0, 0, 0, blended, mask)});
            }};
        // Edits, engines and requests several times as often as the others.
        constexpr int kOthers = 13;
        const int choice = below(24);
        calls[choice < kOthers ? choice : kOthers + choice % 3]();
    }

    std::mt19937 m_random;
    std::size_t m_digest = 0;
    int m_width = 0;
    int m_height = 0;
    std::vector<std::uint32_t> m_photo;
    std::vector<std::uint32_t> m_blended;
    std::vector<std::uint8_t> m_mask;
    std::vector<int> m_points;
};

TEST(MixedSession, TwoHundredCallsGiveTheSameBytesAgain) {
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        const std::size_t first = MixedCalls(seed).run(200);
        EXPECT_EQ(MixedCalls(seed).run(200), first) << seed;
    }
    clearLog();
}

TEST(MixedSession, SecondThreadCancelsAtAnyTime) {
    HostSession session(discScene());
    session.box(35, 20, 125, 100);
    const std::vector<std::uint8_t> mask = session.mask;
    int cancelled = 0;
    for (int delay = 0; delay < 40; ++delay) {
        initSegmentationEngine(0);
        session.mask.assign(session.mask.size(), 7);
        std::thread second([delay] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
            cancelSegmentation();
        });
        session.box(20, 10, 140, 110);
        second.join();
        if (session.mask.front() == 7) {
            ++cancelled;
            EXPECT_EQ(session.blended, session.photo);
            EXPECT_EQ(session.mask, std::vector<std::uint8_t>(session.mask.size(), 7));
        } else {
            EXPECT_LT(discScene().errorRate(session.mask), 0.01);
            session.undo();
            EXPECT_EQ(session.mask, mask);
        }
    }
    EXPECT_GT(cancelled, 0);
    clearLog();
}

}  // namespace
