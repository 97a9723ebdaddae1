#include "programrun.h"

#include <QProcess>
#include <algorithm>
#include <cmath>

#include "tests/support/fbxbinaryreader.h"

ProgramRun runProgram(const QTemporaryDir& folder, QStringList arguments) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    arguments.prepend(folder.filePath("settings.ini"));
    arguments.prepend("--settings");
    process.start(ZAVO_FBX_EXPORT_PROGRAM, arguments);
    ProgramRun run;
    if (!process.waitForFinished(300000)) return run;
    run.exitStatus = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.standardOutput = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.standardError = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

std::array<double, 3> fbxCentimetres(const std::array<double, 3>& host) {
    return {100 * host[1], 100 * host[2], 100 * host[0]};
}

std::array<double, 4> fbxOrientation(const std::array<double, 4>& host) {
    return {host[0], host[2], host[3], host[1]};
}

double rotationDifference(const fbxtest::Matrix& world, const std::array<double, 4>& q) {
    const double w = q[0], x = q[1], y = q[2], z = q[3];
    const double r[9] = {1 - 2 * (y * y + z * z), 2 * (x * y - w * z),     2 * (x * z + w * y),
                         2 * (x * y + w * z),     1 - 2 * (x * x + z * z), 2 * (y * z - w * x),
                         2 * (x * z - w * y),     2 * (y * z + w * x),     1 - 2 * (x * x + y * y)};
    double difference = 0;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            difference =
                std::max(difference, std::abs(world[row * 4 + column] - r[row * 3 + column]));
    return difference;
}

bool loadScene(const QString& path, bool binary, fbxtest::AssimpScene& scene, std::string& error) {
    if (binary) {
        fbxtest::File file;
        if (!fbxtest::ReadBinaryFile(path.toStdString(), file, error)) return false;
    }
    return scene.Load(path.toStdString(), error);
}
