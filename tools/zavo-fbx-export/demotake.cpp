#include "demotake.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "takemath.h"

namespace {

using BodyModel::BodySegmentCount;
using BodyModel::FingerJointCount;
using takemath::Quat;
using takemath::Vec3;

constexpr double Pi = std::numbers::pi;
constexpr double PelvisHeight = 0.95;
constexpr double CircleRadius = 2.5;   // metres
constexpr double WalkSpeed = 1.2;      // metres per second
constexpr double StepFrequency = 0.9;  // strides per second
constexpr double WaveFrequency = 1.5;  // waves per second

// Offset of each body segment from its parent segment in the T-pose (X forward, Y left, Z up).
const Vec3 bodyOffsets[BodySegmentCount] = {
    {0, 0, PelvisHeight}, {0, 0, 0.10},    {0, 0, 0.10},     {0, 0, 0.10},     {0, 0, 0.10},
    {0, 0, 0.14},         {0, 0, 0.10},    {0, -0.03, 0.10}, {0, -0.15, 0},    {0, -0.28, 0},
    {0, -0.25, 0},        {0, 0.03, 0.10}, {0, 0.15, 0},     {0, 0.28, 0},     {0, 0.25, 0},
    {0, -0.09, -0.06},    {0, 0, -0.42},   {0, 0, -0.41},    {0.13, 0, -0.06}, {0, 0.09, -0.06},
    {0, 0, -0.42},        {0, 0, -0.41},   {0.13, 0, -0.06}};

// Prop k sits on segment propParents[k] at propOffsets[k].
const int propParents[BodyModel::PropCount] = {10, 14, 6, 0};
const Vec3 propOffsets[BodyModel::PropCount] = {
    {0.04, -0.09, -0.02}, {0.04, 0.09, -0.02}, {0, 0, 0.14}, {-0.12, 0, 0.05}};

// Offset of each finger joint of the left hand from its parent (hand or finger) in the T-pose;
// the right hand mirrors Y.
const Vec3 leftFingerOffsets[FingerJointCount] = {
    {0, 0.03, 0},    {0.03, 0.03, -0.01}, {0.025, 0.015, 0}, {0.02, 0.01, 0},  {0.025, 0.04, 0},
    {0.03, 0.09, 0}, {0, 0.04, 0},        {0, 0.025, 0},     {0.008, 0.04, 0}, {0.01, 0.095, 0},
    {0, 0.045, 0},   {0, 0.028, 0},       {-0.008, 0.04, 0}, {-0.01, 0.09, 0}, {0, 0.04, 0},
    {0, 0.025, 0},   {-0.025, 0.035, 0},  {-0.03, 0.08, 0},  {0, 0.03, 0},     {0, 0.02, 0}};

Quat rotX(double a) {
    return takemath::axisAngle({1, 0, 0}, a);
}
Quat rotY(double a) {
    return takemath::axisAngle({0, 1, 0}, a);
}
Quat rotZ(double a) {
    return takemath::axisAngle({0, 0, 1}, a);
}

struct Placement {
    Vec3 position;
    Quat orientation;
};

SegmentState toState(const Placement& p) {
    return {{p.position.x, p.position.y, p.position.z},
            {p.orientation.w, p.orientation.x, p.orientation.y, p.orientation.z}};
}

// Runs for every segment and finger joint of every frame: inline, so that each placement is
// built where it is kept rather than copied there.
inline Placement place(const Placement& parent, const Vec3& offset, const Quat& local) {
    return {parent.position + takemath::rotate(parent.orientation, offset),
            parent.orientation * local};
}

// Local rotations of the body segments at time t (seconds); the pelvis's is global. Each sine
// is taken once and shared by the segments that swing with it.
void bodyRotations(double t, Quat (&local)[BodySegmentCount]) {
    const double phase = 2 * Pi * StepFrequency * t;
    const double heading = WalkSpeed * t / CircleRadius;
    const double wave = std::sin(2 * Pi * WaveFrequency * t);
    const double s = std::sin(phase);
    const double sway = std::sin(2 * Pi * 0.3 * t);
    local[0] = rotZ(heading + 0.08 * s) * rotX(0.04 * s);
    const Quat spine = rotZ(-0.03 * s) * rotY(0.02);
    for (int i = 1; i <= 4; ++i) local[i] = spine;
    local[5] = rotY(0.05 * sway);
    local[6] = rotY(0.10 * sway) * rotZ(0.15 * std::sin(2 * Pi * 0.2 * t));
    local[7] = rotX(0.05);  // right arm: down, swinging, holding the prop
    local[8] = rotX(1.3) * rotY(0.35 * s);
    local[9] = rotY(-0.6 - 0.15 * s);
    local[10] = rotX(0.2);
    local[11] = rotX(0.15);  // left arm: raised and waving
    local[12] = rotX(1.1) * rotY(-0.2);
    local[13] = rotX(0.5 + 0.45 * wave);
    local[14] = rotX(0.25 * wave);
    const double legs[2] = {-0.45 * s, 0.45 * s};  // right, left hip flexion
    for (int side = 0; side < 2; ++side) {
        const int hip = side == 0 ? 15 : 19;
        const double swing = side == 0 ? phase : phase + Pi;
        const double lift = std::sin(swing);
        local[hip] = rotY(legs[side]) * rotX(side == 0 ? -0.03 : 0.03);
        local[hip + 1] = rotY(0.35 * (1 - std::cos(swing)));
        local[hip + 2] = rotY(-0.2 * lift);
        local[hip + 3] = rotY(0.15 * std::max(0.0, lift));
    }
}

Vec3 fingerOffset(int hand, int k) {
    const Vec3 o = leftFingerOffsets[k];
    return {o.x, hand == 0 ? o.y : -o.y, o.z};
}

// Local rotation of finger joint k of a hand curled by `curl`.
Quat fingerRotation(int hand, int k, double curl) {
    const double side = hand == 0 ? 1.0 : -1.0;
    if (k == 0) return {};
    if (k <= 3) return rotZ(side * 0.4 * curl);       // thumb
    if (k % 4 == 0) return rotX(-side * 0.1 * curl);  // metacarpals
    return rotX(-side * curl);
}

using FingerRotations = std::array<Quat, FingerJointCount>;

// The right hand grips the prop and holds still: its finger rotations are the same in every
// frame, so they are worked out once.
const FingerRotations& grippingFingerRotations() {
    static const FingerRotations rotations = [] {
        FingerRotations table;
        for (int k = 0; k < FingerJointCount; ++k) table[k] = fingerRotation(NuHand_Right, k, 0.9);
        return table;
    }();
    return rotations;
}

// The waving left hand keeps its fingers loose, each curling a little in its own time.
FingerRotations looseFingerRotations(double t) {
    FingerRotations rotations;
    for (int k = 1; k < FingerJointCount; ++k)
        rotations[k] =
            fingerRotation(NuHand_Left, k, 0.15 + 0.1 * std::sin(2 * Pi * WaveFrequency * t + k));
    return rotations;
}

void addFingers(TakePose& pose, const Placement (&body)[BodySegmentCount], double t, bool tPose) {
    for (int hand = 0; hand < 2; ++hand) {
        const Placement& handPlacement = body[BodyModel::handSegment(NuHandId(hand))];
        const FingerRotations local = tPose                  ? FingerRotations{}
                                      : hand == NuHand_Right ? grippingFingerRotations()
                                                             : looseFingerRotations(t);
        Placement fingers[FingerJointCount];
        for (int k = 0; k < FingerJointCount; ++k) {
            const int parent = BodyModel::FingerJoints[k].parent;
            fingers[k] = place(parent < 0 ? handPlacement : fingers[parent], fingerOffset(hand, k),
                               local[static_cast<size_t>(k)]);
            pose.fingers.push_back(toState(fingers[k]));
        }
    }
}

TakePose makePose(double t, const DemoTakeOptions& options, bool tPose) {
    Quat local[BodySegmentCount];
    if (!tPose) bodyRotations(t, local);
    const double heading = WalkSpeed * t / CircleRadius;
    Placement body[BodySegmentCount];
    const Vec3 pelvis =
        tPose ? bodyOffsets[0]
              : Vec3{CircleRadius * std::sin(heading), CircleRadius * (1 - std::cos(heading)),
                     PelvisHeight + 0.02 * std::cos(4 * Pi * StepFrequency * t)};
    body[0] = {pelvis, local[0]};
    for (int s = 1; s < BodySegmentCount; ++s)
        body[s] = place(body[BodyModel::Segments[s].parent], bodyOffsets[s], local[s]);
    TakePose pose;
    pose.segments.reserve(static_cast<size_t>(BodySegmentCount + options.props));
    if (options.fingers) pose.fingers.reserve(2 * FingerJointCount);
    for (const Placement& p : body) pose.segments.push_back(toState(p));
    for (int k = 0; k < options.props; ++k)
        pose.segments.push_back(toState(place(body[propParents[k]], propOffsets[k], Quat{})));
    if (options.fingers) addFingers(pose, body, t, tPose);
    return pose;
}

}  // namespace

Take makeComputedDemoTake(const DemoTakeOptions& options) {
    Take take;
    take.frameRate = options.frameRate;
    take.recordStartTime = 1777557792250;  // 2026-04-30T14:03:12.250Z: fixed, so runs repeat
    take.userComment = "Demo take: walking a circle and waving";
    addDefaultBody(take, options.fingers);
    for (int k = 0; k < options.props; ++k) {
        take.segmentNames.emplace_back(BodyModel::Segments[BodySegmentCount + k].name);
        take.joints.push_back({propParents[k], BodySegmentCount + k});
    }
    take.nullPose = makePose(0.0, options, true);
    take.nullPose->absoluteTime = take.recordStartTime;
    take.computedFrames = options.frames;
    take.computePose = [options, start = take.recordStartTime](int f) {
        TakePose pose = makePose(f / options.frameRate, options, false);
        pose.frameTime = defaultFrameTime(f, options.frameRate);
        pose.absoluteTime = start + pose.frameTime;
        return pose;
    };
    return take;
}

Take makeDemoTake(const DemoTakeOptions& options) {
    Take take = makeComputedDemoTake(options);
    take.frames.reserve(static_cast<size_t>(take.computedFrames));
    for (int f = 0; f < take.computedFrames; ++f) take.frames.emplace_back(take.computePose(f));
    take.computePose = nullptr;
    take.computedFrames = 0;
    return take;
}
