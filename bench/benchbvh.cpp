// Writes a long BVH take for the export benchmarks: 55 joints (body and both hands' fingers),
// every channel a smooth sum of sines, values with four decimals. The same arguments give the
// same file.
//
//   bench_bvh OUTPUT.bvh [FRAMES [RATE]]   (default 144000 frames at 240 fps)
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <zavo/bodymodel.h>

namespace {

struct Joint {
    std::string name;
    int parent;
    double offset[3];
};

// Offset of each body segment from its parent, in centimetres (Y up, X to the left).
constexpr double kBodyOffsets[BodyModel::BodySegmentCount][3] = {
    {0, 0, 0},   {0, 10, 0},  {0, 10, 0},  {0, 10, 0},  {0, 10, 0},  {0, 12, 0},
    {0, 8, 0},   {-3, 10, 0}, {-12, 0, 0}, {-28, 0, 0}, {-25, 0, 0}, {3, 10, 0},
    {12, 0, 0},  {28, 0, 0},  {25, 0, 0},  {-9, 0, 0},  {0, -42, 0}, {0, -40, 0},
    {0, -6, 12}, {9, 0, 0},   {0, -42, 0}, {0, -40, 0}, {0, -6, 12}};

// The host's body, then per hand the carpus and the tracked joints of the five fingers.
std::vector<Joint> skeleton() {
    std::vector<Joint> joints;
    for (int s = 0; s < BodyModel::BodySegmentCount; ++s) {
        const double* offset = kBodyOffsets[s];
        joints.push_back({std::string(BodyModel::Segments[s].name),
                          BodyModel::Segments[s].parent,
                          {offset[0], offset[1], offset[2]}});
    }
    for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
        const int handSegment = BodyModel::handSegment(hand);
        const double x = hand == NuHand_Left ? 1.0 : -1.0;
        joints.push_back({BodyModel::fingerName(hand, 0), handSegment, {x * 2, 0, 0}});
        std::array<int, BodyModel::FingerJointCount> listed{};  // where finger joint k stands
        int finger = 0;                                         // thumb, index, middle, ring, pinky
        for (int k = 1; k < BodyModel::FingerJointCount; ++k) {
            const BodyModel::FingerJoint& joint = BodyModel::FingerJoints[k];
            if (!joint.tracked) continue;
            const bool first = joint.parent < 0;
            const double along = first ? 8.0 : 3.0;
            const double across = first ? 2.0 * (finger++ - 2) : 0.0;
            listed[k] = static_cast<int>(joints.size());
            joints.push_back({BodyModel::fingerName(hand, k),
                              first ? handSegment : listed[joint.parent],
                              {x * along, 0, across}});
        }
    }
    return joints;
}

void writeJoint(FILE* out, const std::vector<Joint>& joints, int index, int depth) {
    const std::string indent(static_cast<size_t>(depth), '\t');
    const Joint& joint = joints[static_cast<size_t>(index)];
    std::fprintf(out, "%s%s %s\n%s{\n", indent.c_str(), index == 0 ? "ROOT" : "JOINT",
                 joint.name.c_str(), indent.c_str());
    std::fprintf(out, "%s\tOFFSET %.4f %.4f %.4f\n", indent.c_str(), joint.offset[0],
                 joint.offset[1], joint.offset[2]);
    std::fprintf(out, "%s\tCHANNELS %s\n", indent.c_str(),
                 index == 0 ? "6 Xposition Yposition Zposition Zrotation Xrotation Yrotation"
                            : "3 Zrotation Xrotation Yrotation");
    bool leaf = true;
    for (size_t child = 0; child < joints.size(); ++child) {
        if (joints[child].parent != index) continue;
        writeJoint(out, joints, static_cast<int>(child), depth + 1);
        leaf = false;
    }
    if (leaf) {
        std::fprintf(out, "%s\tEnd Site\n%s\t{\n%s\t\tOFFSET 0.0000 1.0000 0.0000\n%s\t}\n",
                     indent.c_str(), indent.c_str(), indent.c_str(), indent.c_str());
    }
    std::fprintf(out, "%s}\n", indent.c_str());
}

// Channel c at time t: three sines with frequencies and phases fixed by the channel number.
double channelValue(int c, double t) {
    double value = 0;
    for (int k = 1; k <= 3; ++k) {
        const double frequency = 0.11 * k + 0.017 * ((c * 7 + k * 3) % 11);
        const double phase = 0.37 * ((c * 13 + k * 5) % 17);
        value += (25.0 / k) * std::sin(2 * M_PI * frequency * t + phase);
    }
    return value;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_bvh OUTPUT.bvh [FRAMES [RATE]]\n");
        return 2;
    }
    const long frames = argc > 2 ? std::atol(argv[2]) : 144000;
    const double rate = argc > 3 ? std::atof(argv[3]) : 240.0;
    FILE* out = std::fopen(argv[1], "w");
    if (!out) {
        std::perror(argv[1]);
        return 1;
    }
    const std::vector<Joint> joints = skeleton();
    std::fprintf(out, "HIERARCHY\n");
    writeJoint(out, joints, 0, 0);
    std::fprintf(out, "MOTION\nFrames: %ld\nFrame Time: %.7f\n", frames, 1.0 / rate);
    const int channels = 3 + 3 * static_cast<int>(joints.size());
    std::string line;
    char number[32];
    for (long f = 0; f < frames; ++f) {
        const double t = static_cast<double>(f) / rate;
        line.clear();
        for (int c = 0; c < channels; ++c) {
            double value = channelValue(c, t);
            if (c == 0) value += 40.0 * std::sin(0.05 * t);  // walk about the stage
            if (c == 1) value = 95.0 + 0.1 * value;          // hips height
            if (c == 2) value += 40.0 * std::cos(0.05 * t);
            std::snprintf(number, sizeof number, c ? " %.4f" : "%.4f", value);
            line += number;
        }
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), out);
    }
    return std::fclose(out) == 0 ? 0 : 1;
}
