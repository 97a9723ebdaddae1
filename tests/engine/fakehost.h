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
struct PoseData {
    bool valid = true;
    NuTimeStamp absoluteTime = 0;
    int32_t frameTime = 0;
    std::pair<int32_t, int32_t> poseOffset{0, 0};
    std::vector<NuVector> positions;
    std::vector<NuQuaternion> orientations;
    std::optional<std::array<std::array<KexSegmentPose, 20>, 2>> fingers;
};

class FakePose : public ZavoPose {
public:
    explicit FakePose(PoseData data) : d(std::move(data)) {}
    ZavoPose* clone() const override { return new FakePose(d); }
    bool isValid() const override { return d.valid; }
    int segmentStateCount() const override { return static_cast<int>(d.positions.size()); }
    NuVector pos_g(int i) const override { return has(i) ? d.positions[i] : NuVector(); }
    NuQuaternion q_gb(int i, PoseBase) const override {
        return has(i) ? d.orientations[i] : NuQuaternion{};
    }
    std::pair<int32_t, int32_t> poseOffset() const override { return d.poseOffset; }
    int32_t frameTime() const override { return d.frameTime; }
    NuTimeStamp absoluteTime() const override { return d.absoluteTime; }
    bool hasFingerTrackingData() const override { return d.fingers.has_value(); }
    KexSegmentPose fingerTrackingData(NuHandId hand, int k) const override {
        return d.fingers && k >= 0 && k < 20 ? (*d.fingers)[hand][k] : KexSegmentPose{};
    }

private:
    bool has(int i) const { return i >= 0 && i < segmentStateCount(); }
    PoseData d;
};

inline ZavoPoseObject poseObject(const PoseData& data) {
    return ZavoPoseObject(std::make_unique<FakePose>(data));
}

// An in-memory settings store: stored values over the exporter's registered defaults.
class FakeSettings : public AbstractSettingsSynchronizer {
public:
    QVariant value(const QString& key) const override {
        return values.contains(key) ? values.value(key) : ExportSettings::defaults().value(key);
    }
    QString description(const QString& key) const override {
        return ExportSettings::descriptions().value(key);
    }
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
    ZavoPoseObject nullPose() const override {
        return calibrationPose ? poseObject(*calibrationPose) : ZavoPoseObject();
    }
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
    std::vector<std::optional<PoseData>> frames;  // nullopt: the host has no pose
    std::optional<PoseData> calibrationPose;
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
