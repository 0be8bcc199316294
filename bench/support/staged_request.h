// One request made step by step, so that every state in between can be measured on, with the time of
// each of its stages.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "engine/segmentation_request.h"
#include "engine/stage_watcher.h"
#include "support/image.h"
#include "support/marks.h"
#include "support/measurements.h"

// The time of each stage, in the order of first use; a stage that runs several times adds up.
class StageClock : public StageWatcher {
  public:
    // What a host does around a request.
    template <typename Call>
    void run(const std::string& stage, Call&& call) {
        add(stage, durationOf(std::forward<Call>(call)));
    }
    void begins(Stage stage, int pass) override;
    void ends(Stage stage, int pass) noexcept override;
    const std::vector<std::pair<std::string, Duration>>& stages() const { return m_stages; }

  private:
    void add(const std::string& stage, const Duration& duration);

    std::vector<std::pair<std::string, Duration>> m_stages;
    Stopwatch m_stopwatch;
};

class StagedRequest {
  public:
    // Takes the photograph in and prepares the engine. The clock has to outlive the request.
    StagedRequest(const Photograph& photo, StageClock& clock);
    ~StagedRequest();
    StagedRequest(const StagedRequest&) = delete;
    StagedRequest& operator=(const StagedRequest&) = delete;

    // Marks to the working region's crops; the first step of every request.
    void begin(Marks& marks);
    // The steps in between.
    SegmentationRequest& steps() { return m_request; }
    // All five passes; calls visit before every flow.
    void runPasses(const std::function<void(int pass)>& visit = nullptr);
    // The working mask that upscaling starts from, or of photo size for one that was not reduced.
    // Releases the graph.
    ImagePtr workingMask();
    // Labels to the recorded mask of photo size.
    ImagePtr finish();
    // Mask and outline into the host's buffers.
    void deliver(ImagePtr mask, std::vector<std::uint32_t>& blended,
                 std::vector<std::uint8_t>& out);

  private:
    const Photograph& m_photo;
    StageClock& m_clock;
    StageWatcher* m_watcherBefore;
    SegmentationRequest m_request;
};

// The trimap of the band along a working mask (values 0 and 1): 7 outside, 0 open, 1 and 2 the
// rings tied to background and object.
cv::Mat trimapOf(const cv::Mat& workingMask);

// The band's graph of a working mask, built by the engine into its m_trimapGraph: what upscaling
// does up to its flow.
class BandGraph {
  public:
    explicit BandGraph(const cv::Mat& workingMask);
    ~BandGraph();
    BandGraph(const BandGraph&) = delete;
    BandGraph& operator=(const BandGraph&) = delete;

    // Replaces the graph by a fresh one.
    void build();
    void drop();
    const cv::Mat& trimap() const { return m_trimap; }  // of the band's bounding rectangle
    bool empty() const { return m_trimap.empty(); }

  private:
    cv::Mat m_trimap;
    cv::Mat m_image;
    cv::Mat m_horizontal;
    cv::Mat m_vertical;
};

// Starts the timer that a flow polls, as a request does.
void restartCancelTimer();
