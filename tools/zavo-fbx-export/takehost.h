#pragma once

#include <zavo/abstractzavostudioplugininterface.h>
#include <QStringList>
#include <memory>
#include <vector>

#include "poselookahead.h"
#include "settingsstore.h"
#include "take.h"

// A message the plug-in logged with the host.
struct HostLogEntry {
    int severity = 0;
    QString text;
    int code = 0;
};

// The studio's side of the plug-in interface over one take: poses and take information from
// the take, settings from the settings store, log messages kept for the program to report.
class TakeHost : public AbstractZavoStudioPluginInterface {
public:
    // A computed take's poses are worked out `lookAhead` frames ahead on a second thread.
    TakeHost(const Take& take, std::shared_ptr<SettingsStore> store,
             int lookAhead = PoseLookAhead::defaultDepth());

    AbstractSettingsSynchronizer* registerSettings(const QMap<QString, QVariant>& defaults,
                                                   const QMap<QString, QString>& descriptions,
                                                   AbstractPluginFactory* factory) override;
    void log(QObject* context, int severity, const QString& text, int code,
             NuTimeStamp time) override;
    void logUsageEvent(const QString& event) override { m_usageEvents.push_back(event); }

    ZavoPoseObject pose(int frame) const override;
    ZavoPoseObject nullPose() const override;
    int firstFrame() const override { return m_take.firstFrame; }
    int frameCount() const override { return m_take.frameCount(); }
    double frameRate() const override { return m_take.frameRate; }
    QDateTime recordStartTime() const override;
    QString userComment() const override { return m_userComment; }
    QStringList segmentNames() const override { return m_segmentNames; }
    bool isProp(int segment) const override { return m_take.isProp(segment); }
    QString fingerTrackingSegmentName(NuHandId hand, int index) const override;
    KexJointArray jointInfoList() const override;
    bool hasBody() const override { return m_take.hasBody; }

    // The group the plug-in's keys were registered in; empty before registration.
    const QString& settingsGroup() const { return m_settingsGroup; }
    const std::vector<HostLogEntry>& logEntries() const { return m_log; }
    const QStringList& usageEvents() const { return m_usageEvents; }

private:
    const Take& m_take;
    std::unique_ptr<PoseLookAhead> m_computed;  // a computed take's poses
    std::shared_ptr<SettingsStore> m_store;
    QString m_userComment;
    QStringList m_segmentNames;
    QString m_settingsGroup;
    std::vector<HostLogEntry> m_log;
    QStringList m_usageEvents;
};
