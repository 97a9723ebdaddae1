#include "exportsettings.h"

#include <zavo/abstractsettingssynchronizer.h>

#include <cmath>
#include <optional>

#include "nutypes/nuexception.h"

namespace ExportSettings {

QMap<QString, QVariant> defaults() {
    // FBX files are usually in centimetres while the host works in metres, hence 100. The
    // format default stays "ascii" and the scale an integer: users' stores already hold these.
    return {
        {OutputPreset, 1},
        {OutputScale, 100},
        {TimeIncrementMode, 1},
        {TimeStart, 0},
        {UseCalibrationPose, true},
        {FrameSkip, 0},
        {WalkOnTheSpot, false},
        {ExportFormat, QStringLiteral("ascii")},
        {Naming, QStringLiteral("default")},
    };
}

QMap<QString, QString> descriptions() {
    return {
        {OutputPreset,
         QStringLiteral("How the output is rigged. Supported values are \"Skeleton\", \"Nodes\".")},
        {OutputScale, QStringLiteral("The scale of the output. Typically FBX is in cm, while ZAVO "
                                     "uses m so the default scale is 100")},
        {TimeIncrementMode,
         QStringLiteral("How the frames are timestamped, options are 0: Fixed (constant "
                        "intervals) and 1: Dynamic (individually timestamped frames)")},
        {TimeStart, QStringLiteral("Start timestamps from 0 (option 0, default) or start "
                                   "timestamps from recorded first timestamp (option 1)")},
        {UseCalibrationPose, QStringLiteral("Whether to replace the first frame with a T-pose for "
                                            "calibration. Defaults to true.")},
        {FrameSkip, QStringLiteral("The number of frames to skip between exported frames, use "
                                   "for downsampling.")},
        {WalkOnTheSpot, QStringLiteral("Keep the Pelvis X and Y fixed in the export.")},
        {ExportFormat,
         QStringLiteral("FBX Export format. Supported values are \"binary\", \"ascii\".")},
        {Naming,
         QStringLiteral("Naming convention to use when exporting with the Skeleton preset. Using "
                        "the correct names makes rigging easier. \"default\" is good for most "
                        "applications such as MotionBuilder and Unity. \"unreal\" is best for the "
                        "Unreal engine. Supported values are \"default\", \"unreal\".")},
    };
}

}  // namespace ExportSettings

namespace {

// Maps `text` to 0 or 1 by name (any case) or digit (exact); anything else is 2. An empty
// value stands for the first name.
int matchChoice(const QString& text, const QString& name0, const QString& name1) {
    if (text.isEmpty()) return 0;
    if (text.compare(name0, Qt::CaseInsensitive) == 0 || text == QLatin1String("0")) return 0;
    if (text.compare(name1, Qt::CaseInsensitive) == 0 || text == QLatin1String("1")) return 1;
    return 2;
}

// Reads `key` as text and matches it like matchChoice; an empty value reads as the first name.
std::pair<int, QString> readChoice(const AbstractSettingsSynchronizer& settings, const char* key,
                                   const QString& name0, const QString& name1) {
    const QString text = settings.value(QString::fromLatin1(key)).toString();
    return {matchChoice(text, name0, name1), text.isEmpty() ? name0 : text};
}

}  // namespace

std::pair<int, QString> readPreset(const AbstractSettingsSynchronizer& settings) {
    return readChoice(settings, ExportSettings::OutputPreset, QStringLiteral("Nodes"),
                      QStringLiteral("Skeleton"));
}

std::pair<int, QString> readNaming(const AbstractSettingsSynchronizer& settings) {
    // The choice numbers are the Naming values.
    return readChoice(settings, ExportSettings::Naming, QStringLiteral("default"),
                      QStringLiteral("unreal"));
}

namespace {

// Values arrive as typed variants from the options page and as text from the settings file or
// the command line; every rule reads the text, so both ways are judged alike.
using Conversion = std::optional<QVariant> (*)(const QString& text);

std::optional<QVariant> toBoolean(const QString& text) {
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || text == u'1') return true;
    if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0 || text == u'0') {
        return false;
    }
    return std::nullopt;
}

// A plain number: no blanks, no thousands or decimal commas, nothing after it.
std::optional<QVariant> toScale(const QString& text) {
    bool ok = false;
    const double scale = text.trimmed() == text ? text.toDouble(&ok) : 0.0;
    if (!ok || !std::isfinite(scale) || scale <= 0.0) return std::nullopt;
    return scale;
}

std::optional<QVariant> toFrameSkip(const QString& text) {
    constexpr qlonglong MaxFrameSkip = 1000000;
    bool ok = false;
    const qlonglong skip = text.trimmed() == text ? text.toLongLong(&ok, 10) : -1;
    if (!ok || skip < 0 || skip > MaxFrameSkip) return std::nullopt;
    return static_cast<int>(skip);
}

std::optional<QVariant> toZeroOrOne(const QString& text) {
    if (text == u'0' || text == u'1') return text.toInt();
    return std::nullopt;
}

std::optional<QVariant> toPreset(const QString& text) {
    const int preset = matchChoice(text, QStringLiteral("Nodes"), QStringLiteral("Skeleton"));
    if (preset == 2) return std::nullopt;
    return preset;
}

std::optional<QVariant> toFormat(const QString& text) {
    // Kept as given: the writer is chosen by the lower-cased word.
    for (const char* format : {"binary", "ascii"}) {
        if (text.compare(QLatin1String(format), Qt::CaseInsensitive) == 0) return text;
    }
    return std::nullopt;
}

struct SettingRule {
    const char* key;
    Conversion convert;
    const char* accepted;
};

constexpr SettingRule SettingRules[] = {
    {ExportSettings::OutputPreset, toPreset, "Nodes or Skeleton in any case, 0 or 1"},
    {ExportSettings::OutputScale, toScale, "a number above 0, such as 100 or 0.001"},
    {ExportSettings::TimeIncrementMode, toZeroOrOne, "0 (Fixed) or 1 (Dynamic)"},
    {ExportSettings::TimeStart, toZeroOrOne, "0 (from zero) or 1 (from the recorded start)"},
    {ExportSettings::UseCalibrationPose, toBoolean, "true, false, 1 or 0"},
    {ExportSettings::FrameSkip, toFrameSkip, "a whole number from 0 to 1000000"},
    {ExportSettings::WalkOnTheSpot, toBoolean, "true, false, 1 or 0"},
    {ExportSettings::ExportFormat, toFormat, "binary or ascii"},
};

}  // namespace

SettingReading readSetting(const AbstractSettingsSynchronizer& settings, const char* key) {
    const QString text = settings.value(QString::fromLatin1(key)).toString();
    for (const SettingRule& rule : SettingRules) {
        if (qstrcmp(rule.key, key) != 0) continue;
        if (std::optional<QVariant> value = rule.convert(text)) return {*value, {}};
        return {{},
                QStringLiteral("Invalid %1: \"%2\" (accepted: %3)")
                    .arg(QLatin1String(key), text, QLatin1String(rule.accepted))};
    }
    return {{}, QStringLiteral("Unknown setting: %1").arg(QLatin1String(key))};
}

RunSettings readRunSettings(const AbstractSettingsSynchronizer& settings) {
    // Result code of the exceptions for settings the exporter cannot work with.
    constexpr int InvalidSettingCode = 33;
    RunSettings run;
    const auto [preset, presetText] = readPreset(settings);
    if (preset == 2) {
        throw NuException(InvalidSettingCode,
                          ("Invalid outputPreset: " + presetText).toStdString());
    }
    const auto [naming, namingText] = readNaming(settings);
    if (naming == Naming_Invalid) {
        throw NuException(InvalidSettingCode,
                          ("Invalid naming convention: " + namingText).toStdString());
    }
    run.preset = preset;
    run.naming = static_cast<Naming>(naming);
    // A value the run cannot use ends it before anything is made, rather than exporting with
    // a scale of 0 or the wrong format.
    const auto value = [&settings](const char* key) {
        SettingReading reading = readSetting(settings, key);
        if (!reading.error.isEmpty()) {
            throw NuException(InvalidSettingCode, reading.error.toStdString());
        }
        return reading.value;
    };
    run.outputScale = value(ExportSettings::OutputScale).toDouble();
    run.dynamic = value(ExportSettings::TimeIncrementMode).toInt() == 1;
    run.startAtZero = value(ExportSettings::TimeStart).toInt() == 0;
    run.useCalibrationPose = value(ExportSettings::UseCalibrationPose).toBool();
    run.frameSkip = value(ExportSettings::FrameSkip).toInt();
    run.walkOnTheSpot = value(ExportSettings::WalkOnTheSpot).toBool();
    run.exportFormat = value(ExportSettings::ExportFormat).toString();
    return run;
}
