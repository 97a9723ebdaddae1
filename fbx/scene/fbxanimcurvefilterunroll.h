#pragma once

#include "fbx/scene/fbxanimcurvefilter.h"
#include "fbx/scene/fbxeuler.h"
#include "fbx/scene/fbxtime.h"
#include "fbx/scene/fbxtypes.h"

// Removes Euler flips from the three curves (X, Y, Z, degrees) of a rotation:
// each key's angle triple is replaced by the equivalent triple closest to the
// one before it, so interpolation between keys takes the short way.
//
// Curves keyed at the same times are unrolled where they are: only their own
// keys change, and no scene object is made or destroyed, so the rotations of
// different nodes may be unrolled on different threads at once (each thread
// with its own filter, or sharing one whose settings stay put). Curves keyed
// at different times go through scratch curves made in the scene, which is
// not for threads.
class FbxAnimCurveFilterUnroll : public FbxAnimCurveFilter {
public:
    FbxAnimCurveFilterUnroll();

    const char* GetName() const override { return "Unroll"; }
    // Back to the defaults: whole time range, tolerance 0.25, no path test, no
    // forced auto tangents, XYZ order, plain replacement.
    void Reset() override;

    void SetQualityTolerance(double tolerance) { mQualityTolerance = tolerance; }
    double GetQualityTolerance() const { return mQualityTolerance; }
    // With the path test on, the walk stops at the first key whose rotation
    // from the previous one is poorly represented by interpolating the angles.
    void SetTestForPath(bool test) { mTestForPath = test; }
    bool GetTestForPath() const { return mTestForPath; }
    // Flipped cubic keys with user tangents become auto keys.
    void SetForceAutoTangents(bool force) { mForceAutoTangents = force; }
    bool GetForceAutoTangents() const { return mForceAutoTangents; }
    void SetRotationOrder(FbxEuler::EOrder order) { mRotationOrder = order; }
    FbxEuler::EOrder GetRotationOrder() const { return mRotationOrder; }
    // 2 selects the replacement that keeps keys after the span continuous.
    void SetReplaceMode(int mode) { mReplaceMode = mode; }
    int GetReplaceMode() const { return mReplaceMode; }

    // Fails, leaving the curves unchanged, with "Number of animation curves is
    // not 3", "Not enough animation curves found", "No keys" or "No key to be
    // filtered".
    bool Apply(FbxAnimCurve** curves, int count, FbxStatus* status = nullptr) override;
    using FbxAnimCurveFilter::Apply;
    // Whether Apply would change a key value; false where Apply would fail.
    bool NeedApply(FbxAnimCurve** curves, int count, FbxStatus* status = nullptr);
    bool NeedApply(FbxAnimCurveNode& node, FbxStatus* status = nullptr);
    bool NeedApply(FbxAnimCurve& curve, FbxStatus* status = nullptr);
    // Whether Apply would change a key of a rotation curve node on the stack's
    // layers (of one animating a property of object).
    bool NeedApply(FbxAnimStack& stack, FbxStatus* status = nullptr);
    bool NeedApply(FbxObject& object, FbxAnimStack& stack, FbxStatus* status = nullptr);

    // The triple equivalent to in (degrees) closest to ref for order; true when
    // the flipped solution was taken. The spheric order copies in.
    static bool V2VRef(FbxDouble3& out, const FbxDouble3& in, const FbxDouble3& ref,
                       FbxEuler::EOrder order);
    // How well angle interpolation from a to b follows the rotation between
    // them: the squared rotation angle over the squared angle distance; 100
    // for equal triples.
    static double InterpolationQualityFactor(const FbxVector4& a, const FbxVector4& b,
                                             FbxEuler::EOrder order = FbxEuler::eOrderXYZ);

protected:
    // Only rotation curve nodes hold Euler angles.
    bool Treats(const FbxAnimCurveNode& node) const override;

private:
    // Validates the curves and finds the span of keys to treat.
    bool Check(FbxAnimCurve** curves, int count, FbxStatus* status, FbxTimeSpan& span) const;
    bool Run(FbxAnimCurve** curves, int count, FbxStatus* status, bool commit, bool& changed);
    // Curves keyed at the same times are unrolled where they are, without copies.
    void RunInPlace(FbxAnimCurve** curves, const FbxTimeSpan& span, int first, int last,
                    bool commit, bool& changed) const;
    // Walks keys first..last, rewriting them when write is set; true when a value changes.
    bool Walk(FbxAnimCurve** curves, int first, int last, bool write) const;
    // Unrolls key index from ref and makes it the next ref; false when the path test stops
    // the walk there.
    bool Step(FbxAnimCurve** curves, int index, bool write, FbxDouble3& ref, bool& changed) const;
    static void ForceAutoTangent(FbxAnimCurve& curve, int index);
    void ReplaceSpan(FbxAnimCurve& curve, const FbxAnimCurve& unrolled,
                     const FbxTimeSpan& span) const;
    // Replace mode 2: the keys after span move by the whole turns the value at the span's
    // end moved from before.
    static void ShiftAfterSpan(FbxAnimCurve& curve, const FbxTimeSpan& span, float before);

    double mQualityTolerance;
    bool mTestForPath;
    bool mForceAutoTangents;
    FbxEuler::EOrder mRotationOrder;
    int mReplaceMode;
};
