// A margin is a strip that begins in known background at a side of the region and runs inward
// without an edge. It ends at the first line that may belong to something else, and is cut off some
// lines before that. Everything here errs towards keeping: a margin kept costs time, a wrong cut
// costs the object.
//
// A cut has a price even when it is right. The background's colours are learnt from the background
// labels of the region, most of which lie in its margins, and of a margin cut off only the
// outermost line that stays is left to learn from. In return the candidates in the margin, which
// are background, no longer spoil the colours of the object. So the side that frees most candidates
// goes first, and no cut may leave less than half of the background labels.
//
// Notation: "line" is a row or column parallel to the side a margin begins at, numbered from 0 at
// that side; all scans run on views that have their side at the top.
#include "engine/margin_search.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "history/marker.h"

namespace {

constexpr int kTries = 3;                 // sides that one request may cut
constexpr double kFlatDifference = 5.0;   // between gradient lines, mean; from here on not flat
constexpr double kEdgeDifference = 40.0;  // between gradient patches, mean; above it an edge
constexpr double kLeastKept = 0.5;        // share of a side's length and of the background labels

// A step of one level in the pixels is a gradient of four.
constexpr double kGradientOfStep = 4.0;
// Pixels that differ by more than this from where the margin began are not of its colour, however
// slowly they got there: what a soft outline does.
constexpr double kColourDrift = kEdgeDifference / kGradientOfStep;

// Small enough for the tip of a thing one pixel wide to stand out from its patch.
constexpr int kPatchLength = 4;
constexpr int kPatchDepth = 2;
constexpr int kPatchStep = kPatchLength / 2;

// Lines left between the cut and what ended the margin: the fringe of an outline that is out of
// focus, and background next to the object for the cut to find its way through.
constexpr int kClearance = 8;
// Thinner margins do not pay; the working region's own padding is ten lines.
constexpr int kLeastDepth = 16;

enum class Side { kTop, kBottom, kLeft, kRight };

bool isSideways(Side side) {
    return side == Side::kLeft || side == Side::kRight;
}

// The image turned so that the side is at the top.
cv::Mat seenFrom(Side side, const cv::Mat& image) {
    cv::Mat upright = isSideways(side) ? cv::Mat(image.t()) : image;
    if (side == Side::kTop || side == Side::kLeft) {
        return upright;
    }
    cv::Mat flipped;
    cv::flip(upright, flipped, 0);
    return flipped;
}

cv::Rect withoutLines(const cv::Rect& region, Side side, int lines) {
    cv::Rect rest = region;
    if (isSideways(side)) {
        rest.width -= lines;
        rest.x += side == Side::kLeft ? lines : 0;
    } else {
        rest.height -= lines;
        rest.y += side == Side::kTop ? lines : 0;
    }
    return rest;
}

int countOf(const cv::Mat& labels, std::uint8_t code) {
    return cv::countNonZero(labels == code);
}

double meanDifference(const cv::Mat& a, const cv::Mat& b) {
    return cv::norm(a, b, cv::NORM_L1) /
           static_cast<double>(a.total() * static_cast<std::size_t>(a.channels()));
}

// The region seen from one side.
class MarginView {
  public:
    MarginView(Side side, const cv::Mat& magnitude, const cv::Mat& pixels, const cv::Mat& labels)
        : m_magnitude(seenFrom(side, magnitude)),
          m_pixels(seenFrom(side, pixels)),
          m_labels(seenFrom(side, labels)) {}

    // Lines that can be cut off; 0 for none. A margin without an end in its half of the region is
    // none either: where nothing stands out, the object may be of the margin's own colour.
    int depth() const {
        if (m_labels.cols < kPatchLength) {
            return 0;
        }
        const auto limit = static_cast<int>(m_labels.rows * kLeastKept);
        for (int line = 1; line + kPatchDepth <= limit; ++line) {
            if (endsAt(line)) {
                return line - kClearance >= kLeastDepth ? line - kClearance : 0;
            }
        }
        return 0;
    }

  private:
    bool endsAt(int line) const {
        return isMarked(line) ||
               meanDifference(m_magnitude.row(line - 1), m_magnitude.row(line)) >=
                   kFlatDifference ||
               (line >= kPatchDepth && anyPatchDiffers(line));
    }

    // A mark other than the candidates of a loop and the line around them.
    bool isMarked(int line) const {
        const cv::Mat labels = m_labels.row(line);
        return countOf(labels, label::kFree) + countOf(labels, label::kBackground) +
                   countOf(labels, label::kProbableObject) <
               labels.cols;
    }

    // Compares the two sides of the border before `line` place by place: the mean over a line does
    // not see an edge that crosses little of it.
    bool anyPatchDiffers(int line) const {
        const int last = m_magnitude.cols - kPatchLength;
        for (int x = 0; x < last + kPatchStep; x += kPatchStep) {
            const cv::Rect inner(std::min(x, last), line, kPatchLength, kPatchDepth);
            const cv::Rect outer = inner - cv::Point(0, kPatchDepth);
            const cv::Rect first = inner - cv::Point(0, line);
            if (meanDifference(m_magnitude(outer), m_magnitude(inner)) > kEdgeDifference ||
                meanDifference(m_pixels(first), m_pixels(inner)) > kColourDrift) {
                return true;
            }
        }
        return false;
    }

    cv::Mat m_magnitude;
    cv::Mat m_pixels;
    cv::Mat m_labels;
};

// The outermost lines of what stays become background, also on sides without a cut. So there must
// be nothing but background on them, as in every region that the photograph's border does not clip.
bool hasBackgroundRing(const cv::Mat& labels) {
    const cv::Rect inner(1, 1, labels.cols - 2, labels.rows - 2);
    return labels.cols > 2 && labels.rows > 2 &&
           countOf(labels, label::kBackground) - countOf(labels(inner), label::kBackground) ==
               static_cast<int>(labels.total()) - inner.area();
}

struct Cut {
    Side side;
    cv::Rect rest;
};

// The cut of the margin that frees most candidates among the sides not cut yet.
std::optional<Cut> bestCut(const cv::Rect& region, const std::vector<Side>& uncut,
                           const cv::Mat& magnitude, const cv::Mat& pixels, const cv::Mat& labels) {
    const double leastBackground = kLeastKept * countOf(labels, label::kBackground);
    int fewestLeft = countOf(labels(region), label::kProbableObject);
    std::optional<Cut> best;
    for (const Side side : uncut) {
        const MarginView view(side, magnitude(region), pixels(region), labels(region));
        const cv::Rect rest = withoutLines(region, side, view.depth());
        const int left = countOf(labels(rest), label::kProbableObject);
        if (left < fewestLeft && countOf(labels(rest), label::kBackground) >= leastBackground &&
            rest.width >= kLeastKept * labels.cols && rest.height >= kLeastKept * labels.rows) {
            best = Cut{side, rest};
            fewestLeft = left;
        }
    }
    return best;
}

}  // namespace

cv::Rect searchMargins(const cv::Mat& magnitude, const cv::Mat& pixels, const cv::Mat& labels) {
    cv::Rect kept({0, 0}, labels.size());
    // A brush needs the candidates of its band, and what removes must not gain background.
    if (VORNSEMarker::currentStroke.m_strokeType != stroke::kLoopAdd ||
        !hasBackgroundRing(labels)) {
        return kept;
    }
    std::vector<Side> uncut{Side::kTop, Side::kBottom, Side::kLeft, Side::kRight};
    // Each cut shortens the lines of the sides across, so what ended their margins may be gone.
    for (int i = 0; i < kTries; ++i) {
        const std::optional<Cut> cut = bestCut(kept, uncut, magnitude, pixels, labels);
        if (!cut) {
            break;
        }
        kept = cut->rest;
        uncut.erase(std::find(uncut.begin(), uncut.end(), cut->side));
    }
    return kept;
}
