// Every settings key with values a user could type into the settings store or pass with
// --set: each must either export (the accepted spellings) or stop the run before anything is
// written, with a line naming the key and the value.
#include <gtest/gtest.h>

#include "faultcheck.h"
#include "programrun.h"

namespace {

struct KeyValues {
    const char* key;
    std::vector<const char*> bad;
    std::vector<const char*> accepted;
};

const std::vector<KeyValues> keyTable = {
    {"outputPreset",
     {"Mesh", " Nodes", "2", "-1", "01", "1.0", "Skeleton,Nodes", "skelet0n", "0x1"},
     {"NODES", "skeleton", "0", "1", ""}},
    {"naming",
     {"maya", "2", "-1", "01", " unreal", "unreal engine", "1e0", "default;", "\xc3\xbcnreal"},
     {"Unreal", "DEFAULT", "0", "1", ""}},
    {"outputScale",
     {"abc", "", "0", "-1", "1,5", "nan", "inf", "-inf", "1e309", "-0", "100cm", "1e-400"},
     {"1", "0.001", "39.3700787", "1e3"}},
    {"timeIncrementMode",
     {"2", "-1", "", "abc", "1.5", "0x1", "99999999999", "nan", "one"},
     {"0", "1"}},
    {"timeStart", {"2", "5", "-1", "", "zero", "0.5", "4294967296", "nan", "real"}, {"0", "1"}},
    {"useCalibrationPose",
     {"no", "off", "yes", "on", "", "2", "-1", "truex", "t", "0.0"},
     {"TRUE", "fAlSe", "1", "0"}},
    {"frameSkip",
     {"-1", "1000001", "99999999999", "abc", "", "1.5", "0x10", "nan", "2147483648", "-2147483649"},
     {"0", "2", "1000000"}},
    {"walkOnTheSpot",
     {"no", "off", "yes", "on", "", "2", "-1", "falsey", "f", "1.0"},
     {"True", "FALSE", "1", "0"}},
    {"exportFormat",
     {"xml", "", "0", "1", "bin", "asc", "binary ascii", "json", "fbx", "ascii2"},
     {"binary", "ascii"}},
};

// A quoted INI value keeps blanks and commas as the user typed them.
QByteArray iniValue(const char* value) {
    QByteArray quoted = QByteArray(value).replace('\\', "\\\\").replace('"', "\\\"");
    return '"' + quoted + '"';
}

// The parts a refusal must name: the key and, where it is a word of its own, the value.
QStringList refusalParts(const char* key, const QString& value) {
    QStringList parts{key};
    if (!value.isEmpty() && value.trimmed() == value && !value.contains(' ')) parts << value;
    return parts;
}

// Names the parameter of a matrix test by its key.
void PrintTo(const KeyValues& key, std::ostream* out) {
    *out << key.key;
}

}  // namespace

class SettingsFaultMatrix : public ::testing::TestWithParam<KeyValues> {};

TEST_P(SettingsFaultMatrix, EachValueExportsOrStopsTheRunNamingKeyAndValue) {
    const KeyValues& key = GetParam();
    QTemporaryDir root;
    std::vector<MatrixRow> rows;
    auto addRow = [&](const std::string& channel, const char* value, bool bad) {
        const QString folder = caseFolder(root, rows.size());
        QStringList arguments{"--demo", "--demo-frames", "3", "--demo-props", "0"};
        if (channel == "--set") {
            arguments << "--set" << QString("%1=%2").arg(key.key, value);
        } else {
            writeFile(root.filePath(folder + "/store.ini"),
                      "[FBX%20Exporter]\n" + QByteArray(key.key) + "=" + iniValue(value) + "\n");
            arguments << "--settings" << folder + "/store.ini";
        }
        rows.push_back({bad ? "bad values" : "accepted values",
                        channel + " " + key.key + "=\"" + value + "\"",
                        arguments << folder + "/out.fbx",
                        {bad ? Outcome::Refused : Outcome::Written,
                         bad ? refusalParts(key.key, value) : QStringList{}}});
    };
    for (const char* channel : {"--set", "INI store"})
        for (const char* value : key.bad) addRow(channel, value, true);
    // Accepted spellings reach the plug-in the same way from either place.
    for (const char* value : key.accepted) addRow("--set", value, false);
    runMatrix(std::string("settings key ") + key.key, root, rows);
}

INSTANTIATE_TEST_SUITE_P(EveryKey, SettingsFaultMatrix, ::testing::ValuesIn(keyTable),
                         [](const auto& row) { return std::string(row.param.key); });
