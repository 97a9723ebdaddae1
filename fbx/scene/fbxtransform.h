#pragma once

// How a node combines its parent's rotation and scaling with its own.
class FbxTransform {
public:
    enum EInheritType { eInheritRrSs = 0, eInheritRSrs = 1, eInheritRrs = 2 };
};
