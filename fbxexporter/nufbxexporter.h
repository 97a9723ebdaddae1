#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

#include <zavo/abstractexporter.h>
#include <zavo/abstractsettingssynchronizer.h>
#include <zavo/abstractzavostudioplugininterface.h>

#include "channelkeying.h"
#include "fbx/scene/fbxtime.h"
#include "posetransformfbx.h"

class FbxManager;
class FbxScene;
class FbxAnimStack;
class FbxAnimLayer;

// One export run of a take into an FBX file. The host calls initialize(), exportFrame() for
// every frame in order, then finalize() exactly once (also after a failed initialize), all on
// its own thread. The run owns the FBX manager, and with it every FBX object, until finalize.
//
// Subclasses supply the scene's content: initScene() builds the nodes once, exportFrame() keys
// them. They use useThisFrame() and setKeyTime() to select frames and time their keys.
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
    // objects and returns true: a failed write is reported on standard output only.
    bool finalize(bool cancelled) override;
    QString lastError() const override;

    FbxTime animationStartTime() const { return m_animationStart; }
    FbxTime animationStopTime() const { return m_animationStop; }
    void setAnimationStartTime(FbxTime time) { m_animationStart = time; }
    void setAnimationStopTime(FbxTime time) { m_animationStop = time; }

protected:
    // Reads the nine export settings. Throws NuException (code 33) for an invalid preset or
    // naming value and for any value another key does not accept, leaving the settings read
    // before it updated.
    void loadSettings();
    // Whether host frame `frame` is exported: not before the recording started, and one frame
    // in (frame skip + 1) counted from the first exported frame, which the first call fixes.
    bool useThisFrame(int frame);
    // Sets the key time of an exported frame. An empty or invalid pose leaves the key time
    // unchanged and sets the last error.
    void setKeyTime(int frame);
    // Scene and frame export of a take without a body: one flat node per tracked object, with
    // null attributes or markers.
    bool initObjectScene(const QString& name, bool useNulls);
    bool exportObjectFrame(int frame);

    // The pose keyed for `frame`: the calibration pose stands in for the first exported frame
    // when asked to and when it is usable.
    ZavoPoseObject framePose(int frame) const;
    // Whether a pose can be keyed: valid, three finite coordinates per position (none at all
    // for objects of a take without a body), finite orientations of a usable length, and every
    // value still finite in single precision after the output scale.
    bool isUsablePose(const ZavoPoseObject& pose) const;
    // The first usable pose of the take, or an empty one; scenes are built from it.
    ZavoPoseObject firstUsablePose() const;
    // Times an exported frame and gives the pose to key, or false for an unusable pose, which
    // is counted and reported through lastError().
    bool prepareFrame(int frame, ZavoPoseObject& pose);
    // Why finalize would write a file without a node or without a key; empty when it would not.
    QString nothingToExport() const;
    // What a saved run tells the host about frames that left no key of their own: frames
    // without a usable pose, frames at the time of an earlier one. Empty when every frame keyed.
    QString lostFramesWarning() const;
    // Replaces the names of the animated nodes.
    void setSegmentNames(const QStringList& names);
    // The node and curves of animated segment `index` in the scene under way, with its
    // rotation and translation curve nodes made on the first call; null when no node has the
    // segment's name.
    AnimatedSegment* animatedSegment(int index);

    AbstractZavoStudioPluginInterface& m_host;
    AbstractSettingsSynchronizer* m_settings;
    int m_preset = 1;
    int m_naming = Naming_Default;
    double m_outputScale = 100.0;
    bool m_useCalibrationPose = true;
    int32_t m_frameSkip = 0;
    int32_t m_firstFrame = -1;
    int32_t m_exportedFrameCount = 0;
    bool m_initialized = false;
    bool m_timeSet = false;
    QString m_fileName;
    bool m_walkOnTheSpot = false;
    QString m_exportFormat;
    QString m_lastError;
    QString m_takeName;
    // Names of the animated nodes, in keying order; the UTF-8 copies spare each frame's
    // lookups a conversion.
    QStringList m_segmentNames;
    std::vector<FbxString> m_segmentNodeNames;
    std::vector<AnimatedSegment> m_animatedSegments;  // by segment; valid for m_scene only
    std::unique_ptr<PoseTransformFbx> m_poseTransform;
    FbxManager* m_manager = nullptr;
    FbxScene* m_scene = nullptr;
    FbxAnimStack* m_animStack = nullptr;
    FbxAnimLayer* m_animLayer = nullptr;
    FbxTime m_keyTime;
    FbxTime::EMode m_timeMode = FbxTime::eDefaultMode;
    double m_exportRate = 0.0;  // frames per second of the file; the custom mode's rate
    int64_t m_startOffset = 0;  // milliseconds since 1970, or 0 when keys start at zero
    bool m_dynamic = true;
    bool m_startAtZero = false;
    int32_t m_startHours = 0;
    int32_t m_startMinutes = 0;
    int32_t m_startSeconds = 0;
    int32_t m_startFrames = 0;
    int32_t m_firstFrameTime = 0;  // milliseconds
    FbxTime m_animationStart;
    FbxTime m_animationStop;
    // Frame counts of the run, for what finalize reports.
    int m_offeredFrames = 0;    // handed to exportFrame
    int m_usedFrames = 0;       // accepted by useThisFrame
    int m_invalidFrames = 0;    // used, but with an unusable pose
    int m_keyedFrames = 0;      // keyed
    int m_collidingFrames = 0;  // keyed at the time of an earlier keyed frame
    int m_poselessFrames = 0;   // due for a key, but without a pose
    std::unordered_set<FbxLongLong> m_keyTimes;

private:
    QString takeNameOf(const QString& fileName) const;
    void createDocumentInfo();
    void setTimeMode();
    void unrollRotations();
};
