#pragma once

#include "nutypes/nuquaternion.h"
#include "nutypes/nuvector.h"

namespace nuvia {

// A rotation quaternion (w, x, y, z), scalar first, with Hamilton products. It adds no data to
// NuQuaternion, so either converts to the other freely. Nothing normalises implicitly: values
// are used as stored.
class Quaternion : public NuQuaternion {
public:
    Quaternion() : NuQuaternion{1.0, 0.0, 0.0, 0.0} {}  // the identity rotation
    Quaternion(double qw, double qx, double qy, double qz) : NuQuaternion{qw, qx, qy, qz} {}
    // Normalised to unit length when `normalize` is true; a zero quaternion stays zero.
    Quaternion(double qw, double qx, double qy, double qz, bool normalize);
    Quaternion(const NuQuaternion& q) : NuQuaternion(q) {}

    void setIdentity();
    // The conjugate. It is the inverse only for unit quaternions; callers hand in rotations and
    // save the division by the squared norm.
    void setInverseOf(const NuQuaternion& q);
    // this = a * b, the rotation b followed by a. Safe when a or b is this quaternion.
    void setQuatMulQuat(const NuQuaternion& a, const NuQuaternion& b);
    // Rotation by `radians` about one axis.
    void setRotateX(double radians);
    void setRotateY(double radians);
    void setRotateZ(double radians);

    // Writes (roll, pitch, yaw) in degrees into out[0..2] such that this = Rz(yaw) Ry(pitch)
    // Rx(roll), the order FBX calls XYZ. Pitch lies in [-90, 90], roll and yaw in [-180, 180].
    // Throws NuException "toEuler Target vector too small" when out has fewer than 3 elements.
    void toEuler(NuVector& out) const;
};

}  // namespace nuvia
