#include "takehost.h"

#include <zavo/abstractpluginfactory.h>

#include "takeposeview.h"

TakeHost::TakeHost(const Take& take, std::shared_ptr<SettingsStore> store, int lookAhead)
    : m_take(take),
      m_store(std::move(store)),
      m_userComment(QString::fromStdString(take.userComment)) {
    if (take.computePose)
        m_computed =
            std::make_unique<PoseLookAhead>(take.computePose, take.computedFrames, lookAhead);
    for (const std::string& name : take.segmentNames)
        m_segmentNames << QString::fromStdString(name);
}

AbstractSettingsSynchronizer* TakeHost::registerSettings(const QMap<QString, QVariant>& defaults,
                                                         const QMap<QString, QString>& descriptions,
                                                         AbstractPluginFactory* factory) {
    m_settingsGroup = factory ? factory->orgName() : QStringLiteral("Plug-in");
    m_store->registerKeys(m_settingsGroup, defaults, descriptions);
    return new StoreSettingsSynchronizer(m_store, m_settingsGroup);
}

void TakeHost::log(QObject*, int severity, const QString& text, int code, NuTimeStamp) {
    m_log.push_back({severity, text, code});
}

ZavoPoseObject TakeHost::pose(int frame) const {
    if (m_take.computePose) {
        if (frame < 0 || frame >= m_take.computedFrames) return ZavoPoseObject();
        return makePoseObject(m_take, m_computed->pose(frame));
    }
    if (frame < 0 || frame >= static_cast<int>(m_take.frames.size())) return ZavoPoseObject();
    const std::optional<TakePose>& pose = m_take.frames[static_cast<size_t>(frame)];
    return makePoseObject(m_take, pose ? &*pose : nullptr);
}

ZavoPoseObject TakeHost::nullPose() const {
    return makePoseObject(m_take, m_take.nullPose ? &*m_take.nullPose : nullptr);
}

QDateTime TakeHost::recordStartTime() const {
    return QDateTime::fromMSecsSinceEpoch(m_take.recordStartTime, Qt::OffsetFromUTC,
                                          m_take.recordStartUtcOffset);
}

QString TakeHost::fingerTrackingSegmentName(NuHandId hand, int index) const {
    if (hand != NuHand_Left && hand != NuHand_Right) return QString();
    const std::vector<std::string>& names = m_take.fingerNames[hand];
    if (index < 0 || index >= static_cast<int>(names.size())) return QString();
    return QString::fromStdString(names[static_cast<size_t>(index)]);
}

KexJointArray TakeHost::jointInfoList() const {
    std::vector<KexJoint> joints;
    joints.reserve(m_take.joints.size());
    for (const TakeJoint& joint : m_take.joints) joints.push_back({joint.parent, joint.child});
    return KexJointArray(std::move(joints));
}
