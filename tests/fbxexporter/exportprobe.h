#pragma once

#include <array>

#include "fakehost.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbxexporterglobal.h"
#include "fbxexporterlocal.h"

// An exporter of either preset over a fake host, with a look into the scene under way.
template <class Exporter>
class Probe : public Exporter {
public:
    explicit Probe(FakeHost& host) : Exporter(host, &host.settings), m_fake(host) {}

    // initialize() and every frame of the take; the scene stays open until finalize().
    void run(const QString& file = QStringLiteral("/tmp/take.fbx")) {
        if (!this->initialize(file)) return;
        for (int f = m_fake.first; f < static_cast<int>(m_fake.frames.size()); ++f) {
            this->exportFrame(f);
        }
    }
    FbxScene* scene() const { return this->sceneUnderWay().scene(); }
    const QStringList& segmentNames() const { return this->sceneUnderWay().segmentNames(); }
    FbxNode* node(const char* name) const { return scene()->FindNodeByName(name); }
    // Curve "X", "Y" or "Z" of a node's Lcl Translation or Lcl Rotation; null when missing.
    FbxAnimCurve* curve(const char* name, bool translation, const char* channel) const {
        FbxNode* n = node(name);
        FbxPropertyT<FbxDouble3>& p = translation ? n->LclTranslation : n->LclRotation;
        return p.GetCurve(this->sceneUnderWay().layer(), p.GetName().Buffer(), channel, false);
    }
    int keyCount(const char* name, bool translation = false) const {
        FbxAnimCurve* c = curve(name, translation, "X");
        return c ? c->KeyGetCount() : -1;
    }
    // The last X, Y and Z keys of a node's translation or rotation.
    std::array<float, 3> lastKeys(const char* name, bool translation) const {
        std::array<float, 3> keys{};
        for (int a = 0; a < 3; ++a) {
            FbxAnimCurve* c = curve(name, translation, std::array{"X", "Y", "Z"}[a]);
            keys[a] = c->KeyGetValue(c->KeyGetCount() - 1);
        }
        return keys;
    }

private:
    FakeHost& m_fake;
};

using LocalProbe = Probe<FbxExporterLocal>;
using GlobalProbe = Probe<FbxExporterGlobal>;
