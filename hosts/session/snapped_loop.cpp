// The search looks at a whole image for every side, so large photographs are reduced for it and the
// path is mapped back; between the given points it is then as fine as the reduced pixels.
#include "session/snapped_loop.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "session/strokes.h"

namespace {

// A side then takes a fraction of a second, and a pixel is still fine beside a drawn lasso.
constexpr double kSearchPixels = 300000.0;
// How far a loop's corner may move to an edge: the inaccuracy of a quickly drawn corner.
constexpr double kCornerReachShare = 0.015;  // of the mean side of the searched image
constexpr int kSmallestCornerReach = 3;
constexpr double kSmoothing = 1.0;  // of the gradient, against noise, in pixels

class EdgeMap {
  public:
    EdgeMap(const Photo& photo, double alpha, SessionHost& host)
        : m_photoSize(photo.size()), m_alpha(alpha), m_host(host) {
        cv::cvtColor(asImage(photo.words, photo.size()), m_image, cv::COLOR_BGRA2BGR);
        const auto pixels = static_cast<double>(m_image.total());
        if (pixels > kSearchPixels) {
            const double shrink = std::sqrt(kSearchPixels / pixels);
            const auto side = [shrink](int length) {
                return std::max(1, cvRound(length * shrink));
            };
            cv::resize(m_image, m_image, {side(m_image.cols), side(m_image.rows)}, 0.0, 0.0,
                       cv::INTER_AREA);
        }
        cv::cvtColor(m_image, m_words, cv::COLOR_BGR2BGRA);
    }

    // The pixels from one photograph point to another, both included.
    std::vector<cv::Point> path(cv::Point from, cv::Point to) {
        m_host.throwIfInterrupted();
        const cv::Point start = reduced(from);
        const cv::Point end = reduced(to);
        int* array = nullptr;
        int count = 0;
        segcore_snap_path(m_words.cols, m_words.rows, m_words.ptr<std::uint32_t>(), start.x,
                          start.y, end.x, end.y, m_alpha, &array, &count);
        const std::unique_ptr<int, void (*)(int*)> found(array, release_path_array);
        if (array == nullptr) {
            throw UserError("memory ran out in the search for edges; reduce the photograph",
                            UserError::Reason::kOutOfMemory);
        }
        std::vector<cv::Point> pixels{from};
        for (int i = 2; i + 2 < count; i += 2) {
            pixels.push_back(enlarged({array[i], array[i + 1]}));
        }
        pixels.push_back(to);
        return pixels;
    }

    // The strongest edge within reach of a corner; the corner itself where nothing is stronger.
    cv::Point nearbyEdge(cv::Point corner) {
        if (m_strength.empty()) {
            m_strength = edgeStrength();
        }
        const double meanSide = std::sqrt(static_cast<double>(m_image.total()));
        const int reach =
            std::max(kSmallestCornerReach, static_cast<int>(meanSide * kCornerReachShare));
        const cv::Point centre = reduced(corner);
        cv::Point best = centre;
        for (int y = std::max(0, centre.y - reach);
             y <= std::min(m_strength.rows - 1, centre.y + reach); ++y) {
            for (int x = std::max(0, centre.x - reach);
                 x <= std::min(m_strength.cols - 1, centre.x + reach); ++x) {
                if (m_strength.at<float>(y, x) > m_strength.at<float>(best)) {
                    best = {x, y};
                }
            }
        }
        return best == centre ? corner : enlarged(best);
    }

  private:
    cv::Point reduced(cv::Point point) const {
        return {point.x * m_image.cols / m_photoSize.width,
                point.y * m_image.rows / m_photoSize.height};
    }
    // The middle of what a reduced pixel covers.
    cv::Point enlarged(cv::Point point) const {
        return {(2 * point.x + 1) * m_photoSize.width / (2 * m_image.cols),
                (2 * point.y + 1) * m_photoSize.height / (2 * m_image.rows)};
    }
    cv::Mat edgeStrength() const {
        cv::Mat smooth;
        cv::Mat dx;
        cv::Mat dy;
        cv::Mat grey;
        cv::cvtColor(m_image, grey, cv::COLOR_BGR2GRAY);
        cv::GaussianBlur(grey, smooth, {}, kSmoothing);
        cv::Sobel(smooth, dx, CV_32F, 1, 0);
        cv::Sobel(smooth, dy, CV_32F, 0, 1);
        cv::Mat strength;
        cv::magnitude(dx, dy, strength);
        return strength;
    }

    cv::Size m_photoSize;
    double m_alpha;
    SessionHost& m_host;
    cv::Mat m_image;     // CV_8UC3
    cv::Mat m_words;     // the same as pixel words, CV_8UC4
    cv::Mat m_strength;  // CV_32FC1, made when asked for
};

// Without the pixels in the middle of straight runs and without repetitions.
std::vector<cv::Point> bendsOf(const std::vector<cv::Point>& path) {
    std::vector<cv::Point> bends;
    for (const cv::Point& point : path) {
        if (!bends.empty() && point == bends.back()) {
            continue;
        }
        const std::size_t count = bends.size();
        if (count >= 2) {
            const cv::Point before = bends[count - 1] - bends[count - 2];
            const cv::Point after = point - bends[count - 1];
            if (before.cross(after) == 0.0 && before.dot(after) > 0) {
                bends.pop_back();
            }
        }
        bends.push_back(point);
    }
    return bends;
}

void requireAlpha(double alpha) {
    if (!(alpha >= 0.0 && alpha <= 1.0)) {
        throw UserError("alpha must be 0 to 1; give the share of the path's length in its cost");
    }
}

std::vector<cv::Point> pathThrough(EdgeMap& edges, const std::vector<cv::Point>& points) {
    std::vector<cv::Point> pixels;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const std::vector<cv::Point> side = edges.path(points[i - 1], points[i]);
        pixels.insert(pixels.end(), side.begin(), side.end());
    }
    return bendsOf(pixels);
}

}  // namespace

std::vector<cv::Point> snappedPath(const Photo& photo, const std::vector<cv::Point>& points,
                                   double alpha, SessionHost& host, Stats& stats) {
    requireInside(points, photo.size());
    requireAlpha(alpha);
    return stats.measure("snap path", [&] {
        EdgeMap edges(photo, alpha, host);
        return pathThrough(edges, points);
    });
}

Step snapLoop(const Step& step, const Photo& photo, SessionHost& host, Stats& stats) {
    requireInside(step.points, photo.size());
    const double alpha = step.alpha.value_or(kDefaultAlpha);
    requireAlpha(alpha);
    Step loop = step;
    loop.operation = removes(step.operation) ? Operation::kLoopRemove : Operation::kLoopAdd;
    if (step.points.size() < kLoopCorners) {
        return loop;  // what is wrong with it is said where plain loops are checked
    }
    return stats.measure("snap loop", [&] {
        EdgeMap edges(photo, alpha, host);
        for (cv::Point& corner : loop.points) {
            corner = edges.nearbyEdge(corner);
        }
        loop.points.push_back(loop.points.front());
        loop.points = pathThrough(edges, loop.points);
        if (loop.points.size() > 1) {
            loop.points.pop_back();  // a loop closes by itself
        }
        return loop;
    });
}
