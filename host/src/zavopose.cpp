#include "zavo/zavopose.h"
#include "zavo/zavoposeobject.h"

ZavoPose::~ZavoPose() = default;

ZavoPoseObject::ZavoPoseObject() = default;
ZavoPoseObject::ZavoPoseObject(std::unique_ptr<ZavoPose> impl) : m_impl(std::move(impl)) {}
ZavoPoseObject::ZavoPoseObject(const ZavoPoseObject& other)
    : m_impl(other.m_impl ? other.m_impl->clone() : nullptr) {}
ZavoPoseObject::ZavoPoseObject(ZavoPoseObject&& other) noexcept = default;
ZavoPoseObject& ZavoPoseObject::operator=(ZavoPoseObject&& other) noexcept = default;
ZavoPoseObject::~ZavoPoseObject() = default;

ZavoPoseObject& ZavoPoseObject::operator=(const ZavoPoseObject& other) {
    if (this != &other) m_impl.reset(other.m_impl ? other.m_impl->clone() : nullptr);
    return *this;
}

bool ZavoPoseObject::isValid() const {
    return m_impl && m_impl->isValid();
}

int ZavoPoseObject::segmentStateCount() const {
    return m_impl ? m_impl->segmentStateCount() : 0;
}

NuVector ZavoPoseObject::pos_g(int segment) const {
    return m_impl ? m_impl->pos_g(segment) : NuVector();
}

NuQuaternion ZavoPoseObject::q_gb(int segment, PoseBase base) const {
    return m_impl ? m_impl->q_gb(segment, base) : NuQuaternion{};
}

std::pair<int32_t, int32_t> ZavoPoseObject::poseOffset() const {
    return m_impl ? m_impl->poseOffset() : std::pair<int32_t, int32_t>{0, 0};
}

int32_t ZavoPoseObject::frameTime() const {
    return m_impl ? m_impl->frameTime() : 0;
}

NuTimeStamp ZavoPoseObject::absoluteTime() const {
    return m_impl ? m_impl->absoluteTime() : 0;
}

bool ZavoPoseObject::hasFingerTrackingData() const {
    return m_impl && m_impl->hasFingerTrackingData();
}

KexSegmentPose ZavoPoseObject::fingerTrackingData(NuHandId hand, int index) const {
    return m_impl ? m_impl->fingerTrackingData(hand, index) : KexSegmentPose{};
}
