// The whole system at work: the program drives the plug-in over a take, and assimp, an
// independent reader, finds every segment where the take put it.
#include <gtest/gtest.h>

#include <QDir>
#include <cmath>

#include "bodytables.h"
#include "bvhclip.h"
#include "bvhtake.h"
#include "demotake.h"
#include "programrun.h"

namespace {

struct Variant {
    const char* preset;
    const char* format;
};
const Variant variants[] = {
    {"skeleton", "binary"}, {"skeleton", "ascii"}, {"nodes", "binary"}, {"nodes", "ascii"}};

// The finger joints the plug-in writes: all but the carpus and the four metacarpals.
bool isExportedFinger(int k) {
    return k % 4 != 0;
}

double distance(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

std::array<double, 3> minus(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

// Exports with the variant's preset and format and loads the result.
bool exportScene(const QTemporaryDir& folder, QStringList arguments, const Variant& variant,
                 fbxtest::AssimpScene& scene) {
    arguments << "--preset" << variant.preset << "--format" << variant.format << "out.fbx";
    const ProgramRun run = runProgram(folder, arguments);
    EXPECT_EQ(run.exitStatus, 0) << run.standardError.toStdString();
    std::string error;
    const bool loaded = loadScene(folder.filePath("out.fbx"),
                                  std::string(variant.format) == "binary", scene, error);
    EXPECT_TRUE(loaded) << error;
    return run.exitStatus == 0 && loaded;
}

// Node name and global state of every segment the demo take exports.
std::vector<std::pair<std::string, const SegmentState*>> demoSegments(const Take& take,
                                                                      const TakePose& pose) {
    std::vector<std::pair<std::string, const SegmentState*>> segments;
    for (size_t s = 0; s < pose.segments.size(); ++s)
        segments.emplace_back(take.segmentNames[s], &pose.segments[s]);
    for (int hand = 0; hand < 2; ++hand)
        for (int k = 0; k < bodytables::FingerCount; ++k)
            if (isExportedFinger(k))
                segments.emplace_back(take.fingerNames[hand][k], &pose.finger(hand, k));
    return segments;
}

// A BVH segment as exported: node name, the joint giving its pose, its parent in this list.
struct BvhSegment {
    std::string name;
    int joint = 0;
    int parent = -1;
};

std::vector<BvhSegment> bvhSegments(const BvhBodyMap& map) {
    std::vector<BvhSegment> segments;
    for (int s = 0; s < bodytables::BodySegmentCount; ++s)
        segments.push_back({std::string(bodytables::segmentNames[s]), map.segmentJoint[s],
                            bodytables::segmentParents[s]});
    for (int hand = 0; map.hasFingers && hand < 2; ++hand) {
        const int first = static_cast<int>(segments.size());
        for (int k = 0; k < bodytables::FingerCount; ++k) {
            if (!isExportedFinger(k)) continue;
            const int p = bodytables::fingerParents[k];
            const int parent =
                p < 0 ? (hand == 0 ? bodytables::LeftHandSegment : bodytables::RightHandSegment)
                      : first + (p - p / 4 - 1);
            segments.push_back({std::string((hand == 0 ? bodytables::leftFingerNames
                                                       : bodytables::rightFingerNames)[k]),
                                map.fingerJoint[hand][k], parent});
        }
    }
    return segments;
}

// Whether the bone from segment i's parent to i is one of the clip's own: the parent's joint
// is the BVH parent of i's joint, or i takes its parent's joint. Only then is the bone's
// length and direction in the parent's frame fixed, as the exported skeleton's bones are.
// An unmatched joint with rotations of its own in between (LHipJoint, LowerBack, Neck1,
// LeftFingerBase, LeftCollar in these clips) bends that offset from frame to frame.
bool isOwnBone(const BvhClip& clip, const std::vector<BvhSegment>& segments, size_t i) {
    const BvhSegment& segment = segments[i];
    const int parentJoint = segments[static_cast<size_t>(segment.parent)].joint;
    return segment.joint == parentJoint ||
           clip.joints[static_cast<size_t>(segment.joint)].parent == parentJoint;
}

}  // namespace

TEST(ExportRoundTrip, DemoTakeSegmentsLandWhereTheTakePutsThem) {
    DemoTakeOptions options;
    options.frames = 240;
    const Take take = makeDemoTake(options);
    for (const Variant& variant : variants) {
        SCOPED_TRACE(std::string(variant.preset) + " " + variant.format);
        QTemporaryDir folder;
        fbxtest::AssimpScene scene;
        if (!exportScene(folder, {"--demo", "--demo-frames", "240"}, variant, scene)) continue;
        for (int frame : {0, 1, 59, 131, 239}) {
            // The first frame shows the calibration T-pose (the default setting).
            const TakePose& pose =
                frame == 0 ? *take.nullPose : *take.frames[static_cast<size_t>(frame)];
            const double seconds = take.frames[static_cast<size_t>(frame)]->frameTime / 1000.0;
            for (const auto& [name, state] : demoSegments(take, pose)) {
                ASSERT_TRUE(scene.HasNode(name)) << name;
                const fbxtest::Matrix world = scene.WorldTransformAt(name, seconds);
                EXPECT_LT(distance(fbxtest::Translation(world), fbxCentimetres(state->position)),
                          0.001)
                    << name << " frame " << frame;
                EXPECT_LT(rotationDifference(world, fbxOrientation(state->orientation)), 1e-4)
                    << name << " frame " << frame;
            }
        }
    }
}

constexpr double metresPerUnit = 0.056444;  // the CMU clips' unit

// What the program exported from `clip` against the clip's own forward kinematics at one
// frame. Positions compared: every segment in the Nodes preset, which writes global
// positions. The Skeleton preset rebuilds positions from the rest pose's bones, so there a
// segment is compared where every bone up to the pelvis is the clip's own (isOwnBone), and a
// segment whose own bone is the clip's but a bone above it is not is compared relative to its
// parent (a bent bone above moves the whole branch). Orientations are compared everywhere.
int expectClipFrame(const fbxtest::AssimpScene& scene, const BvhClip& clip,
                    const std::vector<BvhSegment>& segments, const std::vector<bool>& wholeChain,
                    bool skeleton, int frame) {
    // BVH axes are the FBX axes; output in centimetres. Frame 0 shows the rest pose.
    const std::vector<BvhJointPose> fk = bvhForwardKinematics(clip, frame == 0 ? -1 : frame);
    const auto expected = [&](const BvhSegment& s) {
        const takemath::Vec3 p = (100 * metresPerUnit) * fk[static_cast<size_t>(s.joint)].position;
        return std::array<double, 3>{p.x, p.y, p.z};
    };
    const double seconds = defaultFrameTime(frame, 1.0 / clip.frameTime) / 1000.0;
    int compared = 0;
    for (size_t i = 0; i < segments.size(); ++i) {
        const BvhSegment& segment = segments[i];
        const fbxtest::Matrix world = scene.WorldTransformAt(segment.name, seconds);
        const takemath::Quat q = fk[static_cast<size_t>(segment.joint)].orientation;
        EXPECT_LT(rotationDifference(world, {q.w, q.x, q.y, q.z}), 1e-4) << segment.name;
        std::array<double, 3> got = fbxtest::Translation(world), want = expected(segment);
        if (skeleton && !wholeChain[i]) {
            if (!isOwnBone(clip, segments, i)) continue;
            const BvhSegment& parent = segments[static_cast<size_t>(segment.parent)];
            got = minus(got, fbxtest::Translation(scene.WorldTransformAt(parent.name, seconds)));
            want = minus(want, expected(parent));
        }
        EXPECT_LT(distance(got, want), 0.01) << segment.name << " frame " << frame;
        ++compared;
    }
    return compared;
}

TEST(ExportRoundTrip, BvhClipsMatchTheirOwnForwardKinematics) {
    const QDir clips(ZAVO_BVH_DATA_DIR);
    const QStringList files = clips.entryList({"*.bvh"}, QDir::Files, QDir::Name);
    ASSERT_FALSE(files.isEmpty()) << "no clips in " << ZAVO_BVH_DATA_DIR;
    for (const QString& file : files) {
        const BvhClip clip = readBvhFile(clips.filePath(file).toStdString());
        const std::vector<BvhSegment> segments = bvhSegments(mapBvhJoints(clip));
        std::vector<bool> wholeChain(segments.size(), true);
        for (size_t i = 1; i < segments.size(); ++i)
            wholeChain[i] =
                isOwnBone(clip, segments, i) && wholeChain[static_cast<size_t>(segments[i].parent)];
        for (const Variant& variant : variants) {
            SCOPED_TRACE(file.toStdString() + " " + variant.preset + " " + variant.format);
            QTemporaryDir folder;
            fbxtest::AssimpScene scene;
            if (!exportScene(folder, {clips.filePath(file), "--bvh-unit", "0.056444"}, variant,
                             scene))
                continue;
            int compared = 0;
            for (int frame = 0; frame < clip.frameCount; frame += 37)
                compared += expectClipFrame(scene, clip, segments, wholeChain,
                                            std::string(variant.preset) == "skeleton", frame);
            EXPECT_GT(compared, 0);
        }
    }
}
