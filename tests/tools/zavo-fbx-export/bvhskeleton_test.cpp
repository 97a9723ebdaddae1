// The Skeleton preset rebuilds a clip from the rest pose's bones and the joints' turns. Read
// back by assimp, every clip joint must stay near where the clip's own forward kinematics puts
// it: at its own node, or at the node of the bone it was folded into.
#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>
#include <cmath>
#include <cstdio>

#include "bvhfolding.h"
#include "bvhframerate.h"
#include "programrun.h"
#include "tests/support/fbxassimpscene.h"

namespace {

constexpr double metresPerUnit = 0.056444;  // the CMU clips' unit
constexpr double allowedCentimetres = 8.0;

struct WorstError {
    double centimetres = 0.0;
    std::string joint;
    int frame = -1;
};

// Joint positions of the clip against the exported nodes standing for them, in the file's
// centimetres, at every `stride`th frame and the frame the reader itself found worst.
WorstError measure(const fbxtest::AssimpScene& scene, const BvhClip& clip,
                   const BvhFolding& folding, double rate, int stride) {
    WorstError worst;
    for (int frame = 0; frame < clip.frameCount; ++frame) {
        if (frame % stride != 0 && frame != folding.worstFrame) continue;
        const std::vector<BvhJointPose> fk = bvhForwardKinematics(clip, frame);
        for (size_t j = 0; j < clip.joints.size(); ++j) {
            const std::string node = bvhStandInName(folding.standIn[j]);
            const auto exported = fbxtest::Translation(scene.WorldTransformAt(node, frame / rate));
            // BVH axes are the file's axes.
            const takemath::Vec3 want = (100 * metresPerUnit) * fk[j].position;
            const double error =
                std::hypot(exported[0] - want.x, exported[1] - want.y, exported[2] - want.z);
            if (error > worst.centimetres) worst = {error, clip.joints[j].name, frame};
        }
    }
    return worst;
}

}  // namespace

TEST(BvhSkeleton, KeepsEveryClipJointWithinEightCentimetres) {
    const QDir clips(ZAVO_BVH_DATA_DIR);
    const QStringList files = clips.entryList({"*.bvh"}, QDir::Files, QDir::Name);
    ASSERT_FALSE(files.isEmpty()) << "no clips in " << ZAVO_BVH_DATA_DIR;
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const BvhClip clip = readBvhFile(clips.filePath(file).toStdString());
        const BvhFolding folding = measureBvhFolding(clip, mapBvhJoints(clip), metresPerUnit);
        QTemporaryDir folder;
        const ProgramRun run = runProgram(
            folder, {clips.filePath(file), "--bvh-unit", "0.056444", "--preset", "skeleton",
                     "--time-increment", "fixed", "--no-calibration-pose", "--verbose", "out.fbx"});
        ASSERT_EQ(run.exitStatus, 0) << run.standardError.toStdString();
        fbxtest::AssimpScene scene;
        std::string error;
        ASSERT_TRUE(scene.Load(folder.filePath("out.fbx").toStdString(), error)) << error;

        const WorstError worst = measure(scene, clip, folding, bvhFrameRate(clip).rate, 7);
        std::printf("%s: Skeleton preset worst joint position error %.2f cm (%s, frame %d)\n",
                    file.toLocal8Bit().constData(), worst.centimetres, worst.joint.c_str(),
                    worst.frame);
        EXPECT_LE(worst.centimetres, allowedCentimetres);
        // What --verbose reports is what the file shows, to single-precision keys.
        const QRegularExpressionMatch reported =
            QRegularExpression("worst joint position error in the Skeleton preset ([0-9.]+) cm")
                .match(run.standardOutput);
        ASSERT_TRUE(reported.hasMatch()) << run.standardOutput.toStdString();
        EXPECT_NEAR(reported.captured(1).toDouble(), worst.centimetres, 0.02);
    }
}
