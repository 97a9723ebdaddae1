// The BVH reader and the clip-to-take conversion on arbitrary bytes: a clip that reads must
// also convert; everything else must be a TakeError.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "bvhclip.h"
#include "bvhfolding.h"
#include "bvhframerate.h"
#include "bvhtake.h"
#include "takeerror.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const BvhClip clip = parseBvh(text, "fuzz.bvh");
        const BvhBodyMap map = mapBvhJoints(clip);
        (void)measureBvhFolding(clip, map, 0.01);
        const Take take = takeFromBvh(clip, 0.01, bvhFrameRate(clip).rate);
        (void)take.frameCount();
    } catch (const TakeError&) {
    } catch (const std::exception& unexpected) {
        std::fprintf(stderr, "unexpected failure: %s\n", unexpected.what());
        std::abort();
    }
    return 0;
}
