#pragma once

#include "fbx/scene/fbxobject.h"

class FbxAnimCurve;
class FbxScene;

// Animates one property on one layer. Its channels are the children of its
// compound property "d": "d|X", "d|Y", "d|Z" for a three-double property, or
// "d|<property name>" for a single number. Each channel holds the animated
// property's value at the time the node was made and may have curves
// connected (curve -> channel property). Named "T", "R", "S" for the local
// translation, rotation and scaling, otherwise after the property.
// Connections: curve node -> layer, curve node -> animated property.
class FbxAnimCurveNode : public FbxObject {
    FBX_DECLARE_CLASS(FbxAnimCurveNode, FbxObject)

public:
    FbxProperty Channels;  // the compound "d"

    // A curve node for property, member of scene, with one channel per component
    // of the property's value. Not connected to a layer or to the property.
    static FbxAnimCurveNode* CreateTypedCurveNode(const FbxProperty& property, FbxScene* scene);

    // Adds channel "d|name" holding value; false when it exists.
    bool AddChannel(const char* name, double value);
    int GetChannelsCount() const { return Channels.GetChildCount(); }
    // Channel by index or by name ("X"); -1 when missing.
    int GetChannelIndex(const char* name) const;
    FbxString GetChannelName(int channel) const;
    FbxProperty GetChannel(int channel) const { return Channels.GetChild(channel); }
    double GetChannelValue(int channel, double defaultValue = 0.0) const;
    bool SetChannelValue(int channel, double value);

    bool ConnectToChannel(FbxAnimCurve* curve, int channel);
    bool ConnectToChannel(FbxAnimCurve* curve, const char* channel);
    int GetCurveCount(int channel) const;
    FbxAnimCurve* GetCurve(int channel, int index = 0) const;
    // Makes a curve in the node's scene and connects it to channel.
    FbxAnimCurve* CreateCurve(int channel);
    bool IsAnimated() const;

protected:
    FbxAnimCurveNode(FbxManager& manager, const char* name);
};
