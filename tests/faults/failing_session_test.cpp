// A session in which allocation or thread start number n fails, for every n of every call: the call
// either fails as a whole, with one error line and everything as it was, or gets by without; and
// the session goes on as if nothing had happened.
#include <gtest/gtest.h>
#include <algorithm>
#include <functional>
#include <string>
#include <tuple>

#include "interface/context_snapshot.h"
#include "support/host_session.h"
#include "support/injected_faults.h"
#include "support/log_capture.h"

namespace {

using History = VORNSEManageUndoRedo;

// Starts without photograph and engine. Buffers are made before the calls, so that only the
// library's allocations fail.
struct Host : HostSession {
    explicit Host(const Scene& scene) : HostSession(scene), marks(noMarkers()) {
        deinitSegmentation();
    }
    ~Host() {
        release_path_array(outline);
        // The stroke's store stays for the next stroke.
        std::vector<int>().swap(VORNSEMarker::currentStroke.m_points);
    }

    void clearResults() {
        blended = photo;
        mask.assign(mask.size(), kUntouched);
        release_path_array(outline);
        outline = nullptr;
        outlineInts = 0;
    }
    bool hasResults() const {
        return outline != nullptr || blended != photo ||
               std::any_of(mask.begin(), mask.end(), [](auto byte) { return byte != kUntouched; });
    }
    auto results() const {
        return std::tuple(blended, mask, std::vector<int>(outline, outline + outlineInts));
    }
    // Has the history use planes that a host built, with what is in them.
    static void buildPlanes() {
        const int columns = VORNSEMarker::m_originalWidth;
        const int rows = VORNSEMarker::m_originalHeight;
        std::uint32_t** const old = History::m_bitPlane;
        auto** planes = new std::uint32_t*[static_cast<std::size_t>(columns)];
        for (int x = 0; x < columns; ++x) {
            planes[x] = new std::uint32_t[static_cast<std::size_t>(rows)];
            std::copy_n(old[x], rows, planes[x]);
        }
        const std::tuple ring(History::m_bottom, History::m_current, History::m_top);
        History::deallocate();
        History::m_bitPlane = planes;
        History::width = columns;
        std::tie(History::m_bottom, History::m_current, History::m_top) = ring;
    }
    // A square mark of `code` with its corner at (x, y), and the stroke across it.
    void mark(int x, int y, int side, int code, int strokeType) {
        if (hostsPlanes) {
            buildPlanes();
        }
        marks = rectangle(x, y, side, side, code);
        stroke = {x, y, x + side - 1, y, x + side - 1, y + side - 1, x, y + side - 1};
        setCurrentMarkerVector(8, stroke.data());
        setMarkerImage(width, height, marks.data(), strokeType);
    }

    static constexpr std::uint8_t kUntouched = 7;
    static inline bool hostsPlanes = false;
    std::vector<int> marks;
    std::vector<int> stroke;
    int* outline = nullptr;
    int outlineInts = 0;
};

struct Call {
    const char* name;
    std::function<void(Host&)> make;
    std::function<void(Host&)> prepare = [](Host&) {};  // nothing fails in it
};

Call segment(int inset, int side, int code, int strokeType) {
    return {"processSegment",
            [](Host& host) { processSegment(0, 0, 0, host.blended.data(), host.mask.data()); },
            [=](Host& host) {
                host.mark(host.width / 2 - side / 2 + inset, host.height / 2 - side / 2, side, code,
                          strokeType);
            }};
}

const std::vector<Call>& session() {
    static const Call undoing{"undo",
                              [](Host& host) { undo(host.blended.data(), host.mask.data()); }};
    static const Call preparing{"initSegmentationEngine", [](Host&) { initSegmentationEngine(0); }};
    static const Call passing{"setSourceImage", [](Host& host) {
                                  setSourceImage(host.width, host.height, host.photo.data());
                              }};
    static const std::vector<Call> calls{
        passing,
        preparing,
        {"setCurrentMarkerVector",
         [](Host& host) { setCurrentMarkerVector(80, host.stroke.data()); },
         [](Host& host) { host.stroke.assign(80, 3); }},
        {"setMarkerImage",
         [](Host& host) {
             setMarkerImage(host.width, host.height, host.marks.data(), SEGCORE_LOOP_ADD);
         }},
        segment(0, 26, SEGCORE_MARK_CANDIDATE, SEGCORE_LOOP_ADD),
        {"fetch_path_array",
         [](Host& host) { fetch_path_array(&host.outline, &host.outlineInts); }},
        segment(6, 8, SEGCORE_MARK_OBJECT, SEGCORE_BRUSH_ADD),
        {"cutOutImage",
         [](Host& host) { cutOutImage(0, 0, 0, host.blended.data(), host.mask.data()); },
         [](Host& host) { host.mark(30, 18, 18, SEGCORE_MARK_OBJECT, SEGCORE_BRUSH_ADD); }},
        undoing,
        segment(8, 8, SEGCORE_MARK_BACKGROUND, SEGCORE_BRUSH_REMOVE),  // drops another mask
        undoing,
        {"redo", [](Host& host) { redo(host.blended.data(), host.mask.data()); }},
        passing,
        preparing,
        {"doSegmentationBB",
         [](Host& host) {
             doSegmentationBB(host.width, host.height, host.photo.data(), host.width / 2 - 13,
                              host.height / 2 - 13, host.width / 2 + 13, host.height / 2 + 13,
                              host.mask.data());
         }},
        segment(6, 8, SEGCORE_MARK_OBJECT, SEGCORE_BRUSH_ADD)};
    return calls;
}

void makeCalls(Host& host, std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; ++i) {
        host.clearResults();
        session()[i].prepare(host);
        session()[i].make(host);
    }
}

auto expectedResults(const Scene& scene) {
    Host host(scene);
    std::vector<decltype(host.results())> results;
    for (std::size_t i = 0; i < session().size(); ++i) {
        makeCalls(host, i, i + 1);
        results.push_back(host.results());
    }
    return results;
}

// The colour models that the next request starts from, byte by byte.
std::string colourModels() {
    std::string bytes;
    if (pHybrid != nullptr) {
        for (const VORNSEColorModel* model : {&pHybrid->m_fgModel, &pHybrid->m_bgModel}) {
            bytes.append(reinterpret_cast<const char*>(model), sizeof *model);
        }
    }
    return bytes;
}

// Every other fault in each test: no sweep takes long, and its parts run side by side.
constexpr long kShares = 2;

struct Sweep {
    Fault fault;
    bool onward;
    bool reduced;  // a grey photograph above the working size, or a small colour one
    bool hostsPlanes = false;
};

class FailingSession : public testing::TestWithParam<std::tuple<Sweep, long>> {
  protected:
    // Fails what call number `index` asks for, one after the other. The number of faults.
    long failCall(std::size_t index) {
        const Call& call = session()[index];
        auto host = std::make_unique<Host>(m_scene);
        makeCalls(*host, 0, index);
        long faults = 0;
        for (long n = 1 + m_share;; n += kShares) {
            host->clearResults();
            call.prepare(*host);
            const auto before = std::pair(editingContext(), colourModels());
            clearLog();
            armFault(m_sweep.fault, n, m_sweep.onward);
            call.make(*host);
            const bool failed = disarmFault();
            const Log errors = takeErrors();
            const std::string start = std::string(call.name) + ": ";
            const bool refused = !errors.empty() && errors.back().text.rfind(start, 0) == 0;
            if (!failed) {
                EXPECT_TRUE(host->results() == m_expected[index]);
                makeCalls(*host, index + 1, session().size());
                EXPECT_TRUE(host->results() == m_expected.back());
                return faults;
            }
            ++faults;
            if (refused) {
                EXPECT_FALSE(host->hasResults()) << n;
                EXPECT_TRUE(before == std::pair(editingContext(), colourModels()))
                    << n << ' ' << errors.back();
            } else {
                EXPECT_TRUE(m_sweep.fault == Fault::kAllocation ||
                            host->results() == m_expected[index])
                    << n;
                host = nullptr;
                host = std::make_unique<Host>(m_scene);
                makeCalls(*host, 0, index);
            }
            if (HasFailure()) {
                return faults;
            }
        }
    }

    static Scene makeReducedScene() {
        Scene scene = makeDiscScene(430, 200);
        for (std::uint32_t& word : scene.pixels) {
            word = 0xFF000000U | (word & 0xFFU) * 0x010101U;
        }
        return scene;
    }

    const Sweep m_sweep = std::get<0>(GetParam());
    const long m_share = std::get<1>(GetParam());
    const Scene m_scene = m_sweep.reduced ? makeReducedScene() : makeDiscScene(48, 36);
    const decltype(expectedResults(m_scene)) m_expected = expectedResults(m_scene);
};

TEST_P(FailingSession, FailsCleanlyOrNotAtAll) {
    Host::hostsPlanes = m_sweep.hostsPlanes;
    expectedResults(m_scene);  // whatever the libraries keep is there from here on
    failCall(0);
    long faults = 0;
    for (std::size_t index = 0; index < session().size() && !HasFailure(); ++index) {
        SCOPED_TRACE(std::to_string(index) + ' ' + session()[index].name);
        clearLog();
        const long blocks = liveBlocks() - imagingLibraryFailures();
        faults += failCall(index);
        clearLog();
        EXPECT_LE(liveBlocks() - imagingLibraryFailures(), blocks);
    }
    EXPECT_GT(faults, 50 / kShares);
    RecordProperty("faults", static_cast<int>(faults));
}

std::string sweepName(const testing::TestParamInfo<FailingSession::ParamType>& test) {
    const auto& [sweep, share] = test.param;
    return std::string(sweep.fault == Fault::kThread ? "Thread" : "Allocation") +
           (sweep.onward ? "Onward" : "") + (sweep.reduced ? "Reduced" : "") +
           (sweep.hostsPlanes ? "HostsPlanes" : "") + std::to_string(share);
}

constexpr Sweep kSweeps[] = {
    {Fault::kAllocation, false, false}, {Fault::kAllocation, true, false},
    {Fault::kAllocation, false, true},  {Fault::kAllocation, false, false, true},
    {Fault::kThread, false, false},     {Fault::kThread, true, false}};
INSTANTIATE_TEST_SUITE_P(Sweeps, FailingSession,
                         testing::Combine(testing::ValuesIn(kSweeps), testing::Range(0L, kShares)),
                         sweepName);

}  // namespace
