#pragma once

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "nutypes/nutimestamp.h"
#include "zavo/kexjointarray.h"
#include "zavo/nuhandid.h"
#include "zavo/zavoexport.h"
#include "zavo/zavoposeobject.h"

class QObject;
class AbstractPluginFactory;
class AbstractSettingsSynchronizer;

// What the studio application offers a plug-in: its settings store, its log, and the take
// being exported.
class ZAVO_HOST_EXPORT AbstractZavoStudioPluginInterface {
public:
    virtual ~AbstractZavoStudioPluginInterface();

    // Registers a plug-in's settings keys with their defaults and descriptions. The returned
    // synchronizer belongs to the plug-in's factory.
    virtual AbstractSettingsSynchronizer* registerSettings(
        const QMap<QString, QVariant>& defaults, const QMap<QString, QString>& descriptions,
        AbstractPluginFactory* factory) = 0;
    virtual void log(QObject* context, int severity, const QString& text, int code,
                     NuTimeStamp time) = 0;
    virtual void logUsageEvent(const QString& event) = 0;

    // The pose of host frame `frame`; empty when the host has none.
    virtual ZavoPoseObject pose(int frame) const = 0;
    // The calibration pose (T-pose); empty when the take has none.
    virtual ZavoPoseObject nullPose() const = 0;
    virtual int firstFrame() const = 0;
    // Number of frames from firstFrame() to the end of the take.
    virtual int frameCount() const = 0;
    virtual double frameRate() const = 0;
    virtual QDateTime recordStartTime() const = 0;
    virtual QString userComment() const = 0;
    virtual QStringList segmentNames() const = 0;
    virtual bool isProp(int segment) const = 0;
    // Name of finger joint `index` (0 to 19) of `hand`; empty when the host has none.
    virtual QString fingerTrackingSegmentName(NuHandId hand, int index) const = 0;
    virtual KexJointArray jointInfoList() const = 0;
    // Whether the take holds a body (false: only tracked objects such as props).
    virtual bool hasBody() const = 0;
};
