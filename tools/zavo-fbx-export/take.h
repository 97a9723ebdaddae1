#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <zavo/bodymodel.h>

// Global state of one tracked segment: position in metres, orientation segment to world
// (w, x, y, z). The host's axes are right-handed with Z up.
struct SegmentState {
    std::array<double, 3> position{0.0, 0.0, 0.0};
    std::array<double, 4> orientation{1.0, 0.0, 0.0, 0.0};
};

// The host's pose of one frame.
struct TakePose {
    bool valid = true;
    int64_t absoluteTime = 0;  // milliseconds since 1970
    int32_t frameTime = 0;     // milliseconds since the recording started
    std::array<int32_t, 2> poseOffset{0, 0};
    std::vector<SegmentState> segments;
    // Empty, or finger joints 0 to 19 of the left hand followed by those of the right hand.
    std::vector<SegmentState> fingers;

    static constexpr int FingersPerHand = BodyModel::FingerJointCount;

    bool hasFingers() const { return !fingers.empty(); }
    const SegmentState& finger(int hand, int index) const {
        return fingers[static_cast<size_t>(hand * FingersPerHand + index)];
    }
};

// A joint of the host's skeleton: the segment it hangs from and the segment it carries.
struct TakeJoint {
    int parent = -1;
    int child = -1;
};

// A recorded take as the host holds it: take information and one optional pose per host frame.
struct Take {
    double frameRate = 0.0;
    int64_t recordStartTime = 0;   // milliseconds since 1970
    int recordStartUtcOffset = 0;  // seconds east of UTC the start time was recorded in
    std::string userComment;
    bool hasBody = true;
    int firstFrame = 0;
    std::vector<std::string> segmentNames;
    std::optional<std::vector<int>> props;  // absent: every segment above the body's 23
    std::array<std::vector<std::string>, 2> fingerNames;  // per hand: empty or 20 names
    std::vector<TakeJoint> joints;
    std::optional<TakePose> nullPose;
    std::vector<std::optional<TakePose>> frames;  // host frame 0, 1, ...; empty: no pose
    // A take too long to hold (the demo take, a BVH clip) computes each pose when asked for
    // instead: the pose of host frame 0 to computedFrames - 1, from any thread. Empty: the
    // poses are those of `frames`.
    std::function<TakePose(int)> computePose;
    int computedFrames = 0;

    int frameCount() const {
        return (computePose ? computedFrames : static_cast<int>(frames.size())) - firstFrame;
    }
    bool isProp(int segment) const;
};

// Gives `take` the host's 23 body segments under their default names with the joints between
// them, and the default finger names of both hands when `fingers`.
void addDefaultBody(Take& take, bool fingers);

// Milliseconds since the recording started of host frame `index`, when the take says nothing.
int32_t defaultFrameTime(int64_t index, double frameRate);

// Why `take` is not a take the host could hold, as "field: problem", or empty when it is one.
std::string takeProblem(const Take& take);
