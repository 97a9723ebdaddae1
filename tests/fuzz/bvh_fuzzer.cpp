// The BVH reader and the clip-to-take conversion on arbitrary bytes: a clip that reads must
// also convert; everything else must be a TakeError.
#include "bvhclip.h"
#include "bvhfolding.h"
#include "bvhframerate.h"
#include "bvhtake.h"
#include "onlytakeerrors.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return onlyTakeErrors(data, size, [](std::string_view text) {
        const BvhClip clip = parseBvh(text, "fuzz.bvh");
        const BvhBodyMap map = mapBvhJoints(clip);
        (void)measureBvhFolding(clip, map, 0.01);
        (void)takeFromBvh(clip, 0.01, bvhFrameRate(clip).rate).frameCount();
    });
}
