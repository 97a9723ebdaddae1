#pragma once

// Euler-angle conventions. An order names the axes in the order they apply:
// XYZ rotates about X first, then Y, then Z.
class FbxEuler {
public:
    enum EOrder {
        eOrderXYZ = 0,
        eOrderXZY,
        eOrderYZX,
        eOrderYXZ,
        eOrderZXY,
        eOrderZYX,
        eOrderSphericXYZ
    };

    // The first, middle and last axis (0 = X) of an order; false for the
    // spheric order and values outside the enumeration.
    static bool GetAxes(EOrder order, int& first, int& middle, int& last);
    // True for the orders whose axes run X->Y->Z cyclically (XYZ, YZX, ZXY).
    static bool IsParityEven(EOrder order);
};
