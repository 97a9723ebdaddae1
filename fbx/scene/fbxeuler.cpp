#include "fbx/scene/fbxeuler.h"

bool FbxEuler::GetAxes(EOrder order, int& first, int& middle, int& last) {
    static constexpr int kAxes[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0},
                                        {1, 0, 2}, {2, 0, 1}, {2, 1, 0}};
    if (order < eOrderXYZ || order > eOrderZYX) {
        return false;
    }
    first = kAxes[order][0];
    middle = kAxes[order][1];
    last = kAxes[order][2];
    return true;
}

bool FbxEuler::IsParityEven(EOrder order) {
    return order == eOrderXYZ || order == eOrderYZX || order == eOrderZXY;
}
