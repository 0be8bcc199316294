#include "curves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <sstream>

namespace {

// All lengths in pixels of the picture.
constexpr double kPanelWidth = 250.0;
constexpr double kPanelHeight = 200.0;
constexpr double kLeft = 55.0;  // of a panel, for the numbers of its axis
constexpr double kTop = 70.0;   // for the legend and the panels' titles
constexpr double kBottom = 45.0;
constexpr double kRight = 15.0;
constexpr double kLegendEntry = 150.0;
constexpr double kMostTicks = 6.0;

// Apart for all kinds of colour vision (Tol, bright).
constexpr std::array<const char*, 7> kColours{"#4477aa", "#ee6677", "#228833", "#ccbb44",
                                              "#66ccee", "#aa3377", "#bbbbbb"};

const char* colourOf(std::size_t method) {
    return kColours[method % kColours.size()];
}

struct Panel {
    const char* title;
    bool fromZero;  // the axis, or from near the smallest value
    std::function<std::optional<double>(const StrokeMeans&)> value;
};

const std::vector<Panel>& panels() {
    using Value = std::optional<double>;
    static const std::vector<Panel> all{
        {"error, %", true,
         [](const StrokeMeans& means) -> Value { return 100.0 * means.errorRate; }},
        {"intersection over union", false,
         [](const StrokeMeans& means) -> Value { return means.iou; }},
        {"milliseconds", true, [](const StrokeMeans& means) { return means.milliseconds; }}};
    return all;
}

// From one tick to another, with 1, 2 or 5 of a power of ten between ticks.
struct Axis {
    double from;
    double to;
    double step;
};

Axis axisFor(double smallest, double largest) {
    const double range = std::max(largest - smallest, 1e-6);
    const double power = std::pow(10.0, std::floor(std::log10(range / kMostTicks)));
    double step = 10.0 * power;
    for (const double factor : {5.0, 2.0, 1.0}) {
        if (range / (factor * power) <= kMostTicks) {
            step = factor * power;
        }
    }
    const double from = std::floor(smallest / step) * step;
    return {from, std::max(std::ceil(largest / step) * step, from + step), step};
}

class Drawing {
  public:
    Drawing(double width, double height) {
        m_svg << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << width << R"(" height=")"
              << height << R"(" font-family="sans-serif" font-size="12">)" << '\n'
              << R"(<rect width="100%" height="100%" fill="#ffffff"/>)" << '\n';
    }

    void line(double x1, double y1, double x2, double y2, const char* colour, double width) {
        m_svg << R"(<line x1=")" << x1 << R"(" y1=")" << y1 << R"(" x2=")" << x2 << R"(" y2=")"
              << y2 << R"(" stroke=")" << colour << R"(" stroke-width=")" << width << R"("/>)"
              << '\n';
    }

    void text(double x, double y, const char* anchor, const std::string& words) {
        m_svg << R"(<text x=")" << x << R"(" y=")" << y << R"(" text-anchor=")" << anchor << R"(">)"
              << words << "</text>\n";
    }

    void curve(const std::vector<std::pair<double, double>>& points, const char* colour) {
        m_svg << R"(<polyline fill="none" stroke-width="2" stroke=")" << colour << R"(" points=")";
        for (const auto& [x, y] : points) {
            m_svg << x << ',' << y << ' ';
        }
        m_svg << R"("/>)" << '\n';
        for (const auto& [x, y] : points) {
            m_svg << R"(<circle r="3" cx=")" << x << R"(" cy=")" << y << R"(" fill=")" << colour
                  << R"("/>)" << '\n';
        }
    }

    std::string finished() const { return m_svg.str() + "</svg>\n"; }

  private:
    std::ostringstream m_svg;
};

std::string shortNumber(double number) {
    std::ostringstream text;
    text << (std::fabs(number) < 1e-9 ? 0.0 : number);  // a sum of steps may miss zero a little
    return text.str();
}

Axis axisOf(const Panel& panel, const std::vector<MethodSummary>& summaries) {
    double smallest = panel.fromZero ? 0.0 : std::numeric_limits<double>::max();
    double largest = std::numeric_limits<double>::lowest();
    for (const MethodSummary& summary : summaries) {
        for (const StrokeMeans& means : summary.byStrokes) {
            if (const std::optional<double> value = panel.value(means)) {
                smallest = std::min(smallest, *value);
                largest = std::max(largest, *value);
            }
        }
    }
    return axisFor(smallest, std::max(smallest, largest));
}

void drawPanel(Drawing& drawing, const Panel& panel, double left,
               const std::vector<MethodSummary>& summaries) {
    const Axis axis = axisOf(panel, summaries);
    const std::size_t strokes = summaries.front().byStrokes.size() - 1;
    const auto x = [&](std::size_t count) {
        return left + kPanelWidth * static_cast<double>(count) /
                          static_cast<double>(std::max<std::size_t>(strokes, 1));
    };
    const auto y = [&](double value) {
        return kTop + kPanelHeight * (axis.to - value) / (axis.to - axis.from);
    };
    drawing.text(left + kPanelWidth / 2, kTop - 10, "middle", panel.title);
    const auto ticks = std::lround((axis.to - axis.from) / axis.step);
    for (long tick = 0; tick <= ticks; ++tick) {
        const double value = axis.from + static_cast<double>(tick) * axis.step;
        drawing.line(left, y(value), left + kPanelWidth, y(value), "#dddddd", 1);
        drawing.text(left - 6, y(value) + 4, "end", shortNumber(value));
    }
    const std::size_t every = strokes / 10 + 1;  // more numbers than ten would touch
    for (std::size_t count = 0; count <= strokes; count += every) {
        drawing.text(x(count), kTop + kPanelHeight + 18, "middle", std::to_string(count));
    }
    drawing.text(left + kPanelWidth / 2, kTop + kPanelHeight + 36, "middle", "strokes");
    for (std::size_t method = 0; method < summaries.size(); ++method) {
        std::vector<std::pair<double, double>> points;
        for (std::size_t count = 0; count <= strokes; ++count) {
            if (const auto value = panel.value(summaries[method].byStrokes[count])) {
                points.emplace_back(x(count), y(*value));
            }
        }
        drawing.curve(points, colourOf(method));
    }
}

void drawLegend(Drawing& drawing, const std::vector<MethodSummary>& summaries,
                const RobotOptions& options) {
    drawing.text(kLeft, 20, "start",
                 std::string("From ") + nameOf(options.start) + ", mean of " +
                     std::to_string(summaries.front().photos) +
                     (summaries.front().large ? " large" : "") + " photographs");
    for (std::size_t method = 0; method < summaries.size(); ++method) {
        const double left = kLeft + kLegendEntry * static_cast<double>(method + 2);
        drawing.line(left, 16, left + 24, 16, colourOf(method), 3);
        drawing.text(left + 30, 20, "start", summaries[method].method);
    }
}

}  // namespace

std::string curvesOf(const std::vector<MethodSummary>& summaries, const RobotOptions& options) {
    std::vector<MethodSummary> shown;
    std::copy_if(
        summaries.begin(), summaries.end(), std::back_inserter(shown),
        [&](const MethodSummary& summary) { return summary.large == summaries.front().large; });
    const double panelWidth = kLeft + kPanelWidth + kRight;
    Drawing drawing(panelWidth * static_cast<double>(panels().size()),
                    kTop + kPanelHeight + kBottom);
    drawLegend(drawing, shown, options);
    double left = kLeft;
    for (const Panel& panel : panels()) {
        drawPanel(drawing, panel, left, shown);
        left += panelWidth;
    }
    return drawing.finished();
}
