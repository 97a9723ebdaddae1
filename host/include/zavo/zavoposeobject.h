#pragma once

#include <memory>

#include "zavo/zavopose.h"

// A pose as the host hands it out: possibly empty (no pose for that frame). Copying clones
// the pose. The accessors of an empty object report nothing: invalid, no segments, empty
// positions, zero quaternions, no finger data.
class ZAVO_HOST_EXPORT ZavoPoseObject {
public:
    ZavoPoseObject();
    explicit ZavoPoseObject(std::unique_ptr<ZavoPose> impl);
    ZavoPoseObject(const ZavoPoseObject& other);
    ZavoPoseObject(ZavoPoseObject&& other) noexcept;
    ZavoPoseObject& operator=(const ZavoPoseObject& other);
    ZavoPoseObject& operator=(ZavoPoseObject&& other) noexcept;
    ~ZavoPoseObject();

    bool isEmpty() const { return !m_impl; }
    const ZavoPose* impl() const { return m_impl.get(); }

    bool isValid() const;
    int segmentStateCount() const;
    NuVector pos_g(int segment) const;
    NuQuaternion q_gb(int segment, PoseBase base) const;
    std::pair<int32_t, int32_t> poseOffset() const;
    int32_t frameTime() const;
    NuTimeStamp absoluteTime() const;
    bool hasFingerTrackingData() const;
    KexSegmentPose fingerTrackingData(NuHandId hand, int index) const;

private:
    std::unique_ptr<ZavoPose> m_impl;
};
