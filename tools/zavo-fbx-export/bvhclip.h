#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "takemath.h"

// One channel of a BVH joint, in the order the file lists it.
enum class BvhChannel { XPosition, YPosition, ZPosition, XRotation, YRotation, ZRotation };

// A ROOT or JOINT of a BVH hierarchy (end sites carry no motion and are not kept).
struct BvhJoint {
    std::string name;
    int parent = -1;        // index of the parent joint; -1 for the root
    takemath::Vec3 offset;  // from the parent joint, in the file's axes and unit
    std::vector<BvhChannel> channels;
    int firstChannel = 0;  // index of the joint's first value in a frame
};

// The numbers of a clip's motion, frame after frame. They stay in the runs of whole frames
// they were read in side by side: joining runs of hundreds of megabytes would cost a copy and,
// for a moment, as much memory again.
class BvhMotionValues {
public:
    // Appends a run of `frames` whole frames of `channelCount` numbers each.
    void append(std::vector<double> run, int frames, int channelCount);
    // The numbers of frame `frame`, which must be one of those appended.
    const double* frame(int frame) const {
        size_t k = m_runs.size() - 1;
        while (m_runs[k].firstFrame > frame) --k;
        const Run& run = m_runs[k];
        return run.values.data() + static_cast<size_t>(frame - run.firstFrame) * run.channelCount;
    }
    size_t size() const { return m_size; }

private:
    struct Run {
        std::vector<double> values;
        int firstFrame = 0;
        size_t channelCount = 0;
    };
    std::vector<Run> m_runs;
    int m_frames = 0;
    size_t m_size = 0;
};

// A BVH file: its hierarchy (parents before children) and its motion.
struct BvhClip {
    std::vector<BvhJoint> joints;
    int channelCount = 0;
    int frameCount = 0;
    double frameTime = 0.0;     // seconds
    std::string frameTimeText;  // as printed, which tells the precision it was written with
    BvhMotionValues values;     // frameCount rows of channelCount values
};

// Global pose of a joint in the file's Y-up axes and unit; the orientation is joint to world.
struct BvhJointPose {
    takemath::Vec3 position;
    takemath::Quat orientation;
};

// Reads a BVH file; throws TakeError naming the file, the line and what was expected there.
// Rules: one ROOT; joint names unique (ignoring case) and free of control characters; every
// number finite; Frame Time above 0; exactly Frames: rows of one value per channel. Lines
// may end in LF, CRLF or CR alone.
BvhClip readBvhFile(const std::string& path);
// The same for a BVH text in memory; `name` stands for the file in messages. The frame lines
// are read in `motionParts` parts side by side; 0 chooses by the length of the clip and the
// cores at hand. The clip and any error are the same whatever the parts.
BvhClip parseBvh(std::string_view text, const std::string& name, int motionParts = 0);

// Converts a whole word to a number; false when the word is no number at all. Infinite and
// not-a-number results are returned as such, for the caller to refuse with its own words.
bool bvhNumber(std::string_view word, double& value);
// Reads a short decimal such as -12.3456 (digits, at most one point, no exponent) at `begin`:
// where it stops, or null when the text there begins with no such number. A word read whole
// this way has the value bvhNumber gives it.
const char* bvhShortDecimal(const char* begin, const char* end, double& value);

// The file's own forward kinematics: every joint's global pose in frame `frame`, or in the
// rest pose (no joint rotated, the root at its offset) when `frame` is negative. Rotations
// compose in each joint's channel order; a position channel replaces that offset component.
std::vector<BvhJointPose> bvhForwardKinematics(const BvhClip& clip, int frame);
// The same into `poses`, whose room is kept from frame to frame.
void bvhForwardKinematics(const BvhClip& clip, int frame, std::vector<BvhJointPose>& poses);
