#include "take.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

bool Take::isProp(int segment) const {
    if (!props) return segment >= BodyModel::BodySegmentCount;
    return std::find(props->begin(), props->end(), segment) != props->end();
}

void addDefaultBody(Take& take, bool fingers) {
    for (int s = 0; s < BodyModel::BodySegmentCount; ++s) {
        take.segmentNames.emplace_back(BodyModel::Segments[s].name);
        if (s > 0) take.joints.push_back({BodyModel::Segments[s].parent, s});
    }
    for (const NuHandId hand : {NuHand_Left, NuHand_Right})
        for (int k = 0; fingers && k < BodyModel::FingerJointCount; ++k)
            take.fingerNames[hand].push_back(BodyModel::fingerName(hand, k));
}

int32_t defaultFrameTime(int64_t index, double frameRate) {
    return static_cast<int32_t>(std::llround(static_cast<double>(index) * 1000.0 / frameRate));
}

namespace {

std::string poseProblem(const TakePose& pose, size_t segmentCount, const std::string& where) {
    if (pose.segments.size() != segmentCount)
        return where + ".segments: expected " + std::to_string(segmentCount) +
               " segments (one per segment name), found " + std::to_string(pose.segments.size());
    return {};
}

std::string indexProblem(const Take& take) {
    const int count = static_cast<int>(take.segmentNames.size());
    if (take.props)
        for (size_t i = 0; i < take.props->size(); ++i)
            if ((*take.props)[i] < 0 || (*take.props)[i] >= count)
                return "props[" + std::to_string(i) + "]: no segment " +
                       std::to_string((*take.props)[i]);
    for (size_t i = 0; i < take.joints.size(); ++i) {
        const TakeJoint& joint = take.joints[i];
        if (joint.parent < 0 || joint.parent >= count || joint.child < 0 || joint.child >= count)
            return "joints[" + std::to_string(i) + "]: segment out of range 0 to " +
                   std::to_string(count - 1);
    }
    return {};
}

// A name becomes a node name and a line of an ASCII file: a control character (a line break, a
// NUL) would break the line or cut the name short.
bool holdsControlCharacter(const std::string& name) {
    return std::any_of(name.begin(), name.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

// The plug-in finds nodes by name, so a repeated name would leave one segment unanimated.
std::string nameProblem(const Take& take) {
    std::map<std::string_view, size_t> seen;
    for (size_t i = 0; i < take.segmentNames.size(); ++i) {
        const std::string& name = take.segmentNames[i];
        const std::string where = "segmentNames[" + std::to_string(i) + "]";
        if (holdsControlCharacter(name))
            return where + ": a name must not hold control characters (line breaks, NUL)";
        if (const auto [first, added] = seen.emplace(name, i); !added)
            return where + ": \"" + name + "\" is also segmentNames[" +
                   std::to_string(first->second) + "]";
    }
    for (int hand = 0; hand < 2; ++hand)
        for (size_t i = 0; i < take.fingerNames[hand].size(); ++i)
            if (holdsControlCharacter(take.fingerNames[hand][i]))
                return std::string("fingerSegmentNames.") + (hand == 0 ? "left" : "right") + "[" +
                       std::to_string(i) +
                       "]: a name must not hold control characters (line breaks, NUL)";
    return {};
}

}  // namespace

std::string takeProblem(const Take& take) {
    if (!(take.frameRate > 0.0) || !std::isfinite(take.frameRate))
        return "frameRate: expected a number above 0";
    if (take.hasBody && take.segmentNames.size() < BodyModel::BodySegmentCount)
        return "segmentNames: a take with a body needs the 23 body segments, found " +
               std::to_string(take.segmentNames.size());
    for (int hand = 0; hand < 2; ++hand)
        if (!take.fingerNames[hand].empty() &&
            take.fingerNames[hand].size() != TakePose::FingersPerHand)
            return std::string("fingerSegmentNames.") + (hand == 0 ? "left" : "right") +
                   ": expected 20 names";
    if (std::string problem = nameProblem(take); !problem.empty()) return problem;
    if (std::string problem = indexProblem(take); !problem.empty()) return problem;
    if (take.firstFrame < 0 || take.frameCount() < 1)
        return "frames: no frame from firstFrame " + std::to_string(take.firstFrame) + " on";
    // The exporter would write a file without any animation.
    if (std::none_of(take.frames.begin() + take.firstFrame, take.frames.end(),
                     [](const auto& frame) { return frame.has_value(); }))
        return "frames: every frame from firstFrame " + std::to_string(take.firstFrame) +
               " on is null";
    const size_t count = take.segmentNames.size();
    if (take.nullPose)
        if (std::string problem = poseProblem(*take.nullPose, count, "nullPose"); !problem.empty())
            return problem;
    for (size_t i = 0; i < take.frames.size(); ++i)
        if (take.frames[i])
            if (std::string problem =
                    poseProblem(*take.frames[i], count, "frames[" + std::to_string(i) + "]");
                !problem.empty())
                return problem;
    return {};
}
