// What the user has said of a photograph's pixels so far: where the object may be, and what is object
// or background for certain. The whole object is found from these marks, however they came about.
#pragma once

#include <opencv2/core.hpp>

#include "session/kept_mask.h"
#include "session/strokes.h"

class UserMarks {
  public:
    explicit UserMarks(cv::Size photo);

    // What a box or loop holds. Until there is one, the region is the whole photograph.
    void addRegion(const Drawing& drawing);
    bool hasRegion() const { return m_hasRegion; }
    // Whether boxes and loops hold all of it.
    bool isWithinRegion(const Drawing& drawing) const;
    // CV_8UC1, 255 in the region, which holds all marks.
    cv::Mat region() const;

    // Marks what is drawn, over earlier marks; `code` is SEGCORE_MARK_OBJECT or
    // SEGCORE_MARK_BACKGROUND.
    void mark(const Drawing& drawing, int code);
    // The pixels in which two masks differ are what the later one says.
    void markChanges(const cv::Mat& before, const cv::Mat& after);
    // Where to look for the object first when there is no result yet, CV_8UC1, 255: in the region;
    // without one around the object marks; without these everywhere.
    cv::Mat firstCandidates() const;

    // Finds the whole object on an empty base. `candidates` (CV_8UC1, 255) start as probable object
    // and the rest of the region as probable background; marks are certain.
    Request request(const cv::Mat& candidates) const;

    // Makes a result (CV_8UC1, 255 object) one as the marks have it: marked pixels are what they are
    // marked as, and nothing outside the region is object. The engine decides anew along the line of
    // a request's points, which can lie outside the region or, at the photograph's border, on marks.
    // Where object marks alone say where the object is, only those of its pieces stay that hold one:
    // without a region, alike colours anywhere in the photograph are taken for the object.
    void correct(cv::Mat& mask) const;

    struct Kept {
        bool hasRegion = false;
        cv::Rect regionRect;
        cv::Rect marksRect;
        KeptMask region;
        KeptMask object;
        KeptMask background;
    };
    Kept kept() const;
    UserMarks(const Kept& kept, cv::Size photo);

  private:
    bool hasObjectMarks() const;
    cv::Rect regionRect() const;
    cv::Rect around() const;
    template <typename Act>
    void forRows(cv::Rect within, Act&& act) const;

    cv::Mat m_region;       // CV_8UC1, 255 inside of boxes and loops
    cv::Mat m_codes;        // CV_8UC1, marker codes
    cv::Rect m_regionRect;  // around what is not 0 in them, as little as possible
    cv::Rect m_marksRect;
    bool m_hasRegion = false;
    KeptMask m_keptRegion;  // of m_region, which most steps leave as it is
};

// CV_8UC1, 255: the pixels no farther from those of `marked` (CV_8UC1, not 0) than `share` of the
// photograph's mean side.
cv::Mat spread(const cv::Mat& marked, double share);
