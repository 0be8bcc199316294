// Hundreds of host calls in any order, good and bad, on photographs of many sizes. Meant for the
// sanitizer builds above all.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "interface/segmentation_core.h"
#include "support/digest.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

// A host that keeps its buffers at the size of the photograph that it passed last.
class MixedSession {
  public:
    explicit MixedSession(unsigned seed) : m_random(seed) { newPhoto(); }
    ~MixedSession() {
        deinitSegmentation();
        freeLocalBuffers();
        resetSegmentationInterface();
    }
    MixedSession(const MixedSession&) = delete;
    MixedSession& operator=(const MixedSession&) = delete;

    std::uint64_t run(int calls) {
        for (int call = 0; call < calls; ++call) {
            step();
            for (const std::uint8_t byte : m_mask) {
                EXPECT_TRUE(byte == 0 || byte == 255);
            }
            m_digest = digest(m_mask, digest(m_blended, m_digest));
            m_blended = m_photo;
        }
        return m_digest;
    }

  private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    // Now and then outside of 0 .. limit - 1.
    int around(int limit) { return below(limit + 6) - 3; }

    void newPhoto() {
        const int sizes[][2] = {{48, 40}, {64, 30}, {1, 1}, {1, 20}, {17, 2}, {330, 250}};
        const int choice = below(12);
        const auto& size = sizes[choice < 6 ? choice : choice % 2];
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
        const int code = below(5);
        const int left = below(m_width);
        const int top = below(m_height);
        const int right = left + below(m_width - left);
        const int bottom = top + below(m_height - top);
        for (int y = top; y <= bottom; ++y) {
            for (int x = left; x <= right; ++x) {
                markers[static_cast<std::size_t>(y * m_width + x)] = code;
            }
        }
        setMarkerImage(below(20) == 0 ? m_height : m_width, m_height, markers.data(), below(5));
    }

    void step() {
        std::uint32_t* const blended = below(30) == 0 ? nullptr : m_blended.data();
        std::uint8_t* const mask = below(30) == 0 ? nullptr : m_mask.data();
        switch (below(24)) {
            case 0:
                newPhoto();
                setSourceImage(m_width, m_height, m_photo.data());
                break;
            case 1:
            case 2:
                initSegmentationEngine(0);
                break;
            case 3:
                newPhoto();
                doSegmentationBB(m_width, m_height, m_photo.data(), around(m_width),
                                 around(m_height), around(m_width), around(m_height),
                                 m_mask.data());
                break;
            case 4:
                setSourceImage(below(2), -below(2), m_photo.data());
                break;
            case 5:
                deinitSegmentation();
                break;
            case 6:
                resetSegmentationInterface();
                break;
            case 7:
                cancelSegmentation();
                break;
            case 8:
                exitSegmentation();
                break;
            case 9:
                undo(blended, mask);
                break;
            case 10:
                redo(blended, mask);
                break;
            case 11:
                copySourceImage(m_blended.data());
                break;
            case 12: {
                int* array = nullptr;
                int count = 0;
                fetch_path_array(&array, &count);
                m_digest = digest(std::vector<int>(array, array + count), m_digest);
                release_path_array(array);
                break;
            }
            case 13:
                freeLocalBuffers();
                break;
            case 14:
            case 15:
            case 16:
                mark();
                cutOutImage(0, 0, 0, blended, mask);
                break;
            case 17:
                processSegment(0, 0, 0, blended, mask);
                break;
            default:
                mark();
                m_digest =
                    digest(std::vector<int>{processSegment(0, 0, 0, blended, mask)}, m_digest);
        }
    }

    std::mt19937 m_random;
    std::uint64_t m_digest = kDigestStart;
    int m_width = 0;
    int m_height = 0;
    std::vector<std::uint32_t> m_photo;
    std::vector<std::uint32_t> m_blended;
    std::vector<std::uint8_t> m_mask;
    std::vector<int> m_points;
};

TEST(MixedSession, TwoHundredCallsGiveTheSameBytesAgain) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        const std::uint64_t first = MixedSession(seed).run(200);
        EXPECT_EQ(MixedSession(seed).run(200), first) << seed;
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
        session.mask.assign(mask.size(), 7);
        std::thread second([delay] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
            cancelSegmentation();
        });
        session.loop({20, 10, 140, 10, 140, 110, 20, 110}, SEGCORE_LOOP_ADD);
        second.join();
        if (session.mask.front() == 7) {
            ++cancelled;
            EXPECT_EQ(session.blended, session.photo);
            EXPECT_EQ(session.mask, std::vector<std::uint8_t>(mask.size(), 7));
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
