#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <utility>

#include <zavo/abstractsettingssynchronizer.h>
#include <zavo/abstractzavostudioplugininterface.h>

// A settings store over a map: registered defaults and descriptions, stored values, and every
// write in order.
class FakeSettings : public AbstractSettingsSynchronizer {
public:
    FakeSettings(QMap<QString, QVariant> registeredDefaults,
                 QMap<QString, QString> registeredDescriptions)
        : defaults(std::move(registeredDefaults)),
          descriptions(std::move(registeredDescriptions)) {}
    QVariant value(const QString& key) const override { return stored.value(key, defaults[key]); }
    QString description(const QString& key) const override { return descriptions[key]; }
    void setValue(const QString& key, const QVariant& value) override {
        stored[key] = value;
        writes.append({key, value});
    }

    QMap<QString, QVariant> defaults, stored;
    QMap<QString, QString> descriptions;
    QList<std::pair<QString, QVariant>> writes;
};

// A host without a take: it hands out a FakeSettings on registration and records log calls as
// "severity code text" (context and time checked on the spot).
class FakeHost : public AbstractZavoStudioPluginInterface {
public:
    AbstractSettingsSynchronizer* registerSettings(const QMap<QString, QVariant>& defaults,
                                                   const QMap<QString, QString>& descriptions,
                                                   AbstractPluginFactory* factory) override {
        registeredBy = factory;
        return settings = new FakeSettings(defaults, descriptions);
    }
    void log(QObject* context, int severity, const QString& text, int code,
             NuTimeStamp time) override {
        const bool now = context == nullptr && NuTimeStamp_now() - time < 1000;
        logs << QString("%1 %2 %3%4").arg(severity).arg(code).arg(text, now ? "" : " (late)");
    }
    void logUsageEvent(const QString&) override {}
    ZavoPoseObject pose(int) const override { return {}; }
    ZavoPoseObject nullPose() const override { return {}; }
    int firstFrame() const override { return 0; }
    int frameCount() const override { return 0; }
    double frameRate() const override { return 60.0; }
    QDateTime recordStartTime() const override { return {}; }
    QString userComment() const override { return {}; }
    QStringList segmentNames() const override { return {}; }
    bool isProp(int) const override { return false; }
    QString fingerTrackingSegmentName(NuHandId, int) const override { return {}; }
    KexJointArray jointInfoList() const override { return {}; }
    bool hasBody() const override { return true; }

    AbstractPluginFactory* registeredBy = nullptr;
    FakeSettings* settings = nullptr;  // owned by the factory
    QStringList logs;
};
