#pragma once

#include "fbx/scene/fbxobject.h"
#include "fbx/scene/fbxtime.h"

// Scene-wide settings: axis system, unit, time mode and timeline. Files write
// every property, in creation order, without a template.
class FbxGlobalSettings : public FbxObject {
    FBX_DECLARE_CLASS(FbxGlobalSettings, FbxObject)

public:
    enum ETimeProtocol { eSMPTE, eFrameCount, eDefaultProtocol };
    enum ESnapOnFrameMode { eNoSnap, eSnapOnFrame, ePlayOnFrame, eSnapAndPlayOnFrame };

    FbxPropertyT<int> UpAxis;
    FbxPropertyT<int> UpAxisSign;
    FbxPropertyT<int> FrontAxis;
    FbxPropertyT<int> FrontAxisSign;
    FbxPropertyT<int> CoordAxis;
    FbxPropertyT<int> CoordAxisSign;
    FbxPropertyT<int> OriginalUpAxis;
    FbxPropertyT<int> OriginalUpAxisSign;
    FbxPropertyT<double> UnitScaleFactor;
    FbxPropertyT<double> OriginalUnitScaleFactor;
    FbxPropertyT<FbxDouble3> AmbientColor;
    FbxPropertyT<FbxString> DefaultCamera;
    FbxPropertyT<FbxTime::EMode> TimeMode;
    FbxPropertyT<ETimeProtocol> TimeProtocol;
    FbxPropertyT<ESnapOnFrameMode> SnapOnFrameMode;
    FbxPropertyT<FbxTime> TimeSpanStart;
    FbxPropertyT<FbxTime> TimeSpanStop;
    FbxPropertyT<double> CustomFrameRate;
    FbxProperty TimeMarker;  // compound
    FbxPropertyT<int> CurrentTimeMarker;

    void SetTimeMode(FbxTime::EMode mode) { TimeMode.Set(mode); }
    FbxTime::EMode GetTimeMode() const { return TimeMode.Get(); }
    // Frames per second used with the custom time mode.
    void SetCustomFrameRate(double rate) { CustomFrameRate.Set(rate); }
    double GetCustomFrameRate() const { return CustomFrameRate.Get(); }
    void SetTimelineDefaultTimeSpan(const FbxTimeSpan& span);
    FbxTimeSpan GetTimelineDefaultTimeSpan() const;

protected:
    FbxGlobalSettings(FbxManager& manager, const char* name);
};
