// The host's steps through the history.
#include <gtest/gtest.h>

#include "history/undo_redo_history.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

// One object pixel more with every edit.
void edit(HostSession& session, int step) {
    std::vector<int> markers = session.noMarkers();
    markers[static_cast<std::size_t>(1000 + 5 * step)] = SEGCORE_MARK_OBJECT;
    session.cutOut(markers);
}

TEST(UndoRedo, StepsDeliverTheMasksAndThenThePhotograph) {
    HostSession session(discScene());
    std::vector<std::vector<std::uint8_t>> masks;
    std::vector<std::vector<std::uint32_t>> blends;
    for (int step = 0; step < 3; ++step) {
        edit(session, step);
        masks.push_back(session.mask);
        blends.push_back(session.blended);
    }
    session.undo();
    EXPECT_EQ(session.mask, masks[1]);
    EXPECT_EQ(session.blended, blends[1]);
    EXPECT_TRUE(canUndo());
    session.undo();
    EXPECT_EQ(session.mask, masks[0]);
    EXPECT_FALSE(canUndo());
    session.blended.assign(session.blended.size(), 0);
    ::undo(session.blended.data(), nullptr);  // no mask to deliver, so none is needed
    EXPECT_EQ(session.blended, session.photo);
    EXPECT_EQ(session.mask, masks[0]);
    for (const std::size_t step : {0U, 1U, 2U, 2U}) {
        EXPECT_EQ(canRedo(), step != 2 || session.mask == masks[1]);
        session.redo();
        EXPECT_EQ(session.mask, masks[step]);
        EXPECT_EQ(session.blended, blends[step]);
    }
    session.undo();
    edit(session, 7);  // drops the branch
    EXPECT_FALSE(canRedo());
    EXPECT_EQ(takeErrors(), Log{});
}

TEST(UndoRedo, EmptyHistory) {
    HostSession session(discScene());
    session.undo();
    EXPECT_EQ(session.blended, session.photo);
    EXPECT_EQ(VORNSEManageUndoRedo::m_current, 0);
    session.mask.assign(session.mask.size(), 7);
    session.redo();  // a cleared slot
    EXPECT_EQ(session.mask, std::vector<std::uint8_t>(session.mask.size(), 255));
    EXPECT_EQ(takeErrors(), Log{});
}

TEST(UndoRedo, PendingMarksAreDropped) {
    HostSession session(discScene());
    setMarkerImage(session.width, session.height, session.noMarkers().data(), SEGCORE_LOOP_ADD);
    session.undo();
    EXPECT_EQ(g_markerImage, nullptr);
    clearLog();
}

}  // namespace
