#pragma once

// A quaternion stored scalar first: w, x, y, z.
struct NuQuaternion {
    double w = 0.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    // Component by index: 0 is w, 1 x, 2 y, 3 z.
    double& operator[](int i) { return i == 0 ? w : i == 1 ? x : i == 2 ? y : z; }
    double operator[](int i) const { return i == 0 ? w : i == 1 ? x : i == 2 ? y : z; }
};
