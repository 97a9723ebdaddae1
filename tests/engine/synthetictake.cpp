#include "synthetictake.h"

#include <cmath>

#include "math/quaternion.h"

namespace {

constexpr int kBody = 23;
constexpr std::array<int, kBody> kBodyParent = {-1, 0,  1,  2, 3,  4,  5,  4, 7,  8,  9, 4,
                                                11, 12, 13, 0, 15, 16, 17, 0, 19, 20, 21};
constexpr std::array<int, 20> kFingerParent = {-1, -1, 1,  2,  -1, -1, 5,  6,  -1, -1,
                                               9,  10, -1, -1, 13, 14, -1, -1, 17, 18};
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

// A joint rotation changing smoothly over time, different for every joint.
nuvia::Quaternion turn(int joint, double t, double amplitude) {
    nuvia::Quaternion x, y, z;
    x.setRotateX(amplitude * std::sin(1.3 * t + joint));
    y.setRotateY(0.7 * amplitude * std::sin(0.9 * t + 2.0 * joint));
    z.setRotateZ(0.5 * amplitude * std::sin(1.7 * t + 0.5 * joint));
    return multiply(z, multiply(y, x));
}

// Places a segment rigidly at `offset` in its parent's frame, turned by `local`.
KexSegmentPose place(const KexSegmentPose& parent, const NuVector3& offset,
                     const NuQuaternion& local) {
    nuvia::Quaternion conjugate;
    conjugate.setInverseOf(parent.orientation);
    const NuQuaternion v =
        multiply(multiply(parent.orientation, {0, offset[0], offset[1], offset[2]}), conjugate);
    const NuVector3& p = parent.position;
    return {multiply(parent.orientation, local), NuVector3(p[0] + v.x, p[1] + v.y, p[2] + v.z)};
}

PoseData makeFrame(const TakeShape& shape, double t, double amplitude) {
    std::vector<KexSegmentPose> body(kBody + shape.props);
    body[0] = place({}, kBodyOffset[0], turn(0, t, 0.4 * amplitude));
    body[0].position[0] += amplitude * std::sin(0.8 * t);
    body[0].position[1] += amplitude * 0.6 * t;
    for (int i = 1; i < kBody; ++i)
        body[i] = place(body[kBodyParent[i]], kBodyOffset[i], turn(i, t, amplitude));
    for (int j = 0; j < shape.props; ++j) {
        body[kBody + j] = place(body[kPropHolder[j]], NuVector3(0.05, j % 2 ? 0.1 : -0.1, 0.02),
                                turn(30 + j, t, amplitude));
    }
    PoseData data;
    for (const KexSegmentPose& s : body) {
        data.positions.push_back(s.position);
        data.orientations.push_back(s.orientation);
    }
    if (!shape.fingers) return data;
    data.fingers.emplace();
    for (int hand = 0; hand < 2; ++hand) {
        auto& fingers = (*data.fingers)[hand];
        const double side = hand == 0 ? 1 : -1;
        for (int k = 0; k < 20; ++k) {
            const int p = kFingerParent[k];
            const NuVector3 offset =
                p >= 0 ? NuVector3(0, side * 0.03, 0)
                       : NuVector3(0.02 * (k / 4 - 2), side * (k % 4 ? 0.08 : 0.03), 0);
            fingers[k] = place(p >= 0 ? fingers[p] : body[hand == 0 ? 14 : 10], offset,
                               turn(40 + k + 20 * hand, t, amplitude));
        }
    }
    return data;
}

}  // namespace

void loadRigidTake(FakeHost& host, const TakeShape& shape) {
    host.rate = shape.rate;
    host.names =
        QStringList{"Pelvis",    "SpineLow",  "SpineMid",  "SpineHigh", "Chest", "Neck",
                    "Head",      "RClavicle", "RUpperArm", "RLowerArm", "RPalm", "LClavicle",
                    "LUpperArm", "LLowerArm", "LPalm",     "RThigh",    "RShin", "RAnkle",
                    "RToes",     "LThigh",    "LShin",     "LAnkle",    "LToes"};
    host.joints.clear();
    for (int i = 1; i < kBody; ++i) host.joints.push_back({kBodyParent[i], i});
    for (int j = 0; j < shape.props; ++j) {
        host.names.append(QStringLiteral("Object%1").arg(j + 1));
        host.joints.push_back({kPropHolder[j], kBody + j});
    }
    for (int hand = 0; hand < 2; ++hand) {
        host.fingerNames[hand].clear();
        for (int k = 0; shape.fingers && k < 20; ++k) {
            host.fingerNames[hand].append(
                QStringLiteral("%1Finger%2").arg(hand ? "R" : "L").arg(k));
        }
    }
    const NuTimeStamp start = host.recordStart.toMSecsSinceEpoch();
    host.calibrationPose = makeFrame(shape, 0.0, 0.0);
    host.calibrationPose->absoluteTime = start;
    host.frames.clear();
    for (int f = 0; f < shape.frames; ++f) {
        const auto frameTime = static_cast<int32_t>(std::lround(f * 1000.0 / shape.rate));
        host.frames.push_back(makeFrame(shape, frameTime / 1000.0, 0.5));
        host.frames.back()->frameTime = frameTime;
        host.frames.back()->absoluteTime = start + frameTime;
    }
}
