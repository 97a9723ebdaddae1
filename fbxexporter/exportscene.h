#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "channelkeying.h"
#include "fbx/scene/fbxtime.h"

class FbxManager;
class FbxScene;
class FbxAnimStack;
class FbxAnimLayer;
class FbxAnimCurve;
class FbxString;

// The FBX objects of one export run: the manager, which owns every object it makes, the scene
// with its document information, one animation stack and layer, and the animated nodes the
// scene writers key, found by name.
class ExportScene {
public:
    ExportScene() = default;
    // Releases, without a word, objects that no close() released.
    ~ExportScene();
    ExportScene(const ExportScene&) = delete;
    ExportScene& operator=(const ExportScene&) = delete;

    // Makes the manager, the scene, its document information with the user's `comment`, and the
    // animation stack `takeName` with its layer; `deterministic` asks the writer for the same
    // bytes from the same scene. Throws std::runtime_error when the manager or the scene cannot
    // be made; what was made stays for close().
    void open(const QString& takeName, const QString& comment, bool deterministic);
    // Whether open() made every object.
    bool isOpen() const { return m_scene && m_stack; }
    FbxScene* scene() const { return m_scene; }  // null when not open
    FbxAnimLayer* layer() const { return m_layer; }
    // Plays the scene at `rate` frames per second in `mode`.
    void setTimeMode(FbxTime::EMode mode, double rate);
    // How many threads unroll the rotation curves of different nodes at once.
    void setUnrollThreads(unsigned threads) { m_unrollThreads = threads; }

    // Replaces the names of the animated nodes, in keying order.
    void setSegmentNames(const QStringList& names);
    const QStringList& segmentNames() const { return m_segmentNames; }
    int segmentCount() const { return static_cast<int>(m_nodeNames.size()); }
    // The node and curves of animated segment `index`, with its rotation and translation curve
    // nodes made on the first call; null when no node has the segment's name.
    AnimatedSegment* animatedSegment(int index);
    // The curve whose key times the run's other curves share (ChannelCurves::key); null
    // until the first curve is made.
    FbxAnimCurve*& keyTimesCurve() { return m_keyTimesCurve; }

    // Smooths the rotation curves, spans the stack over `span` and writes the scene to
    // `fileName` in `format` ("binary", "ascii", any case). False, with the writer's reason in
    // `error`, when the file could not be written.
    bool save(const QString& fileName, const QString& format, const FbxTimeSpan& span,
              QString& error);
    // Destroys the manager and every object it made; the glue prints its success line when
    // `saved`.
    void close(bool saved);

private:
    void createDocumentInfo(const QString& comment);
    void unrollRotations();

    FbxManager* m_manager = nullptr;
    FbxScene* m_scene = nullptr;
    FbxAnimStack* m_stack = nullptr;
    FbxAnimLayer* m_layer = nullptr;
    // The UTF-8 copies of the names spare each frame's lookups a conversion.
    QStringList m_segmentNames;
    std::vector<FbxString> m_nodeNames;
    std::vector<AnimatedSegment> m_segments;  // by segment; made on first use
    FbxAnimCurve* m_keyTimesCurve = nullptr;
    unsigned m_unrollThreads = 1;
};
