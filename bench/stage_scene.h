// The state that the stages are measured in: one box request run to its end on a photograph of a
// given size, with everything that a single stage reads still in place.
#pragma once

#include <memory>
#include <string>

#include "history/undo_redo_history.h"
#include "support/staged_request.h"

class StageScene {
  public:
    explicit StageScene(Photograph photograph);
    ~StageScene();
    StageScene(const StageScene&) = delete;
    StageScene& operator=(const StageScene&) = delete;

    Photograph photo;
    ImagePtr boxMarkers;    // 8-bit marker images of photo size
    ImagePtr brushMarkers;  // a later brush stroke
    std::vector<int> boxPoints;
    std::vector<int> brushPoints;
    ImagePtr workingMask;  // values 0 and 1, or 0 and 255 without reduction
    ImagePtr mask;         // of photo size, before post-processing
    ImagePtr trialLabels[3];
    std::vector<pixelVal> foreground;
    std::vector<pixelVal> background;
    bool reduced;

    // Marks as the engine stores them, for the stages that read the current stroke.
    void useStroke(const std::vector<int>& points, int strokeType);
    // Empties the history, or leaves one mask in it as the one on display.
    void emptyHistory();
    void oneMaskInHistory();

  private:
    StageClock m_clock;
    std::unique_ptr<StagedRequest> m_request;
};

// The scene of the photograph of that size; made when another size is asked for, so that only one
// is in memory. 0 megapixels stands for 320 x 240. `file` has to be the same in every call.
StageScene& sceneOf(const std::string& file, int megapixels);

// Puts back what a measured stage changes of the region and the label image.
class KeepRegion {
  public:
    KeepRegion();
    ~KeepRegion();
    KeepRegion(const KeepRegion&) = delete;
    KeepRegion& operator=(const KeepRegion&) = delete;

  private:
    ImagePtr m_labels;
    int m_box[4];
    int m_cropWidth;
    int m_cropHeight;
};
