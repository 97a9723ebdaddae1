#pragma once

#include <array>
#include <optional>
#include <set>
#include <vector>

#include <zavo/abstractsettingssynchronizer.h>
#include <zavo/abstractzavostudioplugininterface.h>
#include <zavo/zavopose.h>

#include "exportsettings.h"

// One frame of a take: global positions (metres, host axes) and orientations per segment,
// timing, and optionally finger data of both hands ([hand][joint]).
class FakePose : public ZavoPose {
public:
    ZavoPose* clone() const override { return new FakePose(*this); }
    bool isValid() const override { return valid; }
    int segmentStateCount() const override { return static_cast<int>(positions.size()); }
    NuVector pos_g(int i) const override { return has(i) ? positions[i] : NuVector(); }
    NuQuaternion q_gb(int i, PoseBase) const override {
        return has(i) ? orientations[i] : NuQuaternion{};
    }
    std::pair<int32_t, int32_t> poseOffset() const override { return offset; }
    int32_t frameTime() const override { return time; }
    NuTimeStamp absoluteTime() const override { return absolute; }
    bool hasFingerTrackingData() const override { return fingers.has_value(); }
    KexSegmentPose fingerTrackingData(NuHandId hand, int k) const override {
        return fingers && k >= 0 && k < 20 ? (*fingers)[hand][k] : KexSegmentPose{};
    }

    bool valid = true;
    NuTimeStamp absolute = 0;
    int32_t time = 0;
    std::pair<int32_t, int32_t> offset{0, 0};
    std::vector<NuVector> positions;
    std::vector<NuQuaternion> orientations;
    std::optional<std::array<std::array<KexSegmentPose, 20>, 2>> fingers;

private:
    bool has(int i) const { return i >= 0 && i < segmentStateCount(); }
};

inline ZavoPoseObject poseObject(const FakePose& pose) {
    return ZavoPoseObject(std::unique_ptr<ZavoPose>(pose.clone()));
}

// An in-memory settings store: stored values over the exporter's registered defaults.
class FakeSettings : public AbstractSettingsSynchronizer {
public:
    QVariant value(const QString& key) const override {
        return values.contains(key) ? values.value(key) : ExportSettings::defaults().value(key);
    }
    QString description(const QString&) const override { return {}; }
    void setValue(const QString& key, const QVariant& value) override { values[key] = value; }

    QVariantMap values;
};

// The studio application as a plug-in sees it, over a take held in public fields.
class FakeHost : public AbstractZavoStudioPluginInterface {
public:
    AbstractSettingsSynchronizer* registerSettings(const QVariantMap&,
                                                   const QMap<QString, QString>&,
                                                   AbstractPluginFactory*) override {
        return &settings;
    }
    void log(QObject*, int, const QString&, int, NuTimeStamp) override {}
    void logUsageEvent(const QString& event) override { usageEvents.append(event); }
    ZavoPoseObject pose(int f) const override {
        return f >= 0 && f < static_cast<int>(frames.size()) && frames[f] ? poseObject(*frames[f])
                                                                          : ZavoPoseObject();
    }
    ZavoPoseObject nullPose() const override { return poseObject(calibrationPose); }
    int firstFrame() const override { return first; }
    int frameCount() const override { return static_cast<int>(frames.size()) - first; }
    double frameRate() const override { return rate; }
    QDateTime recordStartTime() const override { return recordStart; }
    QString userComment() const override { return comment; }
    QStringList segmentNames() const override { return names; }
    bool isProp(int i) const override { return props ? props->contains(i) : i > 22; }
    QString fingerTrackingSegmentName(NuHandId hand, int k) const override {
        return fingerNames[hand].value(k);
    }
    KexJointArray jointInfoList() const override { return KexJointArray(joints); }
    bool hasBody() const override { return body; }

    FakeSettings settings;
    std::vector<std::optional<FakePose>> frames;  // nullopt: the host has no pose
    FakePose calibrationPose;
    int first = 0;
    double rate = 60.0;
    QDateTime recordStart = QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
    QString comment;
    QStringList names;
    std::optional<std::set<int>> props;  // unset: every segment above 22
    std::array<QStringList, 2> fingerNames;
    std::vector<KexJoint> joints;
    bool body = true;
    QStringList usageEvents;
};
