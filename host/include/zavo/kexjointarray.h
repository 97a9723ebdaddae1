#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// One joint of the host's skeleton: the segment it hangs from and the segment it carries.
struct KexJoint {
    int32_t parentSegment = -1;
    int32_t childSegment = -1;
};

// Describes the elements of a host array, so that readers walk it with the host's stride.
struct KexArrayDescriptor {
    size_t elementSize;
    size_t alignment;
    const char* typeName;
};

inline constexpr KexArrayDescriptor g_KexJointArrayDescriptor{sizeof(KexJoint), alignof(KexJoint),
                                                              "KexJoint"};

// The host's list of joints, in order. Walk it as raw memory with
// g_KexJointArrayDescriptor.elementSize as the stride.
class KexJointArray {
public:
    KexJointArray() = default;
    explicit KexJointArray(std::vector<KexJoint> joints) : m_joints(std::move(joints)) {}

    size_t count() const { return m_joints.size(); }
    const void* data() const { return m_joints.data(); }
    const KexJoint& at(size_t i) const { return m_joints.at(i); }

private:
    std::vector<KexJoint> m_joints;
};
