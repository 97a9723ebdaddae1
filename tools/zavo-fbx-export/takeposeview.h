#pragma once

#include <zavo/zavopose.h>
#include <zavo/zavoposeobject.h>

#include <memory>

#include "take.h"

// The host's pose accessors over one pose of a take. It refers to the take instead of copying
// it (the take outlives every export run), so handing out and cloning poses costs nothing.
class TakePoseView : public ZavoPose {
public:
    TakePoseView(const Take& take, const TakePose& pose) : m_take(take), m_pose(pose) {}
    // A view that keeps a computed pose alive for as long as it or one of its clones lives.
    TakePoseView(const Take& take, std::shared_ptr<const TakePose> pose)
        : m_take(take), m_pose(*pose), m_owned(std::move(pose)) {}

    ZavoPose* clone() const override { return new TakePoseView(*this); }
    bool isValid() const override { return m_pose.valid; }
    int segmentStateCount() const override { return static_cast<int>(m_pose.segments.size()); }
    NuVector pos_g(int segment) const override;
    NuQuaternion q_gb(int segment, PoseBase base) const override;
    std::pair<int32_t, int32_t> poseOffset() const override;
    int32_t frameTime() const override { return m_pose.frameTime; }
    NuTimeStamp absoluteTime() const override { return m_pose.absoluteTime; }
    bool hasFingerTrackingData() const override { return m_pose.hasFingers(); }
    KexSegmentPose fingerTrackingData(NuHandId hand, int index) const override;

private:
    bool hasSegment(int segment) const {
        return segment >= 0 && segment < static_cast<int>(m_pose.segments.size());
    }
    int parentSegment(int segment) const;

    const Take& m_take;
    const TakePose& m_pose;
    std::shared_ptr<const TakePose> m_owned;
};

// The host's pose object for `pose` of `take`; empty when `pose` is null.
ZavoPoseObject makePoseObject(const Take& take, const TakePose* pose);
ZavoPoseObject makePoseObject(const Take& take, std::shared_ptr<const TakePose> pose);
