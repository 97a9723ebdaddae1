#include "fbx/scene/fbxanimcurvenode.h"

#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

FBX_IMPLEMENT_CLASS(FbxAnimCurveNode, "AnimationCurveNode", "AnimCurveNode", true)

FbxAnimCurveNode::FbxAnimCurveNode(FbxManager& manager, const char* name)
    : FbxObject(manager, name) {
    Channels = FbxProperty::Create(this, FbxCompoundDT, "d");
}

namespace {

// File readers recognise the local transforms by these short names.
const char* CurveNodeName(const FbxProperty& property) {
    const FbxString& name = property.GetName();
    if (name == "Lcl Translation") {
        return "T";
    }
    if (name == "Lcl Rotation") {
        return "R";
    }
    if (name == "Lcl Scaling") {
        return "S";
    }
    return nullptr;
}

// Channel names are a letter or two and are looked up for every key the
// exporter adds: a plain loop beats measuring and comparing them through the
// C library.
bool IsNamed(const FbxString& channel, const char* name) {
    const size_t size = channel.size();
    size_t i = 0;
    while (i < size && name[i] != '\0' && channel[i] == name[i]) {
        ++i;
    }
    return i == size && name[i] == '\0';
}

}  // namespace

FbxAnimCurveNode* FbxAnimCurveNode::CreateTypedCurveNode(const FbxProperty& property,
                                                         FbxScene* scene) {
    if (!property.IsValid()) {
        return nullptr;
    }
    const EFbxType type = property.GetPropertyDataType().GetType();
    const bool isVector = type == eFbxDouble3 || type == eFbxDouble4;
    const bool isNumber = type == eFbxBool || type == eFbxInt || type == eFbxEnum ||
                          type == eFbxFloat || type == eFbxDouble || type == eFbxLongLong ||
                          type == eFbxULongLong;
    if (!isVector && !isNumber) {
        return nullptr;
    }
    const char* shortName = CurveNodeName(property);
    const FbxString name = shortName ? FbxString(shortName) : property.GetName();
    FbxAnimCurveNode* node = scene ? Create(scene, name.Buffer())
                                   : Create(property.GetFbxObject()->GetManager(), name.Buffer());
    if (type == eFbxDouble3) {
        const FbxDouble3 v = property.Get<FbxDouble3>();
        node->AddChannel("X", v[0]);
        node->AddChannel("Y", v[1]);
        node->AddChannel("Z", v[2]);
    } else if (type == eFbxDouble4) {
        const FbxDouble4 v = property.Get<FbxDouble4>();
        node->AddChannel("X", v[0]);
        node->AddChannel("Y", v[1]);
        node->AddChannel("Z", v[2]);
        node->AddChannel("W", v[3]);
    } else {
        node->AddChannel(name.Buffer(), property.Get<double>());
    }
    return node;
}

bool FbxAnimCurveNode::AddChannel(const char* name, double value) {
    FbxProperty channel =
        FbxProperty::Create(Channels, FbxDoubleDT, name, FbxPropertyFlags::eAnimatable);
    return channel.IsValid() && channel.Set(value);
}

// Names are compared in place, without copies.
int FbxAnimCurveNode::GetChannelIndex(const char* name) const {
    if (!name || !Channels.IsValid()) {
        return -1;
    }
    const std::vector<FbxPropertyData*>& channels = Channels.GetData()->mChildren;
    for (size_t i = 0; i < channels.size(); ++i) {
        if (IsNamed(channels[i]->mName, name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

FbxString FbxAnimCurveNode::GetChannelName(int channel) const {
    return Channels.GetChild(channel).GetName();
}

double FbxAnimCurveNode::GetChannelValue(int channel, double defaultValue) const {
    FbxProperty p = Channels.GetChild(channel);
    return p.IsValid() ? p.Get<double>() : defaultValue;
}

bool FbxAnimCurveNode::SetChannelValue(int channel, double value) {
    return Channels.GetChild(channel).Set(value);
}

bool FbxAnimCurveNode::ConnectToChannel(FbxAnimCurve* curve, int channel) {
    FbxProperty p = Channels.GetChild(channel);
    return curve && p.IsValid() && curve->ConnectDstProperty(p);
}

bool FbxAnimCurveNode::ConnectToChannel(FbxAnimCurve* curve, const char* channel) {
    return ConnectToChannel(curve, GetChannelIndex(channel));
}

int FbxAnimCurveNode::GetCurveCount(int channel) const {
    return Channels.GetChild(channel).GetSrcObjectCount<FbxAnimCurve>();
}

FbxAnimCurve* FbxAnimCurveNode::GetCurve(int channel, int index) const {
    return Channels.GetChild(channel).GetSrcObject<FbxAnimCurve>(index);
}

FbxAnimCurve* FbxAnimCurveNode::CreateCurve(int channel) {
    if (!Channels.GetChild(channel).IsValid()) {
        return nullptr;
    }
    FbxAnimCurve* curve =
        GetScene() ? FbxAnimCurve::Create(GetScene(), "") : FbxAnimCurve::Create(GetManager(), "");
    ConnectToChannel(curve, channel);
    return curve;
}

bool FbxAnimCurveNode::IsAnimated() const {
    for (int i = 0; i < GetChannelsCount(); ++i) {
        if (GetCurve(i)) {
            return true;
        }
    }
    return false;
}
