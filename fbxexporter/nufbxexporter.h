#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <zavo/abstractexporter.h>
#include <zavo/abstractsettingssynchronizer.h>
#include <zavo/abstractzavostudioplugininterface.h>

#include "exportscene.h"
#include "exportsettings.h"
#include "fbx/scene/fbxtime.h"
#include "framecounts.h"
#include "keyingthread.h"
#include "keytiming.h"
#include "math/quaternion.h"
#include "math/vector.h"
#include "posereading.h"

// One export run of a take into an FBX file. The host calls initialize(), exportFrame() for
// every frame in order, then finalize() exactly once (also after a failed initialize), all on
// its own thread. The run owns the FBX manager, and with it every FBX object, until finalize.
// Where the process may run on a second processor thread, the keys go into the scene on a
// thread of the run's own while the host's thread reads the next frames; the file is the same.
//
// Subclasses supply the scene's content: initScene() builds the nodes once, exportFrame() keys
// them. They select and time frames with useThisFrame() and prepareFrame().
class NuFbxExporter : public QObject, public AbstractExporter {
    Q_OBJECT

public:
    NuFbxExporter(AbstractZavoStudioPluginInterface& host, AbstractSettingsSynchronizer* settings);
    ~NuFbxExporter() override;

    // Builds the take's nodes in the scene, named below a root called `name`. False aborts the run.
    virtual bool initScene(const QString& name) = 0;

    // Reads the settings and prepares the scene. Throws NuException (code 33) for an invalid
    // setting and std::runtime_error when the FBX objects cannot be made.
    bool initialize(const QString& fileName) override;
    // Unless cancelled, smooths the rotation curves and writes the file. Always releases the FBX
    // objects; false when a file was due but not written (nothing to export, or the write
    // failed), with the reason in lastError().
    bool finalize(bool cancelled) override;
    QString lastError() const override;

    FbxTime animationStartTime() const { return m_animationStart; }
    FbxTime animationStopTime() const { return m_animationStop; }
    void setAnimationStartTime(FbxTime time) { m_animationStart = time; }
    void setAnimationStopTime(FbxTime time) { m_animationStop = time; }

    // The FBX objects of the run under way, from initialize() until finalize() releases them,
    // with every key of the frames exported so far.
    const ExportScene& sceneUnderWay() const;

    // Whether later runs key on a thread of their own and unroll on every processor thread
    // (the default); off, the host's thread does all of it. The file is the same.
    void setHelperThreads(bool use) { m_helperThreadsWanted = use; }

protected:
    // An exported frame ready to key: its key time and the pose to key with what was read of
    // it (the host makes each value anew); they last until the next frame.
    struct KeyedFrame {
        FbxTime time;
        const ZavoPoseObject& pose;
        const PoseReading& reading;
    };

    AbstractZavoStudioPluginInterface& host() const { return m_host; }
    const RunSettings& settings() const { return m_settings; }
    // Whether initialize() succeeded and finalize() has not yet ended the run.
    bool isRunning() const { return m_running; }

    // Whether host frame `frame` is exported: not before the recording started, and one frame
    // in (frame skip + 1) counted from the first exported frame, which the first call fixes.
    bool useThisFrame(int frame);
    // Times an exported frame, which extends the animation's span, and gives the pose to key,
    // or nothing for an unusable pose, which is counted and reported through lastError().
    std::optional<KeyedFrame> prepareFrame(int frame);

    // Whether a pose can be keyed: valid, three finite coordinates per position (none at all
    // for objects of a take without a body), finite orientations of a usable length, and every
    // value still finite in single precision after the output scale.
    bool isUsablePose(const ZavoPoseObject& pose) const;
    // The first usable pose of the take, or an empty one; scenes are built from it.
    ZavoPoseObject firstUsablePose() const;

    // Replaces the names of the animated nodes, in keying order.
    void setSegmentNames(const QStringList& names) { m_scene.setSegmentNames(names); }
    int segmentCount() const { return m_scene.segmentCount(); }
    // Keys animated segment `segment`'s translation, given in the host's units, at the output
    // scale. A segment whose name no node has gets no key.
    void keyTranslation(int segment, FbxTime time, const nuvia::Vector3& translation);
    // Keys animated segment `segment`'s rotation, XYZ Euler angles in degrees.
    void keyRotation(int segment, FbxTime time, const nuvia::Vector3& euler);
    // The same for a rotation given as a quaternion: its XYZ Euler angles are keyed.
    void keyRotation(int segment, FbxTime time, const nuvia::Quaternion& rotation);

    // Scene and frame export of a take without a body: one flat node per tracked object, with
    // null attributes or markers.
    bool initObjectScene(const QString& name, bool useNulls);
    bool exportObjectFrame(int frame);

private:
    // Reads the settings into the run. Throws as readRunSettings() does.
    void loadSettings();
    // The host's pose of `frame`, fetched once however often the frame's export asks.
    const ZavoPoseObject& hostPose(int frame);
    // The pose keyed for `frame`: the calibration pose stands in for the first exported frame
    // when asked to and when it is usable.
    const ZavoPoseObject& framePose(int frame);
    // isUsablePose(), keeping what was read of the pose in `reading`.
    bool readUsablePose(const ZavoPoseObject& pose, PoseReading& reading) const;
    // Lets go of the poses of the frame last exported, which the next run must not see.
    void forgetPoses();
    // Why finalize would write a file without a node or without a key; empty when it would not.
    QString nothingToExport() const;
    // Starts the keying thread where one is wanted and the process has a second processor.
    void startKeying();
    // Ends the keying thread: a cancelled run drops the keys not made yet, others make them
    // all. What made the keying fail, or null.
    std::exception_ptr stopKeying(bool cancelled);
    void addKey(const ChannelKey& key);
    // Puts keys into the scene, on whichever thread keys.
    void keyIntoScene(std::span<const ChannelKey> keys);

    AbstractZavoStudioPluginInterface& m_host;
    AbstractSettingsSynchronizer* m_settingsStore;
    RunSettings m_settings;
    bool m_running = false;
    QString m_fileName;
    QString m_lastError;
    ExportScene m_scene;
    KeyTiming m_timing;
    FrameCounts m_counts;
    std::optional<int> m_hostPoseFrame;  // whose pose m_hostPose is
    ZavoPoseObject m_hostPose;
    ZavoPoseObject m_calibrationPose;
    PoseReading m_frameReading;        // of the pose keyed last
    int32_t m_exportedFrameCount = 0;  // room each new curve reserves
    FbxTime m_animationStart;
    FbxTime m_animationStop;
    bool m_helperThreadsWanted = true;
    // Ended before the scene it keys into goes.
    std::unique_ptr<KeyingThread> m_keying;
};
