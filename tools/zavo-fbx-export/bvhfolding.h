#pragma once

#include <string>
#include <vector>

#include "bvhclip.h"
#include "bvhtake.h"

// How far the Skeleton preset's rebuilt skeleton strays from a clip. That skeleton keeps the
// rest pose's bones between the joints that give segments their poses and turns them with
// those joints alone, so a joint folded into a bone (one without a segment of its own) moves
// the joints below it whenever it turns.
struct BvhFolding {
    std::vector<int> foldedJoints;  // clip joints without a segment of their own, in file order
    // Per clip joint, the exported segment standing for it: its own, else that of its nearest
    // ancestor with one. Body segments are 0 to 22, left fingers 100 + k, right 200 + k.
    std::vector<int> standIn;
    double worstError = 0.0;  // metres, over every joint and frame
    int worstJoint = -1;
    int worstFrame = -1;
};

// Folds the clip as `map` says and measures every joint against the clip's own forward
// kinematics in every frame.
BvhFolding measureBvhFolding(const BvhClip& clip, const BvhBodyMap& map, double metresPerUnit);

// The exported name of a stand-in segment code of BvhFolding.
std::string bvhStandInName(int code);
