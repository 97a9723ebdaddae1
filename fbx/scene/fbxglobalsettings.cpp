#include "fbx/scene/fbxglobalsettings.h"

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxGlobalSettings, "GlobalSettings", "GlobalSettings", false)

namespace {

void AddEnumValues(FbxProperty& property, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        property.AddEnumValue(name);
    }
}

}  // namespace

FbxGlobalSettings::FbxGlobalSettings(FbxManager& manager, const char* name)
    : FbxObject(manager, name) {
    // Y up, Z front, X as the third axis: a right-handed Y-up system in centimetres.
    UpAxis = AddProperty("UpAxis", FbxIntDT, 1);
    UpAxisSign = AddProperty("UpAxisSign", FbxIntDT, 1);
    FrontAxis = AddProperty("FrontAxis", FbxIntDT, 2);
    FrontAxisSign = AddProperty("FrontAxisSign", FbxIntDT, 1);
    CoordAxis = AddProperty("CoordAxis", FbxIntDT, 0);
    CoordAxisSign = AddProperty("CoordAxisSign", FbxIntDT, 1);
    OriginalUpAxis = AddProperty("OriginalUpAxis", FbxIntDT, -1);
    OriginalUpAxisSign = AddProperty("OriginalUpAxisSign", FbxIntDT, 1);
    UnitScaleFactor = AddProperty("UnitScaleFactor", FbxDoubleDT, 1.0);
    OriginalUnitScaleFactor = AddProperty("OriginalUnitScaleFactor", FbxDoubleDT, 1.0);
    AmbientColor = AddProperty("AmbientColor", FbxColor3DT, FbxDouble3(0.0, 0.0, 0.0));
    DefaultCamera = AddProperty("DefaultCamera", FbxStringDT, FbxString("Producer Perspective"));
    TimeMode = AddProperty("TimeMode", FbxEnumDT, FbxTime::eDefaultMode);
    AddEnumValues(TimeMode, {"Default", "Frames120", "Frames100", "Frames60", "Frames50",
                             "Frames48", "Frames30", "Frames30_DROP", "NTSC_DropFrame",
                             "NTSC_FullFrame", "PAL", "Frames24", "Frames1000", "Film_FullFrame",
                             "Custom", "Frames96", "Frames72", "Frames5994", "TimeModeCount"});
    TimeProtocol = AddProperty("TimeProtocol", FbxEnumDT, eDefaultProtocol);
    AddEnumValues(TimeProtocol, {"SMPTE", "FrameCount", "DefaultProtocol"});
    SnapOnFrameMode = AddProperty("SnapOnFrameMode", FbxEnumDT, eNoSnap);
    AddEnumValues(SnapOnFrameMode, {"NoSnap", "SnapOnFrame", "PlayOnFrame", "SnapAndPlayOnFrame"});
    TimeSpanStart = AddProperty("TimeSpanStart", FbxTimeDT, FbxTime(0));
    TimeSpanStop = AddProperty("TimeSpanStop", FbxTimeDT, FbxTime(FBX_TC_SECOND));
    CustomFrameRate = AddProperty("CustomFrameRate", FbxDoubleDT, -1.0);
    TimeMarker = FbxProperty::Create(this, FbxCompoundDT, "TimeMarker");
    CurrentTimeMarker = AddProperty("CurrentTimeMarker", FbxIntDT, -1);
}

void FbxGlobalSettings::SetTimelineDefaultTimeSpan(const FbxTimeSpan& span) {
    TimeSpanStart.Set(span.GetStart());
    TimeSpanStop.Set(span.GetStop());
}

FbxTimeSpan FbxGlobalSettings::GetTimelineDefaultTimeSpan() const {
    return FbxTimeSpan(TimeSpanStart.Get(), TimeSpanStop.Get());
}
