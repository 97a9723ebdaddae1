#include "synthetictake.h"

#include <zavo/bodymodel.h>
#include <cmath>

#include "math/quaternion.h"

namespace {

constexpr int kBody = BodyModel::BodySegmentCount;
constexpr std::array<int, 4> kPropHolder = {10, 14, 6, 0};
// T-pose offset from the parent (the pelvis: its position), host axes X forward, Y left, Z up.
const std::array<NuVector3, kBody> kBodyOffset = {{
    {0, 0, 0.95},     {0, 0, 0.1},    {0, 0, 0.1},      {0, 0, 0.12},     {0, 0, 0.12},
    {0, 0, 0.15},     {0, 0, 0.1},    {0, -0.05, 0.1},  {0, -0.15, 0},    {0, -0.3, 0},
    {0, -0.25, 0},    {0, 0.05, 0.1}, {0, 0.15, 0},     {0, 0.3, 0},      {0, 0.25, 0},
    {0, -0.1, -0.05}, {0, 0, -0.45},  {0, 0, -0.45},    {0.15, 0, -0.05}, {0, 0.1, -0.05},
    {0, 0, -0.45},    {0, 0, -0.45},  {0.15, 0, -0.05},
}};

nuvia::Quaternion multiply(const NuQuaternion& a, const NuQuaternion& b) {
    nuvia::Quaternion r;
    r.setQuatMulQuat(a, b);
    return r;
}

// Places a segment rigidly at `offset` in its parent's frame, turned by a rotation that changes
// smoothly over time and differs for every `joint`.
KexSegmentPose place(const KexSegmentPose& parent, const NuVector3& offset, int joint, double t,
                     double amplitude) {
    const nuvia::Quaternion turn(1, amplitude * std::sin(1.3 * t + joint),
                                 0.7 * amplitude * std::sin(0.9 * t + 2.0 * joint),
                                 0.5 * amplitude * std::sin(1.7 * t + 0.5 * joint), true);
    const NuQuaternion& q = parent.orientation;
    const NuQuaternion v =
        multiply(multiply(q, {0, offset[0], offset[1], offset[2]}), {q.w, -q.x, -q.y, -q.z});
    const NuVector3& p = parent.position;
    return {multiply(q, turn), NuVector3(p[0] + v.x, p[1] + v.y, p[2] + v.z)};
}

FakePose makeFrame(const TakeShape& shape, double t, double amplitude) {
    std::vector<KexSegmentPose> body(kBody + shape.props);
    body[0] = place({}, kBodyOffset[0], 0, t, 0.4 * amplitude);
    body[0].position[0] += amplitude * std::sin(0.8 * t);
    body[0].position[1] += amplitude * 0.6 * t;
    for (int i = 1; i < kBody; ++i)
        body[i] = place(body[BodyModel::Segments[i].parent], kBodyOffset[i], i, t, amplitude);
    for (int j = 0; j < shape.props; ++j) {
        body[kBody + j] = place(body[kPropHolder[j]], NuVector3(0.05, j % 2 ? 0.1 : -0.1, 0.02),
                                30 + j, t, amplitude);
    }
    FakePose pose;
    for (const KexSegmentPose& s : body) {
        pose.positions.push_back(s.position);
        pose.orientations.push_back(s.orientation);
    }
    if (!shape.fingers) return pose;
    pose.fingers.emplace();
    // Five fingers of four joints per hand.
    for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
        auto& fingers = (*pose.fingers)[hand];
        const double side = hand == NuHand_Left ? 1 : -1;
        for (int k = 0; k < BodyModel::FingerJointCount; ++k) {
            const int parent = BodyModel::FingerJoints[k].parent;
            const NuVector3 offset(parent < 0 ? 0.02 * (k / 4 - 2) : 0,
                                   side * (k % 4 == 1 ? 0.08 : 0.03), 0);
            fingers[k] = place(parent < 0 ? body[BodyModel::handSegment(hand)] : fingers[parent],
                               offset, 40 + k + 20 * hand, t, amplitude);
        }
    }
    return pose;
}

}  // namespace

void loadRigidTake(FakeHost& host, const TakeShape& shape) {
    host.rate = shape.rate;
    host.names.clear();
    host.joints.clear();
    for (int i = 0; i < kBody; ++i) {
        host.names.append(QStringLiteral("Seg%1").arg(i));
        if (i > 0) host.joints.push_back({BodyModel::Segments[i].parent, i});
    }
    for (int j = 0; j < shape.props; ++j) {
        host.names.append(QStringLiteral("Object%1").arg(j + 1));
        host.joints.push_back({kPropHolder[j], kBody + j});
    }
    for (int hand = 0; hand < 2; ++hand) {
        host.fingerNames[hand].clear();
        for (int k = 0; shape.fingers && k < BodyModel::FingerJointCount; ++k)
            host.fingerNames[hand].append(
                QStringLiteral("%1Finger%2").arg(hand ? "R" : "L").arg(k));
    }
    const NuTimeStamp start = host.recordStart.toMSecsSinceEpoch();
    host.calibrationPose = makeFrame(shape, 0.0, 0.0);
    host.calibrationPose.absolute = start;
    host.frames.clear();
    for (int f = 0; f < shape.frames; ++f) {
        FakePose& pose = host.frames.emplace_back(makeFrame(shape, f / shape.rate, 0.5)).value();
        pose.time = static_cast<int32_t>(std::lround(f * 1000.0 / shape.rate));
        pose.absolute = start + pose.time;
    }
}
