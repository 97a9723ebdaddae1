#include <gtest/gtest.h>

#include "framecounts.h"

// Keys come in time order, except where the time of day wraps at midnight or the host repeats a
// time stamp: every time met before counts once as a collision, wherever it was met.
TEST(FrameCounts, KeyTimesMetBeforeCollideInOrderOrNot) {
    const std::vector<std::pair<std::vector<FbxLongLong>, int>> runs = {
        {{10, 20, 30, 40}, 0},
        {{10, 20, 20, 30, 30, 30}, 3},
        // After midnight: earlier times, new or met before among the rising ones.
        {{80, 90, 5, 10, 15, 90, 95}, 1},
        // Met before among the ones after the wrap, then rising again past them.
        {{80, 90, 5, 6, 5, 6, 7, 100, 7, 100}, 4},
        {{-5, -10, -5, -10, 0}, 2},
    };
    for (const auto& [times, colliding] : runs) {
        FrameCounts counts;
        for (const FbxLongLong t : times) {
            counts.offered(FrameUse::Used);
            counts.keyed(FbxTime(t));
        }
        const QString expected =
            colliding == 0 ? QString()
                           : QString(
                                 "%1 of %2 frames share a key time with an earlier frame; "
                                 "the file keeps the last of each")
                                 .arg(colliding)
                                 .arg(times.size());
        EXPECT_EQ(counts.lostFramesWarning().toStdString(), expected.toStdString());
    }
}
