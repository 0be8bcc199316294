#include "fuzzed_host.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <thread>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/log_capture.h"

namespace {

constexpr int kMostCalls = 24;
constexpr int kSmallSide = 24;
constexpr int kLongSide = 3000;
// A little above the working image's pixels, so that some photographs are reduced.
constexpr int kMostPixels = 90000;
constexpr int kLongestCancelDelay = 4000;  // microseconds
constexpr std::uint8_t kUntouched = 7;
constexpr std::uint32_t kUntouchedWord = 0x01020304U;
constexpr std::uint32_t kOutlineWord = 0xFFFFFF00U;

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", what);
        std::abort();
    }
}

}  // namespace

bool FuzzedHost::Size::valid() const {
    return width >= 1 && height >= 1 &&
           static_cast<std::int64_t>(width) * height <= SEGCORE_MAX_PIXELS;
}

std::size_t FuzzedHost::Size::pixels() const {
    return valid() ? static_cast<std::size_t>(width) * static_cast<std::size_t>(height) : 1;
}

FuzzedHost::~FuzzedHost() {
    segcore_set_observer(nullptr, nullptr);
    segcore_set_time_limit(-1.0);
    deinitSegmentation();
    freeLocalBuffers();
    resetSegmentationInterface();
    exitSegmentation();
    VORNSEMarker::m_originalWidth = 0;
    VORNSEMarker::m_originalHeight = 0;
    clearLog();
}

void FuzzedHost::run() {
    // Most calls do something only with a photograph and an engine.
    if (m_data.ConsumeIntegralInRange(0, 7) > 0) {
        newPhoto();
        initSegmentationEngine(0);
    }
    for (int made = 0; made < kMostCalls && m_data.remaining_bytes() > 0; ++made) {
        m_largest = {std::max(m_largest.width, storedSize().width),
                     std::max(m_largest.height, storedSize().height)};
        m_blended.assign(storedSize().pixels(), kUntouchedWord);
        m_mask.assign(storedSize().pixels(), kUntouched);
        makeCall();
        checkHistory();
    }
}

void FuzzedHost::makeCall() {
    enum class Kind {
        kNewPhoto,
        kEngine,
        kBoxAtOnce,
        kStroke,
        kMarks,
        kRequest,
        kMarkedRequest,
        kSecondMarkedRequest,
        kEdit,
        kMarkedEdit,
        kUndo,
        kRedo,
        kOutline,
        kCopy,
        kFreeBuffers,
        kReset,
        kDeinit,
        kCancel,
        kExit,
        kRefused,
        kTimeLimit,
        kObserver,
        kMaxValue = kObserver
    };
    switch (m_data.ConsumeEnum<Kind>()) {
        case Kind::kNewPhoto:
            return newPhoto();
        case Kind::kEngine:
            return call([] { initSegmentationEngine(0); });
        case Kind::kBoxAtOnce:
            return boxAtOnce();
        case Kind::kStroke:
            return passStroke();
        case Kind::kMarks:
            return passMarks();
        case Kind::kRequest:
            return request();
        case Kind::kMarkedRequest:
        case Kind::kSecondMarkedRequest:
            passStroke();
            passMarks();
            return request();
        case Kind::kEdit:
            return edit();
        case Kind::kMarkedEdit:
            passMarks();
            return edit();
        case Kind::kUndo:
            return step(true);
        case Kind::kRedo:
            return step(false);
        case Kind::kOutline:
            return fetchOutline();
        case Kind::kCopy:
            copySourceImage(drawBuffer(m_blended));
            return snapPath();
        case Kind::kFreeBuffers:
            freeLocalBuffers();
            return m_marks.clear();
        case Kind::kReset:
            resetSegmentationInterface();
            return m_history.clear();
        case Kind::kDeinit:
            deinitSegmentation();
            return m_history.clear();
        case Kind::kCancel:
            return cancelSegmentation();
        case Kind::kExit:
            return exitSegmentation();
        case Kind::kRefused:
            return refusedDeliveries();
        case Kind::kTimeLimit:
            return setTimeLimit();
        case Kind::kObserver:
            return observe();
    }
}

FuzzedHost::Size FuzzedHost::drawSize() {
    switch (m_data.ConsumeIntegralInRange(0, 15)) {
        case 0:
            return {m_data.ConsumeIntegral<int>(), m_data.ConsumeIntegral<int>()};
        case 1: {
            const int width = m_data.ConsumeIntegralInRange(1, kLongSide);
            return {width, m_data.ConsumeIntegralInRange(1, std::max(kMostPixels / width, 1))};
        }
        case 2:
            return {m_data.ConsumeIntegralInRange(1, 3), m_data.ConsumeIntegralInRange(1, 3)};
        default:
            return {m_data.ConsumeIntegralInRange(1, kSmallSide),
                    m_data.ConsumeIntegralInRange(1, kSmallSide)};
    }
}

int FuzzedHost::drawCoordinate(int size) {
    if (m_data.ConsumeIntegralInRange(0, 15) == 0) {
        return m_data.ConsumeIntegral<int>();
    }
    return m_data.ConsumeIntegralInRange(-3, std::clamp(size, 1, kMostPixels) + 3);
}

// A few colours in blocks, with noise between none and all.
std::vector<std::uint32_t> FuzzedHost::drawPhoto(Size size) {
    const auto block = m_data.ConsumeIntegralInRange<std::size_t>(1, 64);
    const auto noise = m_data.ConsumeIntegral<std::uint32_t>();
    const bool grey = m_data.ConsumeBool();
    std::mt19937 random(m_data.ConsumeIntegral<std::uint16_t>());
    const std::uint32_t colours[] = {m_data.ConsumeIntegral<std::uint32_t>(),
                                     m_data.ConsumeIntegral<std::uint32_t>(),
                                     m_data.ConsumeIntegral<std::uint32_t>()};
    std::vector<std::uint32_t> pixels(size.pixels());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t y = i / static_cast<std::size_t>(std::max(size.width, 1));
        const std::uint32_t colour = colours[(i / block + y / block * 2) % 3];
        const std::uint32_t word = colour ^ (static_cast<std::uint32_t>(random()) & noise);
        pixels[i] = grey ? (word & 0xFFU) * 0x010101U : word;
    }
    return pixels;
}

// A rectangle or two of any code on a ground of none, or codes all over.
std::vector<int> FuzzedHost::drawMarks(Size size) {
    std::vector<int> marks(size.pixels());
    if (m_data.ConsumeIntegralInRange(0, 7) == 0) {
        std::mt19937 random(m_data.ConsumeIntegral<std::uint16_t>());
        const unsigned range = m_data.ConsumeIntegralInRange(1U, 300U);
        for (int& mark : marks) {
            mark = static_cast<int>(random() % range) - 1;
        }
        return marks;
    }
    for (int rectangles = m_data.ConsumeIntegralInRange(0, 2); rectangles > 0; --rectangles) {
        const int code = m_data.ConsumeIntegralInRange(0, 7) == 0
                             ? m_data.ConsumeIntegral<int>()
                             : m_data.ConsumeIntegralInRange(0, 5);
        const int left = m_data.ConsumeIntegralInRange(0, std::max(size.width, 1) - 1);
        const int top = m_data.ConsumeIntegralInRange(0, std::max(size.height, 1) - 1);
        const int right = m_data.ConsumeIntegralInRange(left, std::max(size.width, 1) - 1);
        const int bottom = m_data.ConsumeIntegralInRange(top, std::max(size.height, 1) - 1);
        for (int y = top; size.valid() && y <= bottom; ++y) {
            const auto row = marks.begin() + static_cast<std::ptrdiff_t>(y) * size.width;
            std::fill(row + left, row + right + 1, code);
        }
    }
    return marks;
}

template <typename T>
T* FuzzedHost::drawBuffer(std::vector<T>& buffer) {
    return m_data.ConsumeIntegralInRange(0, 31) == 0 ? nullptr : buffer.data();
}

template <typename Call>
void FuzzedHost::call(Call&& body) {
    std::thread canceller;
    if (m_data.ConsumeIntegralInRange(0, 15) == 0) {
        const std::chrono::microseconds delay(
            m_data.ConsumeIntegralInRange(0, kLongestCancelDelay));
        canceller = std::thread([delay] {
            std::this_thread::sleep_for(delay);
            cancelSegmentation();
        });
    }
    clearLog();
    body();
    if (canceller.joinable()) {
        canceller.join();
    }
    m_errors.clear();
    for (const LogLine& line : takeErrors()) {
        // These calls were not the one that is looked at.
        if (line.text.find(": refused inside the observer") == std::string::npos) {
            m_errors.push_back(line.text);
        }
    }
}

bool FuzzedHost::failed(const char* name) const {
    const std::string start = std::string(name) + ": ";
    return std::any_of(m_errors.begin(), m_errors.end(),
                       [&](const std::string& text) { return text.rfind(start, 0) == 0; });
}

FuzzedHost::Size FuzzedHost::storedSize() const {
    return {VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight};
}

void FuzzedHost::newPhoto() {
    Size size = drawSize();
    if (size.valid() && size.pixels() > kMostPixels) {
        size.width = 0;
    }
    std::vector<std::uint32_t> photo = drawPhoto(size);
    const std::uint32_t* pixels = drawBuffer(photo);
    call([&] { setSourceImage(size.width, size.height, pixels); });
    require(failed("setSourceImage") == (!size.valid() || pixels == nullptr),
            "bad photographs are refused, good ones taken");
    if (!failed("setSourceImage")) {
        m_history.clear();
        std::vector<std::uint32_t> copy(photo.size());
        copySourceImage(copy.data());
        require(std::equal(
                    copy.begin(), copy.end(), photo.begin(),
                    [](std::uint32_t out, std::uint32_t in) { return out == (in | 0xFF000000U); }),
                "the photograph comes back as it was passed");
    }
}

void FuzzedHost::boxAtOnce() {
    Size size = drawSize();
    if (size.valid() && size.pixels() > kMostPixels) {
        size.height = 0;
    }
    std::vector<std::uint32_t> photo = drawPhoto(size);
    m_mask.assign(size.pixels(), kUntouched);
    const std::uint32_t* pixels = drawBuffer(photo);
    std::uint8_t* mask = drawBuffer(m_mask);
    const int left = drawCoordinate(size.width);
    const int top = drawCoordinate(size.height);
    const int right = drawCoordinate(size.width);
    const int bottom = drawCoordinate(size.height);
    call(
        [&] { doSegmentationBB(size.width, size.height, pixels, left, top, right, bottom, mask); });
    if (failed("doSegmentationBB")) {
        return;
    }
    m_history.clear();
    m_blended.clear();
    if (checkDelivery(mask != nullptr)) {
        m_history.record(m_mask);
    }
}

void FuzzedHost::passStroke() {
    const int points = m_data.ConsumeIntegralInRange(0, 8);
    std::vector<int> stroke;
    for (int i = 0; i < points; ++i) {
        stroke.push_back(drawCoordinate(storedSize().width));
        stroke.push_back(drawCoordinate(storedSize().height));
    }
    // An odd count reads the last y all the same.
    const int count = 2 * points - (points > 0 && m_data.ConsumeBool() ? 1 : 0);
    int* const passed = drawBuffer(stroke);
    call([&] { setCurrentMarkerVector(count == 0 ? -points : count, passed); });
}

void FuzzedHost::passMarks() {
    Size size = m_data.ConsumeIntegralInRange(0, 15) == 0 ? drawSize() : storedSize();
    if (size.valid() && size.pixels() > kMostPixels) {
        size.height = -1;
    }
    std::vector<int> marks = drawMarks(size);
    const int* const passed = drawBuffer(marks);
    const int strokeType = m_data.ConsumeIntegralInRange(-1, 5);
    call([&] { setMarkerImage(size.width, size.height, passed, strokeType); });
    if (!failed("setMarkerImage")) {
        m_marks = marks;
    }
}

void FuzzedHost::request() {
    std::uint32_t* const blended = drawBuffer(m_blended);
    std::uint8_t* const mask = drawBuffer(m_mask);
    int status = SEGCORE_DONE;
    call([&] {
        processSegment(0, 0, 0, blended, mask);
        status = segcore_last_status();
    });
    m_marks.clear();
    const bool refused = status == SEGCORE_REFUSED || status == SEGCORE_OUT_OF_MEMORY;
    require(failed("processSegment") == refused, "the status tells of a refusal as the log does");
    if (checkDelivery(mask != nullptr)) {
        require(
            status == SEGCORE_DONE || status == SEGCORE_CANCELLED || status == SEGCORE_OUT_OF_TIME,
            "the status of a mask fits it");
        m_history.record(m_mask);
    } else {
        require(status != SEGCORE_DONE, "a request without a mask is not done");
    }
}

void FuzzedHost::setTimeLimit() {
    const double limits[] = {-1.0, 0.0,   1e-6,
                             1e-3, 1e300, std::numeric_limits<double>::quiet_NaN()};
    segcore_set_time_limit(limits[m_data.ConsumeIntegralInRange(0, 5)]);
}

void FuzzedHost::observe() {
    m_observerActsIn = m_data.ConsumeIntegralInRange(0, 25);
    m_observerAct = m_data.ConsumeIntegralInRange(0, 4);
    const segcore_observer observer = [](const segcore_progress* progress, void* user) {
        return static_cast<FuzzedHost*>(user)->observed(*progress);
    };
    segcore_set_observer(m_observerAct == 0 ? nullptr : observer, this);
}

int FuzzedHost::observed(const segcore_progress& progress) {
    require(progress.fraction >= 0.0 && progress.fraction <= 1.0, "a share lies between 0 and 1");
    require((progress.mask != nullptr) == (progress.stage == SEGCORE_STAGE_WORKING_MASK),
            "the working mask comes in its stage");
    for (int i = 0; i < progress.mask_width * progress.mask_height; ++i) {
        require(progress.mask[i] == 0 || progress.mask[i] == 255, "a preview is a mask");
    }
    if (m_observerActsIn-- != 0) {
        return 0;
    }
    switch (m_observerAct) {
        case 1:
            return 1;
        case 2:
            cancelSegmentation();
            return 0;
        case 3:
            deinitSegmentation();
            undo(nullptr, nullptr);
            doSegmentationBB(0, 0, nullptr, 0, 0, 0, 0, nullptr);
            segcore_set_observer(nullptr, nullptr);
            return 0;
        default:
            return 0;
    }
}

void FuzzedHost::edit() {
    Mask expected = m_history.shown() != nullptr ? *m_history.shown()
                                                 : Mask(storedSize().pixels(), std::uint8_t{255});
    for (std::size_t i = 0; i < std::min(m_marks.size(), expected.size()); ++i) {
        if (m_marks[i] == SEGCORE_MARK_BACKGROUND || m_marks[i] == SEGCORE_MARK_OBJECT) {
            expected[i] = m_marks[i] == SEGCORE_MARK_BACKGROUND ? 255 : 0;
        }
    }
    std::uint32_t* const blended = drawBuffer(m_blended);
    std::uint8_t* const mask = drawBuffer(m_mask);
    call([&] { cutOutImage(0, 0, 0, blended, mask); });
    m_marks.clear();
    const bool delivered = checkDelivery(mask != nullptr);
    require(delivered == (mask != nullptr && !failed("cutOutImage")), "an edit delivers its mask");
    if (!failed("cutOutImage")) {
        require(!delivered || m_mask == expected, "an edit changes what is marked");
        m_history.record(expected);
    }
}

void FuzzedHost::step(bool back) {
    std::uint32_t* const blended = drawBuffer(m_blended);
    std::uint8_t* const mask = drawBuffer(m_mask);
    call([&] { back ? undo(blended, mask) : redo(blended, mask); });
    m_marks.clear();
    const bool delivered = checkDelivery(mask != nullptr);
    if (failed(back ? "undo" : "redo")) {
        require(!delivered, "a step that fails delivers no mask");
        return;
    }
    back ? m_history.stepBack() : m_history.stepForward();
    if (m_history.shown() != nullptr) {
        require(delivered && m_mask == *m_history.shown(), "steps deliver the masks of the edit");
    }
}

void FuzzedHost::fetchOutline() {
    int* array = nullptr;
    int count = 0;
    call([&] { fetch_path_array(&array, &count); });
    require(array != nullptr && count >= 1, "there is an outline, or a zero");
    int next = 1;
    for (int contour = 0; contour < array[0]; ++contour) {
        const int points = array[next];
        require(points >= 1 && next + 2 * points + 1 < count, "contours lie inside the array");
        for (int i = next + 1; i <= next + 2 * points; i += 2) {
            // A new photograph leaves the outline of the last result to be fetched.
            require(array[i] >= 0 && array[i] < m_largest.width && array[i + 1] >= 0 &&
                        array[i + 1] < m_largest.height,
                    "contours lie inside the photograph");
        }
        next += 2 * points + 2;
        require(array[next - 1] == -1, "a contour ends with its mark");
    }
    require(next == count, "the array is used up");
    release_path_array(array);
}

// Over the pixels that the copy before it delivered, or over none.
void FuzzedHost::snapPath() {
    const Size size = storedSize();
    const int from = drawCoordinate(size.width);
    const int to = drawCoordinate(size.height);
    int* array = nullptr;
    int count = 0;
    call([&] {
        segcore_snap_path(size.width, size.height, m_blended.data(), from, 0, 0, to, 0.5, &array,
                          &count);
    });
    const bool fits = size.valid() && from >= 0 && from < size.width && to >= 0 && to < size.height;
    require((array != nullptr) == fits && failed("segcore_snap_path") == !fits,
            "bad ends of a path are refused, good ones taken");
    for (int i = 0; i + 3 < count; i += 2) {
        require(
            std::abs(array[i] - array[i + 2]) <= 1 && std::abs(array[i + 1] - array[i + 3]) <= 1,
            "a path goes from neighbour to neighbour");
    }
    require(!fits || (array[0] == from && array[1] == 0 && array[count - 2] == 0 &&
                      array[count - 1] == to),
            "a path has the ends that were asked for");
    release_path_array(array);
}

void FuzzedHost::refusedDeliveries() {
    int* array = nullptr;
    int count = 0;
    call([&] {
        loadMaskImageInfo(m_mask.data());
        loadBlendedImageInfo(m_blended.data());
        fetch_path_array(nullptr, &count);
        fetch_path_array(&array, nullptr);
        release_path_array(nullptr);
    });
    require(m_errors.size() == 4, "each refused call logs one line");
    checkDelivery(true);
}

bool FuzzedHost::checkDelivery(bool maskPassed) {
    const bool delivered = maskPassed && m_mask.front() != kUntouched;
    require(std::all_of(m_mask.begin(), m_mask.end(),
                        [delivered](std::uint8_t byte) {
                            return delivered ? byte == 0 || byte == 255 : byte == kUntouched;
                        }),
            "a mask comes whole or not at all");
    // The photograph is opaque, and the pattern is not.
    require(std::all_of(m_blended.begin(), m_blended.end(),
                        [delivered](std::uint32_t word) {
                            return word == kUntouchedWord ||
                                   (delivered ? word == kOutlineWord : word >> 24 == 0xFFU);
                        }),
            "an outline is painted with a mask, the photograph is shown without one");
    return delivered;
}

void FuzzedHost::checkHistory() {
    if (VORNSEManageUndoRedo::m_bitPlane == nullptr) {
        m_history.clear();
    }
    require(canUndo() == m_history.canUndo(), "undo is offered when there is a mask before");
    require(canRedo() == m_history.canRedo(), "redo is offered when there is a mask after");
}
