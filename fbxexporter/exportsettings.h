#pragma once

#include <QMap>
#include <QString>
#include <QVariant>
#include <cstdint>
#include <utility>

class AbstractSettingsSynchronizer;

// The exporter's keys in the host's settings store. The factory registers them once at start,
// the options page writes them and every export run reads them.
namespace ExportSettings {
inline constexpr const char* OutputPreset = "outputPreset";
inline constexpr const char* OutputScale = "outputScale";
inline constexpr const char* TimeIncrementMode = "timeIncrementMode";
inline constexpr const char* TimeStart = "timeStart";
inline constexpr const char* UseCalibrationPose = "useCalibrationPose";
inline constexpr const char* FrameSkip = "frameSkip";
inline constexpr const char* WalkOnTheSpot = "walkOnTheSpot";
inline constexpr const char* ExportFormat = "exportFormat";
inline constexpr const char* Naming = "naming";

// Default of every key, typed as the host stores it (integers, booleans, texts).
QMap<QString, QVariant> defaults();
// The help text the host shows beside every key.
QMap<QString, QString> descriptions();
}  // namespace ExportSettings

// Joint-name convention of the Skeleton preset.
enum Naming { Naming_Default = 0, Naming_Unreal = 1, Naming_Invalid = 2 };

// One key's value as a run reads it: converted to the type the exporter works with (bool,
// double, int or text), or, when the stored value does not convert or lies outside what the
// key accepts, an error naming the key, the value and what is accepted. For every key but the
// naming, whichever way their values reach the store.
struct SettingReading {
    QVariant value;
    QString error;
};
SettingReading readSetting(const AbstractSettingsSynchronizer& settings, const char* key);

// The output preset (0 Nodes, 1 Skeleton, 2 invalid) and the text it was read from. Users type
// the value into the settings store, so names match without regard to case, digits exactly,
// and an empty value means Nodes.
std::pair<int, QString> readPreset(const AbstractSettingsSynchronizer& settings);
// The naming convention (a Naming value) and the text it was read from, matched like the preset;
// an empty value means "default".
std::pair<int, QString> readNaming(const AbstractSettingsSynchronizer& settings);

// The settings of one export run, read together at its start. A run without a settings store
// keeps these values.
struct RunSettings {
    int preset = 1;  // 0 Nodes, 1 Skeleton
    Naming naming = Naming_Default;
    double outputScale = 100.0;
    bool dynamic = true;       // keys at each frame's own time, not at fixed steps
    bool startAtZero = false;  // keys from zero, not from the recording's time of day
    bool useCalibrationPose = true;
    int32_t frameSkip = 0;
    bool walkOnTheSpot = false;
    QString exportFormat;
};
// Reads the nine settings. Throws NuException (code 33) for an invalid preset or naming value
// and for any value another key does not accept.
RunSettings readRunSettings(const AbstractSettingsSynchronizer& settings);
