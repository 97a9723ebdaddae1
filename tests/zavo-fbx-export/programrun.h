#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <array>
#include <string>

#include "take.h"
#include "tests/support/fbxassimpscene.h"

// One run of the program under test.
struct ProgramRun {
    int exitStatus = -1;
    QString standardOutput;
    QString standardError;
};

// Runs zavo-fbx-export with `arguments` in `folder`, with a settings store of its own there.
ProgramRun runProgram(const QTemporaryDir& folder, QStringList arguments);

// A host position (metres, Z up) in a scene written at output scale 100: centimetres on the
// FBX axes (X = host Y, Y = host Z, Z = host X).
std::array<double, 3> fbxCentimetres(const std::array<double, 3>& host);
// A host orientation (w, x, y, z) turned onto the FBX axes.
std::array<double, 4> fbxOrientation(const std::array<double, 4>& host);
// The largest difference between a world transform's rotation and the rotation `q` (w, x,
// y, z, on the FBX axes).
double rotationDifference(const fbxtest::Matrix& world, const std::array<double, 4>& q);
// Loads a written file with assimp; a binary file must also pass the structural reader.
bool loadScene(const QString& path, bool binary, fbxtest::AssimpScene& scene, std::string& error);
