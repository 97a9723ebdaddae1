#include "bvhimport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "bvhfolding.h"
#include "bvhframerate.h"
#include "bvhtake.h"

namespace {

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string rateText(double rate) {
    std::string text = fixed(rate, 3);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string foldingNote(const std::string& file, const BvhClip& clip, const BvhBodyMap& map,
                        double metresPerUnit) {
    const BvhFolding folding = measureBvhFolding(clip, map, metresPerUnit);
    std::string note = file + ": joint names read as " + std::string(map.scheme) + "; ";
    if (folding.foldedJoints.empty()) {
        note += "no joint folded";
    } else {
        // A line for people: a clip of thousands of joints names a few and counts the rest.
        constexpr size_t named = 12;
        const size_t folded = folding.foldedJoints.size();
        note += "folded into the bone above:";
        for (size_t i = 0; i < std::min(folded, named); ++i) {
            const auto j = static_cast<size_t>(folding.foldedJoints[i]);
            note += (i == 0 ? " " : ", ") + clip.joints[j].name + " (" +
                    bvhStandInName(folding.standIn[j]) + ")";
        }
        if (folded > named) note += " and " + std::to_string(folded - named) + " more";
    }
    const std::string worst = fixed(100.0 * folding.worstError, 2);
    note += "; worst joint position error in the Skeleton preset " + worst + " cm";
    if (worst != "0.00")
        note += " (" + clip.joints[static_cast<size_t>(folding.worstJoint)].name + ", frame " +
                std::to_string(folding.worstFrame) + ")";
    return note;
}

}  // namespace

Take importBvhTake(const std::string& path, const BvhImportOptions& options,
                   std::vector<std::string>& notes) {
    BvhClip clip = readBvhFile(path);
    const std::string file = std::filesystem::path(path).filename().string();
    double rate = options.frameRate;
    if (rate <= 0.0) {
        const BvhFrameRate fromFile = bvhFrameRate(clip);
        rate = fromFile.rate;
        // Said only where it changes something: 0.01 is 1/100 s either way.
        if (fromFile.standard && std::abs(rate * clip.frameTime - 1.0) > 1e-12)
            notes.push_back(file + ": Frame Time " + clip.frameTimeText + " read as 1/" +
                            rateText(rate) + " s (" + rateText(rate) +
                            " fps), the standard rate it is rounded from; --bvh-rate sets "
                            "another");
    }
    if (options.verbose)
        notes.push_back(foldingNote(file, clip, mapBvhJoints(clip), options.metresPerUnit));
    return takeFromBvh(std::move(clip), options.metresPerUnit, rate);
}
