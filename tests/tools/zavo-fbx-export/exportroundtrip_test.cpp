// The whole system at work: the program drives the plug-in over a take, and assimp, an
// independent reader, finds every segment where the take put it, and every joint of a BVH clip
// near where the clip's own forward kinematics puts it.
#include <gtest/gtest.h>

#include <zavo/bodymodel.h>
#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cmath>

#include "bvhclip.h"
#include "bvhfolding.h"
#include "bvhframerate.h"
#include "bvhtake.h"
#include "demotake.h"
#include "fbxfile/fbxbinaryreader.h"
#include "programrun.h"
#include "takemath.h"
#include "tests/support/fbxassimpscene.h"

namespace {

using takemath::Vec3;

struct Variant {
    const char *preset, *format;
};
const Variant variants[] = {
    {"skeleton", "binary"}, {"skeleton", "ascii"}, {"nodes", "binary"}, {"nodes", "ascii"}};

Vec3 translation(const fbxtest::Matrix& world) {
    return {world[3], world[7], world[11]};
}

double distance(Vec3 a, Vec3 b) {
    const Vec3 d = a - b;
    return std::hypot(d.x, d.y, d.z);
}

// The largest difference between a world transform's rotation and the rotation `q`.
double rotationDifference(const fbxtest::Matrix& world, const takemath::Quat& q) {
    double difference = 0;
    for (int c = 0; c < 3; ++c) {
        const Vec3 axis =
            takemath::rotate(q, {c == 0 ? 1.0 : 0, c == 1 ? 1.0 : 0, c == 2 ? 1.0 : 0});
        difference = std::max({difference, std::abs(world[c] - axis.x),
                               std::abs(world[4 + c] - axis.y), std::abs(world[8 + c] - axis.z)});
    }
    return difference;
}

// Exports with the variant's preset and format and loads the result; `output` receives what
// the program printed.
bool exportScene(const QTemporaryDir& folder, QStringList arguments, const Variant& variant,
                 fbxtest::AssimpScene& scene, QString* output = nullptr) {
    arguments << "--preset" << variant.preset << "--format" << variant.format << "out.fbx";
    const ProgramRun run = runProgram(folder, arguments);
    if (output) *output = run.standardOutput;
    EXPECT_EQ(run.exitStatus, 0) << run.standardError.toStdString();
    // Every binary file must also pass the structural reader.
    const std::string path = folder.filePath("out.fbx").toStdString();
    fbxfile::File file;
    std::string error;
    const bool loaded =
        (std::string(variant.format) == "ascii" || fbxfile::ReadBinaryFile(path, file, error)) &&
        scene.Load(path, error);
    EXPECT_TRUE(loaded) << error;
    return run.exitStatus == 0 && loaded;
}

// A BVH segment as exported: node name, the joint giving its pose, its parent in this list.
struct BvhSegment {
    std::string name;
    int joint, parent;
};

std::vector<BvhSegment> bvhSegments(const BvhBodyMap& map) {
    std::vector<BvhSegment> segments;
    for (int s = 0; s < BodyModel::BodySegmentCount; ++s)
        segments.push_back({std::string(BodyModel::Segments[s].name), map.segmentJoint[s],
                            BodyModel::Segments[s].parent});
    for (int hand = 0; map.hasFingers && hand < 2; ++hand) {
        const NuHandId side = NuHandId(hand);
        std::array<int, BodyModel::FingerJointCount> listed{};  // where finger joint k stands
        for (int k = 0; k < BodyModel::FingerJointCount; ++k) {
            const BodyModel::FingerJoint& joint = BodyModel::FingerJoints[k];
            if (!joint.tracked) continue;
            listed[k] = static_cast<int>(segments.size());
            segments.push_back(
                {BodyModel::fingerName(side, k), map.fingerJoint[hand][k],
                 joint.parent < 0 ? BodyModel::handSegment(side) : listed[joint.parent]});
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
    const Take take = makeDemoTake({.frames = 240});
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
            // Host axes (Z up, metres) onto the file's (Y up, centimetres): X = host Y,
            // Y = host Z, Z = host X.
            const auto expect = [&](const std::string& name, const SegmentState& state) {
                ASSERT_TRUE(scene.HasNode(name)) << name;
                const fbxtest::Matrix world = scene.WorldTransformAt(name, seconds);
                const auto& [x, y, z] = state.position;
                const auto& [qw, qx, qy, qz] = state.orientation;
                EXPECT_LT(distance(translation(world), {100 * y, 100 * z, 100 * x}), 0.001)
                    << name << " frame " << frame;
                EXPECT_LT(rotationDifference(world, {qw, qy, qz, qx}), 1e-4)
                    << name << " frame " << frame;
            };
            for (size_t s = 0; s < pose.segments.size(); ++s)
                expect(take.segmentNames[s], pose.segments[s]);
            for (int hand = 0; hand < 2; ++hand)
                for (int k = 0; k < BodyModel::FingerJointCount; ++k)
                    if (BodyModel::FingerJoints[k].tracked)
                        expect(take.fingerNames[hand][k], pose.finger(hand, k));
        }
    }
}

constexpr double metresPerUnit = 0.056444;  // the CMU clips' unit

// What the program exported from `clip` against the clip's own forward kinematics at one
// frame; the Skeleton preset's first frame is the clip's own (no calibration pose), the Nodes
// preset's the rest pose. Positions compared: every segment in the Nodes preset, which writes
// global positions. The Skeleton preset rebuilds positions from the rest pose's bones, so there a
// segment is compared where every bone up to the pelvis is the clip's own (isOwnBone), and a
// segment whose own bone is the clip's but a bone above it is not is compared relative to its
// parent (a bent bone above moves the whole branch). Orientations are compared everywhere.
int expectClipFrame(const fbxtest::AssimpScene& scene, const BvhClip& clip,
                    const std::vector<BvhSegment>& segments, const std::vector<bool>& wholeChain,
                    bool skeleton, int frame) {
    // BVH axes are the FBX axes; output in centimetres.
    const std::vector<BvhJointPose> fk =
        bvhForwardKinematics(clip, frame == 0 && !skeleton ? -1 : frame);
    const auto expected = [&](const BvhSegment& s) {
        return (100 * metresPerUnit) * fk[static_cast<size_t>(s.joint)].position;
    };
    const double seconds = defaultFrameTime(frame, bvhFrameRate(clip).rate) / 1000.0;
    int compared = 0;
    for (size_t i = 0; i < segments.size(); ++i) {
        const BvhSegment& segment = segments[i];
        const fbxtest::Matrix world = scene.WorldTransformAt(segment.name, seconds);
        const takemath::Quat q = fk[static_cast<size_t>(segment.joint)].orientation;
        EXPECT_LT(rotationDifference(world, q), 1e-4) << segment.name;
        Vec3 got = translation(world), want = expected(segment);
        if (skeleton && !wholeChain[i]) {
            if (!isOwnBone(clip, segments, i)) continue;
            const BvhSegment& parent = segments[static_cast<size_t>(segment.parent)];
            got = got - translation(scene.WorldTransformAt(parent.name, seconds));
            want = want - expected(parent);
        }
        EXPECT_LT(distance(got, want), 0.01) << segment.name << " frame " << frame;
        ++compared;
    }
    return compared;
}

// The Skeleton preset keeps the rest pose's bones, so a folded joint that turns carries the
// joints below it off the clip: every clip joint, at the node standing in for it, must stay
// within 8 cm of where the clip puts it (at every 7th frame and the worst one), and what
// --verbose reports must be what the file shows, to single-precision keys.
void expectFoldingWithinEightCentimetres(const fbxtest::AssimpScene& scene, const BvhClip& clip,
                                         const QString& output) {
    const BvhFolding folding = measureBvhFolding(clip, mapBvhJoints(clip), metresPerUnit);
    double worst = 0;
    for (int frame = 0; frame < clip.frameCount; ++frame) {
        if (frame % 7 != 0 && frame != folding.worstFrame) continue;
        const std::vector<BvhJointPose> fk = bvhForwardKinematics(clip, frame);
        const double seconds = defaultFrameTime(frame, bvhFrameRate(clip).rate) / 1000.0;
        for (size_t j = 0; j < clip.joints.size(); ++j) {
            const std::string node = bvhStandInName(folding.standIn[j]);
            worst = std::max(worst, distance(translation(scene.WorldTransformAt(node, seconds)),
                                             (100 * metresPerUnit) * fk[j].position));
        }
    }
    EXPECT_LE(worst, 8.0);
    const QRegularExpressionMatch reported =
        QRegularExpression("worst joint position error in the Skeleton preset ([0-9.]+) cm")
            .match(output);
    ASSERT_TRUE(reported.hasMatch()) << output.toStdString();
    EXPECT_NEAR(reported.captured(1).toDouble(), worst, 0.02);
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
            const bool skeleton = std::string(variant.preset) == "skeleton";
            QTemporaryDir folder;
            fbxtest::AssimpScene scene;
            QString output;
            QStringList arguments{clips.filePath(file), "--bvh-unit", "0.056444"};
            if (skeleton)
                arguments << "--no-calibration-pose"
                          << "--verbose";
            if (!exportScene(folder, arguments, variant, scene, &output)) continue;
            int compared = 0;
            for (int frame = 0; frame < clip.frameCount; frame += 37)
                compared += expectClipFrame(scene, clip, segments, wholeChain, skeleton, frame);
            EXPECT_GT(compared, 0);
            if (skeleton) expectFoldingWithinEightCentimetres(scene, clip, output);
        }
    }
}
