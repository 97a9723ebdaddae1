#include "fbx/scene/fbxanimcurve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <initializer_list>
#include <limits>
#include <vector>

#include "fbx/scene/fbxanimcurvefilterkeysync.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxnode.h"
#include "tests/fbx/scene/scenetest.h"

namespace {

class FbxAnimCurveTest : public SceneTest {
protected:
    // Keys at the given times with the time as value.
    FbxAnimCurve* CurveWith(const std::vector<FbxLongLong>& times) {
        FbxAnimCurve* curve = FbxAnimCurve::Create(mScene, "");
        for (FbxLongLong t : times) {
            const int key = curve->KeyAdd(FbxTime(t));
            curve->KeySetValue(key, static_cast<float>(t));
        }
        return curve;
    }
    static std::vector<FbxLongLong> Times(const FbxAnimCurve& curve) {
        std::vector<FbxLongLong> times(curve.KeyGetCount());
        curve.KeyGetRange(0, curve.KeyGetCount(), times.data(), nullptr, nullptr);
        return times;
    }
};

TEST_F(FbxAnimCurveTest, KeyAddAppendsAndResetsInPlace) {
    FbxAnimCurve* curve = CurveWith({10, 20, 30});
    int last = -1;
    EXPECT_EQ(curve->KeyAdd(FbxTime(40), &last), 3);
    EXPECT_EQ(last, 3);

    // A key at an existing time is reset in place.
    curve->KeySetInterpolation(1, FbxAnimCurveDef::eInterpolationConstant);
    EXPECT_EQ(curve->KeyAdd(FbxTime(20)), 1);
    EXPECT_EQ(curve->KeyGetCount(), 4);
    EXPECT_FLOAT_EQ(curve->KeyGetValue(1), 0.0f);
    EXPECT_EQ(curve->KeyGetFlags(1), 0x2108u);

    // Past the end: setters are ignored, getters read the placeholder.
    curve->KeySetValue(4, 99.0f);
    EXPECT_FLOAT_EQ(curve->KeyGetValue(4), 0.0f);
    EXPECT_EQ(curve->KeyGetTime(-1).Get(), 0);
}

// Every key as the curve reports it: time, value and whole attribute.
struct KeyView {
    FbxLongLong time;
    float value;
    FbxAnimCurveKeyAttribute attribute;
    bool operator==(const KeyView&) const = default;
};

std::vector<KeyView> Keys(const FbxAnimCurve& curve) {
    std::vector<KeyView> keys;
    for (int i = 0; i < curve.KeyGetCount(); ++i) {
        keys.push_back({curve.KeyGetTime(i).Get(), curve.KeyGetValue(i), curve.KeyGetAttribute(i)});
    }
    return keys;
}

// Keys read back the same whichever compact form their times, slopes and attributes take, and
// whichever edit moves them from one form to another.
TEST_F(FbxAnimCurveTest, KeysSurviveEveryStorageForm) {
    FbxAnimCurve* curve = CurveWith({100, 200, 300, 400, 500});
    std::vector<KeyView> expected = Keys(*curve);
    const auto check = [&](const char* step) {
        SCOPED_TRACE(step);
        ASSERT_EQ(Keys(*curve), expected);
        FbxAnimCurve* copy = FbxAnimCurve::Create(mScene, "");
        copy->CopyFrom(*curve);
        EXPECT_EQ(Keys(*copy), expected);
    };
    check("even");

    // Removing at either end keeps the spacing; the first key moves.
    curve->KeyRemove(0);
    curve->KeyRemove(3);
    expected.erase(expected.begin());
    expected.pop_back();
    check("trimmed");
    curve->KeyRemove(1);
    expected.erase(expected.begin() + 1);
    check("gap");
    EXPECT_EQ(curve->KeyAdd(FbxTime(300)), 1);
    expected.insert(expected.begin() + 1, {300, 0.0f, FbxAnimCurveKeyAttribute{}});
    EXPECT_EQ(curve->KeyAdd(FbxTime(450)), 3);
    expected.push_back({450, 0.0f, FbxAnimCurveKeyAttribute{}});
    check("refilled");

    // Slopes, -0 included, and more distinct attributes than a byte can name.
    curve->KeySetRightDerivative(0, -0.0f);
    curve->KeySetLeftDerivative(2, 1.5f);
    expected[0].attribute.mData[0] = 0x80000000u;
    expected[1].attribute.mData[1] = std::bit_cast<FbxUInt32>(1.5f);
    check("slopes");
    for (int i = 0; i < 300; ++i) {
        const int key = curve->KeyAdd(FbxTime(1000 + i));
        FbxAnimCurveKeyAttribute attribute;
        attribute.mData[2] = static_cast<FbxUInt32>(i);
        curve->KeySetAttribute(key, attribute);
        expected.push_back({1000 + i, 0.0f, attribute});
    }
    check("many attributes");

    curve->KeySet(0, FbxTime(150), 7.0f);
    expected[0].time = 150;
    expected[0].value = 7.0f;
    expected[0].attribute.mFlags = FbxAnimCurveDef::kDefaultKeyFlags & ~0x2000u;
    check("moved");

    // The span's keys come from the source, attributes and all; the keys around it stay.
    FbxAnimCurve* source = CurveWith({250, 300, 350, 400, 2000});
    source->KeySetInterpolation(2, FbxAnimCurveDef::eInterpolationLinear);
    curve->Replace(*source, FbxTime(300), FbxTime(450));
    expected.erase(expected.begin() + 1, expected.begin() + 4);
    expected.insert(expected.begin() + 1, {{300, 300.0f, source->KeyGetAttribute(1)},
                                           {350, 350.0f, source->KeyGetAttribute(2)},
                                           {400, 400.0f, source->KeyGetAttribute(3)}});
    check("replaced");

    curve->KeyClear();
    expected.clear();
    check("cleared");
}

// Key 0 given 300 attributes in turn: more shared entries than a byte can name.
void ManyAttributes(FbxAnimCurve* curve) {
    for (int i = 0; i < 300; ++i) {
        FbxAnimCurveKeyAttribute attribute;
        attribute.mData[3] = static_cast<FbxUInt32>(i);
        curve->KeySetAttribute(0, attribute);
    }
}

// The exporter's bracketed key, at whatever time, must come out as the plain model of a
// curve has it: a default key put in time order (or over the key at that time) with the
// value and linear interpolation, every other key untouched, and one notification.
TEST_F(FbxAnimCurveTest, TakeKeysLandAsThePlainModelHasThem) {
    constexpr FbxLongLong kMax = std::numeric_limits<FbxLongLong>::max();
    constexpr FbxLongLong kMin = std::numeric_limits<FbxLongLong>::min();
    const struct {
        const char* name;
        std::vector<FbxLongLong> times;
        void (*prepare)(FbxAnimCurve*);
        std::vector<FbxLongLong> keyed;
    } rows[] = {
        {"empty", {}, nullptr, {0, 10, 20, 30}},
        {"even", {0, 10, 20}, nullptr, {30, 40}},
        {"gap", {0, 10, 20}, nullptr, {40, 50}},
        {"again at the end", {0, 10, 20}, nullptr, {20, 30}},
        {"before", {0, 10, 20}, nullptr, {5, -10, 30}},
        // Listed times, the first keys evenly spaced, a removed key's time left behind.
        {"uneven", {0, 10, 25, 99}, [](FbxAnimCurve* c) { c->KeyRemove(3); }, {30, 45}},
        // A slope column, and a removed key's slope that must not come back with a new key.
        {"slopes",
         {0, 10, 20},
         [](FbxAnimCurve* c) {
             c->KeySetRightDerivative(1, -0.0f);
             c->KeySetRightDerivative(2, 7.0f);
             c->KeyRemove(2);
         },
         {20, 30}},
        {"many attributes", {0, 10, 20}, ManyAttributes, {30, 40}},
        // The entry column widened behind keys once switched; what it held must not count.
        {"switched, then many attributes",
         {0, 10, 20, 30, 40},
         [](FbxAnimCurve* c) {
             c->KeySetInterpolation(2, FbxAnimCurveDef::eInterpolationLinear);
             c->KeyRemove(3, 4);
             ManyAttributes(c);
         },
         {30, 40}},
        {"constant last",
         {0, 10, 20},
         [](FbxAnimCurve* c) {
             c->KeySetInterpolation(2, FbxAnimCurveDef::eInterpolationConstant);
         },
         {30, 40}},
        // Entries past a byte remain after a clear; keys switched to one must still read it.
        {"cleared after many attributes",
         {0},
         [](FbxAnimCurve* c) {
             ManyAttributes(c);
             c->KeySetAttribute(0, FbxAnimCurveKeyAttribute{});
             c->KeySetInterpolation(0, FbxAnimCurveDef::eInterpolationLinear);
             c->KeyClear();
         },
         {0, 10, 20, 30}},
        // The next even step wraps past the largest time: it is the earliest time then.
        {"wrapping steps", {kMax - 10, kMax - 5, kMax}, nullptr, {kMin + 4}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FbxAnimCurve* curve = CurveWith(row.times);
        if (row.prepare) row.prepare(curve);
        std::vector<unsigned> received;
        curve->SetChangeListener(
            [&](FbxAnimCurve&, unsigned changes) { received.push_back(changes); });
        std::vector<KeyView> expected = Keys(*curve);
        for (size_t k = 0; k < row.keyed.size(); ++k) {
            const FbxLongLong time = row.keyed[k];
            const float value = 0.5f + static_cast<float>(k);
            KeyView key{time, value, {}};
            key.attribute.mFlags = 0x2104u;
            const auto at =
                std::lower_bound(expected.begin(), expected.end(), time,
                                 [](const KeyView& view, FbxLongLong t) { return view.time < t; });
            const auto index = at - expected.begin();
            if (at != expected.end() && at->time == time) {
                *at = key;
            } else {
                expected.insert(at, key);
            }
            EXPECT_EQ(KeyAsTaken(*curve, time, value), index);
            ASSERT_EQ(Keys(*curve), expected) << "after keying " << time;
        }
        EXPECT_EQ(received.size(), row.keyed.size());
        for (unsigned changes : received) {
            EXPECT_EQ(
                changes & (FbxAnimCurve::eKeyValueChanged | FbxAnimCurve::eKeyAttributeChanged),
                FbxAnimCurve::eKeyValueChanged | FbxAnimCurve::eKeyAttributeChanged);
        }
    }
}

// A take keyed frame by frame, linear keys, costs its values and a byte per key.
TEST_F(FbxAnimCurveTest, EvenlyKeyedTakeCostsFiveBytesPerKey) {
    FbxAnimCurve* curve = FbxAnimCurve::Create(mScene, "");
    curve->ResizeKeyBuffer(10000);
    for (int i = 0; i < 10000; ++i) {
        const int key = curve->KeyAdd(FbxTime(i * 192442325LL));
        curve->KeySetValue(key, static_cast<float>(i));
        curve->KeySetInterpolation(key, FbxAnimCurveDef::eInterpolationLinear);
    }
    EXPECT_LT(curve->GetKeyMemoryUsage(), 10000u * 5 + 512);
    EXPECT_EQ(curve->KeyGetTime(9999).Get(), 9999 * 192442325LL);
}

TEST_F(FbxAnimCurveTest, ModifyBracketHoldsNotificationsBack) {
    FbxAnimCurve* curve = CurveWith({});
    std::vector<unsigned> received;
    curve->SetChangeListener([&](FbxAnimCurve&, unsigned changes) { received.push_back(changes); });
    curve->KeyModifyBegin();
    curve->KeyModifyBegin();
    curve->KeyAdd(FbxTime(1));
    curve->KeySetValue(0, 1.0f);
    curve->KeyModifyEnd();
    EXPECT_TRUE(received.empty());
    curve->KeyModifyEnd();
    EXPECT_EQ(received,
              std::vector<unsigned>{FbxAnimCurve::eKeyAdded | FbxAnimCurve::eKeyValueChanged});
    curve->KeyModifyEnd();
    curve->KeySetValue(0, 2.0f);
    EXPECT_EQ(received.back(), unsigned{FbxAnimCurve::eKeyValueChanged});
}

TEST_F(FbxAnimCurveTest, FindAndEvaluate) {
    FbxAnimCurve* curve = CurveWith({100, 200, 400});
    EXPECT_DOUBLE_EQ(curve->KeyFind(FbxTime(300)), 1.5);
    EXPECT_DOUBLE_EQ(curve->KeyFind(FbxTime(900)), 2.0);
    for (int k = 0; k < 3; ++k) {
        curve->KeySetInterpolation(k, FbxAnimCurveDef::eInterpolationLinear);
    }
    EXPECT_FLOAT_EQ(curve->Evaluate(FbxTime(300)), 300.0f);
    EXPECT_FLOAT_EQ(curve->Evaluate(FbxTime(50)), 100.0f);
    curve->KeySetFlags(1, FbxAnimCurveDef::eInterpolationConstant);
    EXPECT_FLOAT_EQ(curve->Evaluate(FbxTime(399)), 200.0f);
    curve->KeySetFlags(1, FbxUInt32{FbxAnimCurveDef::eInterpolationConstant} |
                              FbxUInt32{FbxAnimCurveDef::eConstantNext});
    EXPECT_FLOAT_EQ(curve->Evaluate(FbxTime(201)), 400.0f);
    EXPECT_DOUBLE_EQ(CurveWith({})->KeyFind(FbxTime(0)), -1.0);
}

TEST_F(FbxAnimCurveTest, PropertyCurveLookupRules) {
    FbxNode* node = FbxNode::Create(mScene, "node");
    FbxAnimLayer* layer = FbxAnimLayer::Create(mScene, "layer");
    node->LclTranslation.Set(FbxDouble3(2, 0, -1));
    // No layer, no curve node name, no property, or not asked to create: nothing is made.
    EXPECT_EQ(node->LclTranslation.GetCurve(nullptr, "Lcl Translation", "X", true), nullptr);
    EXPECT_EQ(node->LclTranslation.GetCurve(layer, "", "X", true), nullptr);
    EXPECT_EQ(node->LclTranslation.GetCurve(layer, nullptr, "X", true), nullptr);
    EXPECT_EQ(FbxProperty().GetCurve(layer, "x", "X", true), nullptr);
    EXPECT_EQ(node->LclTranslation.GetCurve(layer, "Lcl Translation", "X"), nullptr);
    EXPECT_FALSE(node->LclTranslation.GetFlag(FbxPropertyFlags::eAnimated));

    // An unknown channel still leaves the curve node made.
    EXPECT_EQ(node->LclTranslation.GetCurve(layer, "Lcl Translation", "W", true), nullptr);
    FbxAnimCurveNode* curveNode = node->LclTranslation.GetCurveNode(layer);
    ASSERT_NE(curveNode, nullptr);
    EXPECT_TRUE(node->LclTranslation.GetFlag(FbxPropertyFlags::eAnimated));
    EXPECT_STREQ(curveNode->GetName(), "T");
    EXPECT_EQ(curveNode->GetChannelIndex("Z"), 2);
    for (const char* unknown : {"XY", "", "x", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(curveNode->GetChannelIndex(unknown), -1);
    }
    EXPECT_EQ(curveNode->GetChannel(0).GetHierarchicalName(), "d|X");
    EXPECT_DOUBLE_EQ(curveNode->GetChannelValue(2), -1.0);
    EXPECT_FALSE(curveNode->IsAnimated());

    FbxAnimCurve* z = node->LclTranslation.GetCurve(layer, "Lcl Translation", "Z", true);
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(node->LclTranslation.GetCurve(layer, "Lcl Translation", "Z"), z);
    EXPECT_EQ(node->LclTranslation.GetCurveNode(layer, true), curveNode);
    EXPECT_EQ(layer->GetMemberCount(), 1);
    EXPECT_STREQ(node->Visibility.GetCurveNode(layer, true)->GetName(), "Visibility");
    EXPECT_EQ(node->Show.GetCurveNode(layer, true), nullptr);
}

// Key after key switched the same way, then switched otherwise, each key keeps its own flags
// and slopes; a copy takes over the source's attributes and keeps doing so.
TEST_F(FbxAnimCurveTest, RepeatedFlagChangesStayPerKey) {
    FbxAnimCurve* curve = CurveWith({0, 10, 20, 30});
    const FbxAnimCurveKeyAttribute fresh = curve->KeyGetAttribute(0);
    EXPECT_EQ(fresh.mFlags, 0x2108u);
    EXPECT_EQ(fresh.mData[2], 0x0D050D05u);
    EXPECT_EQ(fresh.mData[0] | fresh.mData[1] | fresh.mData[3], 0u);
    for (int key : {0, 1, 3}) {
        curve->KeySetInterpolation(key, FbxAnimCurveDef::eInterpolationLinear);
    }
    curve->KeySetTangentMode(2, FbxAnimCurveDef::eTangentUser);
    curve->KeySetInterpolation(1, FbxAnimCurveDef::eInterpolationConstant);
    EXPECT_EQ(curve->KeyGetFlags(0), 0x2104u);
    EXPECT_EQ(curve->KeyGetFlags(1), 0x2102u);
    EXPECT_EQ(curve->KeyGetFlags(2), 0x0408u);
    EXPECT_EQ(curve->KeyGetFlags(3), 0x2104u);
    curve->KeySetInterpolation(1, FbxAnimCurveDef::eInterpolationLinear);
    EXPECT_TRUE(curve->KeyGetAttribute(1) == curve->KeyGetAttribute(0));
    // A key's right slope and the next key's left slope live in the key's data.
    curve->KeySetRightDerivative(1, 2.5f);
    curve->KeySetLeftDerivative(2, -1.0f);
    EXPECT_FLOAT_EQ(curve->KeyGetAttribute(1).GetDataFloat(0), 2.5f);
    EXPECT_FLOAT_EQ(curve->KeyGetAttribute(1).GetDataFloat(1), -1.0f);
    EXPECT_FLOAT_EQ(curve->KeyGetLeftDerivative(2), -1.0f);
    EXPECT_EQ(curve->KeyGetAttribute(0).mData[0], 0u);

    FbxAnimCurve* copy = CurveWith({0});
    copy->KeySetInterpolation(0, FbxAnimCurveDef::eInterpolationConstant);
    copy->CopyFrom(*curve);
    EXPECT_EQ(Times(*copy), Times(*curve));
    EXPECT_FLOAT_EQ(copy->KeyGetValue(3), 30.0f);
    const int added = copy->KeyAdd(FbxTime(40));
    EXPECT_EQ(copy->KeyGetFlags(added), 0x2108u);
    copy->KeySetInterpolation(added, FbxAnimCurveDef::eInterpolationConstant);
    EXPECT_EQ(copy->KeyGetFlags(added), 0x2102u);
    EXPECT_EQ(copy->KeyGetFlags(1), 0x2104u);
}

TEST_F(FbxAnimCurveTest, KeySyncMergesInterleavedKeys) {
    FbxAnimCurve* a = CurveWith({0, 20, 40});
    FbxAnimCurve* b = CurveWith({10, 30});
    for (int k = 0; k < 3; ++k) {
        a->KeySetInterpolation(k, FbxAnimCurveDef::eInterpolationLinear);
    }
    a->KeySetRightDerivative(1, 2.5f);
    b->KeySetFlags(0, FbxAnimCurveDef::eInterpolationConstant);
    FbxAnimCurve* curves[] = {a, b};
    ASSERT_TRUE(FbxAnimCurveFilterKeySync().Apply(curves, 2));
    const std::vector<FbxLongLong> all = {0, 10, 20, 30, 40};
    EXPECT_EQ(Times(*a), all);
    EXPECT_EQ(Times(*b), all);
    // An added key takes the curve's value there and the interpolation of the
    // key before it (of the first key when it comes first); kept keys keep theirs.
    EXPECT_FLOAT_EQ(a->KeyGetValue(1), 10.0f);
    EXPECT_EQ(a->KeyGetFlags(1), 0x2104u);
    EXPECT_FLOAT_EQ(a->KeyGetRightDerivative(2), 2.5f);
    EXPECT_EQ(b->KeyGetFlags(0), 0x2102u);
    EXPECT_EQ(b->KeyGetFlags(4), 0x2108u);
}

// A moved key stays between its neighbours: a time that would reorder or merge keys is
// refused and changes nothing; an accepted one is found where it was put.
TEST_F(FbxAnimCurveTest, KeySetKeepsKeysStrictlyIncreasing) {
    const struct {
        std::vector<FbxLongLong> times;
        int index;
        FbxLongLong to;
        bool accepted;
    } rows[] = {
        {{10, 20, 30}, 0, 40, false},  // past its neighbour
        {{10, 20, 30}, 0, 20, false},  // onto its neighbour
        {{10, 20, 30}, 2, 5, false},  {{10, 20, 30}, 1, 10, false},
        {{10, 20, 30}, 1, 30, false}, {{10, 20, 30}, 3, 40, false},  // no such key
        {{10, 20, 30}, -1, 0, false}, {{10, 20, 30}, 0, -5, true},   // the ends may move outwards
        {{10, 20, 30}, 2, 99, true},  {{10, 20, 30}, 1, 11, true},
        {{10, 20, 30}, 1, 20, true},  // its own time
        {{10}, 0, -7, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "key " << row.index << " to " << row.to);
        FbxAnimCurve* curve = CurveWith(row.times);
        std::vector<FbxLongLong> expected = row.times;
        if (row.accepted) {
            expected[static_cast<size_t>(row.index)] = row.to;
        }
        EXPECT_EQ(curve->KeySet(row.index, FbxTime(row.to), 5.0f), row.accepted);
        EXPECT_EQ(Times(*curve), expected);
        for (size_t k = 0; k < expected.size(); ++k) {
            EXPECT_EQ(curve->KeyIndexAt(FbxTime(expected[k])), static_cast<int>(k));
            EXPECT_DOUBLE_EQ(curve->KeyFind(FbxTime(expected[k])), static_cast<double>(k));
        }
        if (row.accepted) {
            EXPECT_FLOAT_EQ(curve->KeyGetValue(row.index), 5.0f);
            EXPECT_FLOAT_EQ(curve->Evaluate(FbxTime(row.to)), 5.0f);
        }
    }
}

// Cubic keys follow Hermite curves: auto tangents take the slope between the neighbours (flat
// at the ends), user and broken tangents their stored slopes, in value per second. Each time
// is asked twice, in opposite orders, so a stale search position shows.
TEST_F(FbxAnimCurveTest, CubicEvaluationFollowsTheTangents) {
    const auto curveOf = [&](const std::vector<std::pair<double, float>>& keys) {
        FbxAnimCurve* curve = FbxAnimCurve::Create(mScene, "");
        for (const auto& [seconds, value] : keys) {
            FbxTime time;
            time.SetSecondDouble(seconds);
            curve->KeySetValue(curve->KeyAdd(time), value);
        }
        return curve;
    };
    FbxAnimCurve* line = curveOf({{0, 0}, {1, 1}, {2, 2}, {3, 3}});
    FbxAnimCurve* uneven = curveOf({{0, 0}, {1, 1}, {3, 3}});
    FbxAnimCurve* user = curveOf({{0, 0}, {2, 1}});
    user->KeySetTangentMode(0, FbxAnimCurveDef::eTangentUser);
    user->KeySetRightDerivative(0, 2.0f);
    FbxAnimCurve* broken = curveOf({{0, 0}, {1, 1}, {2, 0}});
    broken->KeySetTangentMode(1, FbxAnimCurveDef::eTangentBreak);
    broken->KeySetLeftDerivative(1, 4.0f);
    broken->KeySetRightDerivative(1, -4.0f);
    const struct {
        FbxAnimCurve* curve;
        double seconds;
        float value;
    } rows[] = {
        {line, 1.5, 1.5f},     {line, 0.5, 0.375f}, {line, 2.5, 2.625f},  {line, 1.0, 1.0f},
        {line, -1.0, 0.0f},    {line, 9.0, 3.0f},   {uneven, 2.0, 2.25f}, {user, 1.0, 1.0f},
        {user, 0.5, 0.71875f}, {broken, 0.5, 0.0f}, {broken, 1.5, 0.0f},
    };
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t i = 0; i < std::size(rows); ++i) {
            const auto& row = rows[pass == 0 ? i : std::size(rows) - 1 - i];
            FbxTime time;
            time.SetSecondDouble(row.seconds);
            EXPECT_NEAR(row.curve->Evaluate(time), row.value, 1e-6) << "at " << row.seconds;
        }
    }
}

// The queries a curve answers besides its keys: span, tangent mode, default value, bracket.
TEST_F(FbxAnimCurveTest, SmallQueries) {
    FbxAnimCurve* curve = CurveWith({});
    FbxTimeSpan span(FbxTime(1), FbxTime(2));
    EXPECT_FALSE(curve->GetTimeInterval(span));
    curve->SetDefaultValue(4.5f);
    EXPECT_FLOAT_EQ(curve->GetDefaultValue(), 4.5f);
    EXPECT_FLOAT_EQ(curve->Evaluate(FbxTime(3)), 4.5f);
    EXPECT_EQ(curve->KeyIndexAt(FbxTime(0)), -1);

    curve = CurveWith({-30, 10, 70});
    ASSERT_TRUE(curve->GetTimeInterval(span));
    EXPECT_EQ(span, FbxTimeSpan(FbxTime(-30), FbxTime(70)));
    EXPECT_EQ(curve->KeyIndexAt(FbxTime(11)), -1);
    EXPECT_EQ(curve->KeyIndexAt(FbxTime(71)), -1);
    EXPECT_EQ(static_cast<FbxUInt32>(curve->KeyGetTangentMode(1)), 0x2100u);
    curve->KeySetTangentMode(1, FbxAnimCurveDef::eTangentUser);
    EXPECT_EQ(curve->KeyGetTangentMode(1), FbxAnimCurveDef::eTangentUser);
    EXPECT_EQ(curve->KeyGetInterpolation(1), FbxAnimCurveDef::eInterpolationCubic);
    EXPECT_FALSE(curve->IsModifying());
    curve->KeyModifyBegin();
    EXPECT_TRUE(curve->IsModifying());
    curve->KeyModifyEnd();
    EXPECT_FALSE(curve->IsModifying());
}

// A curve node's channels: named, valued and connected one by one.
TEST_F(FbxAnimCurveTest, CurveNodeChannels) {
    FbxAnimCurveNode* node = FbxAnimCurveNode::Create(mScene, "node");
    EXPECT_TRUE(node->AddChannel("A", 1.5));
    EXPECT_TRUE(node->AddChannel("B", -2.0));
    EXPECT_FALSE(node->AddChannel("A", 9.0));
    EXPECT_EQ(node->GetChannelsCount(), 2);
    EXPECT_EQ(node->GetChannelName(1), "B");
    EXPECT_EQ(node->GetChannelName(2), "");
    EXPECT_DOUBLE_EQ(node->GetChannelValue(0), 1.5);
    EXPECT_TRUE(node->SetChannelValue(1, 7.0));
    EXPECT_DOUBLE_EQ(node->GetChannelValue(1), 7.0);
    EXPECT_FALSE(node->SetChannelValue(2, 7.0));
    EXPECT_DOUBLE_EQ(node->GetChannelValue(2, -1.0), -1.0);

    FbxAnimCurve* a = FbxAnimCurve::Create(mScene, "a");
    FbxAnimCurve* b = FbxAnimCurve::Create(mScene, "b");
    EXPECT_TRUE(node->ConnectToChannel(a, "B"));
    EXPECT_TRUE(node->ConnectToChannel(b, 1));
    EXPECT_FALSE(node->ConnectToChannel(a, "C"));
    EXPECT_FALSE(node->ConnectToChannel(nullptr, 0));
    EXPECT_EQ(node->GetCurveCount(0), 0);
    EXPECT_EQ(node->GetCurveCount(1), 2);
    EXPECT_EQ(node->GetCurve(1, 1), b);
    EXPECT_EQ(node->CreateCurve(5), nullptr);
    FbxAnimCurve* made = node->CreateCurve(0);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(node->GetCurve(0), made);
    EXPECT_EQ(made->GetScene(), mScene);

    // Typed nodes: one channel per component, named after the property otherwise.
    FbxNode* object = FbxNode::Create(mScene, "object");
    object->LclRotation.Set(FbxDouble3(1, 2, 3));
    FbxAnimCurveNode* rotation =
        FbxAnimCurveNode::CreateTypedCurveNode(object->LclRotation, mScene);
    ASSERT_NE(rotation, nullptr);
    EXPECT_STREQ(rotation->GetName(), "R");
    EXPECT_DOUBLE_EQ(rotation->GetChannelValue(rotation->GetChannelIndex("Y")), 2.0);
    FbxAnimCurveNode* visibility =
        FbxAnimCurveNode::CreateTypedCurveNode(object->Visibility, mScene);
    ASSERT_NE(visibility, nullptr);
    EXPECT_EQ(visibility->GetChannelName(0), "Visibility");
    EXPECT_EQ(FbxAnimCurveNode::CreateTypedCurveNode(FbxProperty(), mScene), nullptr);
}

// Times compare equal whichever form holds them: evenly spaced or listed.
TEST_F(FbxAnimCurveTest, KeyTimesEqualAcrossStorageForms) {
    FbxAnimCurve* listed = CurveWith({0, 10, 30});
    listed->KeySet(2, FbxTime(20), 0.0f);  // now 0, 10, 20, kept as a list
    const struct {
        std::vector<FbxLongLong> times;
        bool equal;
    } rows[] = {
        {{0, 10, 20}, true},  {{0, 10, 21}, false}, {{0, 10}, false},
        {{5, 15, 25}, false}, {{0, 5, 20}, false},
    };
    for (const auto& row : rows) {
        FbxAnimCurve* even = CurveWith(row.times);
        EXPECT_EQ(even->KeyTimesEqual(*listed), row.equal) << row.times.back();
        EXPECT_EQ(listed->KeyTimesEqual(*even), row.equal) << row.times.back();
    }
    EXPECT_TRUE(CurveWith({})->KeyTimesEqual(*CurveWith({})));
    EXPECT_TRUE(CurveWith({7})->KeyTimesEqual(*CurveWith({7})));
    EXPECT_FALSE(CurveWith({7})->KeyTimesEqual(*CurveWith({8})));
    EXPECT_TRUE(CurveWith({0, 1, 2, 4})->KeyTimesEqual(*CurveWith({0, 1, 2, 4})));
}

// A run ends where the flags, a slope or the weights change; keys past the end have none.
TEST_F(FbxAnimCurveTest, AttributeRunsEndAtAnyChange) {
    FbxAnimCurve* curve = CurveWith({0, 1, 2, 3, 4, 5, 6, 7});
    curve->KeySetInterpolation(2, FbxAnimCurveDef::eInterpolationLinear);
    curve->KeySetInterpolation(3, FbxAnimCurveDef::eInterpolationLinear);
    EXPECT_EQ(curve->KeyGetAttributeRun(0), 2);
    EXPECT_EQ(curve->KeyGetAttributeRun(1), 1);
    EXPECT_EQ(curve->KeyGetAttributeRun(2), 2);
    EXPECT_EQ(curve->KeyGetAttributeRun(4), 4);
    curve->KeySetRightDerivative(5, -0.0f);
    EXPECT_EQ(curve->KeyGetAttributeRun(4), 1);
    EXPECT_EQ(curve->KeyGetAttributeRun(5), 1);
    EXPECT_EQ(curve->KeyGetAttributeRun(6), 2);
    curve->KeySetLeftDerivative(7, 1.0f);  // held on key 6
    EXPECT_EQ(curve->KeyGetAttributeRun(6), 1);
    FbxAnimCurveKeyAttribute weighted;
    weighted.mData[2] = 1;
    curve->KeySetAttribute(0, weighted);
    EXPECT_EQ(curve->KeyGetAttributeRun(0), 1);
    EXPECT_EQ(curve->KeyGetAttributeRun(8), 0);
    EXPECT_EQ(curve->KeyGetAttributeRun(-1), 0);
    // The same after more distinct attributes than a byte names.
    for (int i = 0; i < 300; ++i) {
        FbxAnimCurveKeyAttribute attribute;
        attribute.mData[3] = static_cast<FbxUInt32>(i / 2);
        curve->KeySetAttribute(curve->KeyAdd(FbxTime(100 + i)), attribute);
    }
    EXPECT_EQ(curve->KeyGetAttributeRun(8), 2);
    EXPECT_EQ(curve->KeyGetAttributeRun(2), 2);
}

// A curve pair as a take keys it: each time to both, first a then b.
struct CurvePair {
    FbxAnimCurve* a;
    FbxAnimCurve* b;
    void Key(std::initializer_list<FbxLongLong> times) const {
        for (FbxLongLong t : times) {
            KeyAsTaken(*a, t, static_cast<float>(t));
            KeyAsTaken(*b, t, static_cast<float>(t));
        }
    }
};

// Curves sharing their key times behave key for key as curves holding their own: whatever one
// of them does to its times, the other keeps its own, and both go on keying alike. Each row
// runs on a sharing pair and on a pair of curves alone, and their keys must agree throughout.
TEST_F(FbxAnimCurveTest, SharedKeyTimesActAsEachCurvesOwn) {
    using Edit = std::function<void(const CurvePair&, FbxAnimCurve& source)>;
    const struct {
        const char* name;
        Edit edit;
        bool stayShared;  // the pair ends with equal times, compared at once
    } rows[] = {
        {"keyed alike", [](const CurvePair&, FbxAnimCurve&) {}, true},
        {"b keyed later", [](const CurvePair& p, FbxAnimCurve&) { p.b->KeyAdd(FbxTime(90)); },
         false},
        {"b diverges, a goes on",
         [](const CurvePair& p, FbxAnimCurve&) {
             p.b->KeyAdd(FbxTime(95));
             p.a->KeyAdd(FbxTime(90));
             p.a->KeyAdd(FbxTime(95));
         },
         false},
        {"a skips a time b keys",
         [](const CurvePair& p, FbxAnimCurve&) {
             p.b->KeyAdd(FbxTime(90));
             p.a->KeyAdd(FbxTime(95));
             p.b->KeyAdd(FbxTime(95));
         },
         false},
        {"insert on a", [](const CurvePair& p, FbxAnimCurve&) { p.a->KeyAdd(FbxTime(12)); }, false},
        {"reset at its own time",
         [](const CurvePair& p, FbxAnimCurve&) { p.a->KeyAdd(FbxTime(25)); }, true},
        {"erase inside a", [](const CurvePair& p, FbxAnimCurve&) { p.a->KeyRemove(1, 2); }, false},
        {"erase a's last keys, key elsewhere",
         [](const CurvePair& p, FbxAnimCurve&) {
             p.a->KeyRemove(3, 4);
             p.a->KeyAdd(FbxTime(41));
             p.b->KeyRemove(4);
         },
         false},
        {"erase b's last key, key it again",
         [](const CurvePair& p, FbxAnimCurve&) {
             p.b->KeyRemove(4);
             p.b->KeyAdd(FbxTime(70));
         },
         true},
        {"move a key of a",
         [](const CurvePair& p, FbxAnimCurve&) { p.a->KeySet(2, FbxTime(30), 1.0f); }, false},
        {"replace a span of a",
         [](const CurvePair& p, FbxAnimCurve& source) {
             p.a->Replace(source, FbxTime(20), FbxTime(50));
         },
         false},
        {"clear a, key it again",
         [](const CurvePair& p, FbxAnimCurve&) {
             p.a->KeyClear();
             p.a->KeyAdd(FbxTime(0));
             p.a->KeyAdd(FbxTime(3));
         },
         false},
        {"a copies b after b diverged",
         [](const CurvePair& p, FbxAnimCurve&) {
             p.b->KeyAdd(FbxTime(80));
             p.a->CopyFrom(*p.b);
             p.a->KeyAdd(FbxTime(85));
         },
         false},
        {"room reserved", [](const CurvePair& p, FbxAnimCurve&) { p.b->ResizeKeyBuffer(1000); },
         true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const CurvePair shared{FbxAnimCurve::Create(mScene, "a"),
                               FbxAnimCurve::Create(mScene, "b")};
        const CurvePair alone{FbxAnimCurve::Create(mScene, "a"), FbxAnimCurve::Create(mScene, "b")};
        shared.b->KeyShareTimes(*shared.a);
        FbxAnimCurve* source = CurveWith({22, 33, 44});
        for (const CurvePair& pair : {shared, alone}) {
            pair.Key({0, 25, 35, 60, 70});  // uneven: the times are listed
            row.edit(pair, *source);
        }
        const auto check = [&] {
            EXPECT_EQ(Keys(*shared.a), Keys(*alone.a));
            EXPECT_EQ(Keys(*shared.b), Keys(*alone.b));
            EXPECT_EQ(shared.a->KeyTimesEqual(*shared.b), Times(*alone.a) == Times(*alone.b));
            EXPECT_EQ(shared.b->KeyTimesEqual(*shared.a), Times(*alone.a) == Times(*alone.b));
        };
        check();
        EXPECT_EQ(Times(*alone.a) == Times(*alone.b), row.stayShared);
        if (row.stayShared) {
            EXPECT_LT(shared.a->GetKeyMemoryUsage() + shared.b->GetKeyMemoryUsage(),
                      alone.a->GetKeyMemoryUsage() + alone.b->GetKeyMemoryUsage());
        }
        // Keying on after the edit, and curves that join once keyed.
        for (const CurvePair& pair : {shared, alone}) pair.Key({100, 130, 200});
        check();
        shared.a->KeyShareTimes(*shared.b);
        check();
    }
}

}  // namespace
