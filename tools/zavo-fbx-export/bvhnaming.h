#pragma once

#include <string_view>
#include <vector>

#include "bvhclip.h"

// The joint-naming schemes BVH clips come in, and what each joint stands for in the host's
// body. Several schemes use a name for different joints (LeftShoulder is the collarbone in
// one and the upper arm in another), so a clip is read in the one scheme that knows most of
// its joint names.
struct BvhNamingScheme {
    std::string_view name;  // for people: "CMU", ...
    // Per clip joint: a body segment 0 to 22, a left finger joint 100 + k, a right one
    // 200 + k, Folded for a joint the scheme knows but gives no segment, or Unknown.
    std::vector<int> targets;

    static constexpr int Folded = -1;
    static constexpr int Unknown = -2;
};

// Picks the scheme for the clip's joint names (case-insensitive) and gives every joint its
// target. A joint the scheme does not know may still carry a default segment or finger name.
// The root is left to the caller: it is the pelvis whatever its name.
BvhNamingScheme bvhNamingScheme(const BvhClip& clip);
