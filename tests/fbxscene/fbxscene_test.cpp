#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxmarker.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"

namespace {

class FbxSceneTest : public ::testing::Test {
protected:
    void TearDown() override { mManager->Destroy(); }

    FbxManager* mManager = FbxManager::Create();
    FbxScene* mScene = FbxScene::Create(mManager, "My Scene");
};

std::vector<std::string> Names(const FbxObject& object) {
    std::vector<std::string> names;
    for (FbxProperty p = object.GetFirstProperty(); p.IsValid(); p = object.GetNextProperty(p)) {
        names.push_back(p.GetHierarchicalName().Std());
    }
    return names;
}

TEST_F(FbxSceneTest, NodePropertiesInFileOrderWithDefaults) {
    FbxNode* node = FbxNode::Create(mScene, "n");
    const std::vector<std::string> names = Names(*node);
    ASSERT_EQ(names.size(), 71u);
    EXPECT_EQ(names.front(), "QuaternionInterpolate");
    EXPECT_EQ(names[14], "RotationOrder");
    EXPECT_EQ(names[31], "InheritType");
    EXPECT_EQ(names[59], "LookAtProperty");
    EXPECT_EQ(
        std::vector<std::string>(names.end() - 10, names.end()),
        (std::vector<std::string>{"Show", "NegativePercentShapeSupport", "DefaultAttributeIndex",
                                  "Freeze", "LODBox", "Lcl Translation", "Lcl Rotation",
                                  "Lcl Scaling", "Visibility", "Visibility Inheritance"}));

    EXPECT_EQ(node->LclScaling.Get(), FbxDouble3(1, 1, 1));
    EXPECT_EQ(node->ScalingMax.Get(), FbxDouble3(1, 1, 1));
    EXPECT_EQ(node->GeometricScaling.Get(), FbxDouble3(1, 1, 1));
    EXPECT_DOUBLE_EQ(node->AxisLen.Get(), 10.0);
    EXPECT_DOUBLE_EQ(node->Visibility.Get(), 1.0);
    EXPECT_EQ(node->DefaultAttributeIndex.Get(), -1);
    EXPECT_TRUE(node->Show.Get());
    EXPECT_EQ(node->InheritType.Get(), FbxTransform::eInheritRrSs);
    EXPECT_EQ(node->LclRotation.GetFlags(), unsigned{FbxPropertyFlags::eAnimatable});
    EXPECT_EQ(node->InheritType.GetFlags(), 0u);
    EXPECT_STREQ(node->LclTranslation.GetPropertyDataType().GetName(), "Lcl Translation");
    EXPECT_STREQ(node->VisibilityInheritance.GetPropertyDataType().GetIOName(),
                 "Visibility Inheritance");
}

TEST_F(FbxSceneTest, AddChildMovesAndRefusesCycles) {
    FbxNode* a = FbxNode::Create(mScene, "a");
    FbxNode* b = FbxNode::Create(mScene, "b");
    FbxNode* c = FbxNode::Create(mScene, "c");
    EXPECT_FALSE(a->AddChild(nullptr));
    EXPECT_TRUE(a->AddChild(c));
    EXPECT_TRUE(a->AddChild(b));
    EXPECT_EQ(a->GetChild(0), c);
    EXPECT_EQ(a->GetChild(1), b);
    EXPECT_TRUE(b->AddChild(c));
    EXPECT_EQ(c->GetParent(), b);
    EXPECT_EQ(c->GetDstObjectCount<FbxNode>(), 1);
    EXPECT_EQ(a->GetChildCount(), 1);
    EXPECT_EQ(a->GetChildCount(true), 2);
    EXPECT_FALSE(c->AddChild(a));
    EXPECT_FALSE(c->AddChild(c));
    EXPECT_EQ(a->RemoveChild(c), nullptr);
    EXPECT_EQ(b->RemoveChild(c), c);
    EXPECT_EQ(c->GetParent(), nullptr);
}

TEST_F(FbxSceneTest, FindNodeByNameAnswersLikeAScanInMembershipOrder) {
    FbxNode* first = FbxNode::Create(mScene, "Hips");
    FbxNode* second = FbxNode::Create(mScene, "Hips");
    EXPECT_EQ(mScene->FindNodeByName("Hips"), first);
    EXPECT_EQ(mScene->FindNodeByName("hips"), nullptr);
    EXPECT_EQ(mScene->FindNodeByName("RootNode"), mScene->GetRootNode());

    // A rename moves a node between names; the earlier member still wins.
    first->SetName("Spine");
    EXPECT_EQ(mScene->FindNodeByName("Hips"), second);
    first->SetName("Hips");
    EXPECT_EQ(mScene->FindNodeByName("Hips"), first);
    EXPECT_EQ(mScene->FindNodeByName("Spine"), nullptr);
    first->Destroy();
    EXPECT_EQ(mScene->FindNodeByName("Hips"), second);

    // Nodes made through the manager join with the subtree added under a member.
    FbxNode* top = FbxNode::Create(mManager, "Top");
    FbxNode* leaf = FbxNode::Create(mManager, "Leaf");
    FbxNull* null = FbxNull::Create(mManager, "Leaf");
    leaf->SetNodeAttribute(null);
    top->AddChild(leaf);
    EXPECT_EQ(mScene->FindNodeByName("Leaf"), nullptr);
    mScene->GetRootNode()->AddChild(top);
    EXPECT_EQ(mScene->FindNodeByName("Leaf"), leaf);
    EXPECT_EQ(null->GetScene(), mScene);
    mScene->RemoveMember(leaf);
    EXPECT_EQ(mScene->FindNodeByName("Leaf"), nullptr);
}

FbxNode* ScanForNode(const FbxScene& scene, const char* name) {
    for (int i = 0; i < scene.GetSrcObjectCount<FbxNode>(); ++i) {
        if (scene.GetSrcObject<FbxNode>(i)->GetNameString() == name) {
            return scene.GetSrcObject<FbxNode>(i);
        }
    }
    return nullptr;
}

// Seeded random edits over two scenes (nodes made in one and connected to the
// other too): the index answers like a scan of the connected nodes in order.
TEST_F(FbxSceneTest, FindNodeByNameMatchesAScanThroughEdits) {
    FbxScene* other = FbxScene::Create(mManager, "other");
    FbxScene* scenes[] = {mScene, other};
    const char* names[] = {"Hips", "hips", "Spine", "Head"};
    std::vector<FbxNode*> nodes;
    std::mt19937 random(11);
    auto pick = [&](size_t n) { return static_cast<size_t>(random() % n); };
    for (int step = 0; step < 600; ++step) {
        FbxNode* node = nodes.empty() ? nullptr : nodes[pick(nodes.size())];
        FbxScene* scene = scenes[pick(2)];
        switch (node ? pick(5) : 0) {
            case 0:
                nodes.push_back(FbxNode::Create(scene, names[pick(4)]));
                break;
            case 1:
                node->SetName(names[pick(4)]);
                break;
            case 2:
                std::erase(nodes, node);
                node->Destroy();
                break;
            case 3:
                node->IsConnectedDstObject(scene) ? scene->RemoveMember(node)
                                                  : scene->AddMember(node);
                break;
            default:
                nodes[pick(nodes.size())]->AddChild(node);
        }
        for (const char* name : names) {
            ASSERT_EQ(mScene->FindNodeByName(name), ScanForNode(*mScene, name)) << step;
            ASSERT_EQ(other->FindNodeByName(name), ScanForNode(*other, name)) << step;
        }
    }
}

TEST_F(FbxSceneTest, AttributesDecideTheRecordSubTypes) {
    FbxNode* node = FbxNode::Create(mScene, "n");
    FbxSkeleton* skeleton = FbxSkeleton::Create(mManager, "n");
    EXPECT_STREQ(node->GetSubTypeName(), "Null");
    EXPECT_TRUE(node->SetNodeAttribute(skeleton));
    EXPECT_EQ(node->DefaultAttributeIndex.Get(), 0);
    EXPECT_EQ(node->GetSkeleton(), skeleton);
    EXPECT_EQ(skeleton->GetNode(), node);
    EXPECT_TRUE(skeleton->LimbLength.GetFlag(FbxPropertyFlags::eHidden));
    EXPECT_STREQ(node->GetSubTypeName(), "Root");
    const std::vector<const char*> flags = skeleton->GetTypeFlags();
    EXPECT_EQ(std::vector<std::string>(flags.begin(), flags.end()),
              (std::vector<std::string>{"Null", "Skeleton", "Root"}));
    skeleton->SetSkeletonType(FbxSkeleton::eLimbNode);
    EXPECT_TRUE(skeleton->GetSkeletonTypeIsSet());
    EXPECT_FALSE(skeleton->LimbLength.GetFlag(FbxPropertyFlags::eHidden));
    EXPECT_STREQ(node->GetSubTypeName(), "LimbNode");
    EXPECT_DOUBLE_EQ(skeleton->Size.Get(), 100.0);

    FbxNode* other = FbxNode::Create(mScene, "other");
    EXPECT_FALSE(other->SetNodeAttribute(skeleton));
    FbxMarker* marker = FbxMarker::Create(mScene, "m");
    marker->Look.Set(FbxMarker::eLightCross);
    EXPECT_TRUE(node->SetNodeAttribute(marker));
    EXPECT_EQ(node->GetNodeAttribute(), marker);
    EXPECT_EQ(skeleton->GetNode(), nullptr);
    EXPECT_STREQ(node->GetSubTypeName(), "Marker");
    EXPECT_EQ(marker->Look.Get<int>(), 2);
    EXPECT_TRUE(node->SetNodeAttribute(nullptr));
    EXPECT_EQ(node->DefaultAttributeIndex.Get(), -1);

    node->SetTransformationInheritType(FbxTransform::eInheritRrs);
    FbxTransform::EInheritType type = FbxTransform::eInheritRrSs;
    node->GetTransformationInheritType(type);
    EXPECT_EQ(type, FbxTransform::eInheritRrs);
    EXPECT_EQ(node->InheritType.Get<int>(), 2);
}

TEST_F(FbxSceneTest, GlobalSettingsInFileOrder) {
    FbxGlobalSettings& settings = mScene->GetGlobalSettings();
    EXPECT_EQ(Names(settings),
              (std::vector<std::string>{"UpAxis",          "UpAxisSign",
                                        "FrontAxis",       "FrontAxisSign",
                                        "CoordAxis",       "CoordAxisSign",
                                        "OriginalUpAxis",  "OriginalUpAxisSign",
                                        "UnitScaleFactor", "OriginalUnitScaleFactor",
                                        "AmbientColor",    "DefaultCamera",
                                        "TimeMode",        "TimeProtocol",
                                        "SnapOnFrameMode", "TimeSpanStart",
                                        "TimeSpanStop",    "CustomFrameRate",
                                        "TimeMarker",      "CurrentTimeMarker"}));
    EXPECT_EQ(settings.GetTimeMode(), FbxTime::eDefaultMode);
    EXPECT_EQ(settings.TimeSpanStop.Get(), FbxTime(FBX_TC_SECOND));
    EXPECT_EQ(settings.TimeProtocol.Get<int>(), 2);
    EXPECT_STREQ(settings.TimeMode.GetEnumValue(17), "Frames5994");
    settings.SetTimeMode(FbxTime::eCustom);
    settings.SetCustomFrameRate(240.0);
    EXPECT_EQ(settings.GetTimeMode(), FbxTime::eCustom);
    EXPECT_DOUBLE_EQ(settings.GetCustomFrameRate(), 240.0);
}

// The export's shape: a skeleton under a root, keyed every frame, found by name
// on every frame, then walked the way a writer does.
TEST_F(FbxSceneTest, AnimatedSkeletonCanBeBuiltSearchedAndWalked) {
    FbxAnimStack* stack = FbxAnimStack::Create(mScene, "take");
    FbxAnimLayer* layer = FbxAnimLayer::Create(mScene, "layer");
    stack->AddMember(layer);
    const char* names[] = {"Reference", "Hips", "Spine"};
    FbxNode* parent = mScene->GetRootNode();
    for (int i = 0; i < 3; ++i) {
        FbxNode* node = FbxNode::Create(mScene, names[i]);
        FbxSkeleton* joint = FbxSkeleton::Create(mScene, names[i]);
        joint->SetSkeletonType(i == 0 ? FbxSkeleton::eRoot : FbxSkeleton::eLimbNode);
        node->SetNodeAttribute(joint);
        node->LclTranslation.Set(FbxDouble3(0, 10.0 * i, 0));
        parent->AddChild(node);
        parent = node;
    }
    for (int frame = 0; frame < 100; ++frame) {
        FbxTime time;
        time.SetFrame(frame, FbxTime::eFrames120);
        for (int n = 1; n < 3; ++n) {
            FbxNode* node = mScene->FindNodeByName(names[n]);
            ASSERT_NE(node, nullptr);
            for (const char* channel : {"X", "Y", "Z"}) {
                FbxAnimCurve* curve =
                    node->LclRotation.GetCurve(layer, "Lcl Rotation", channel, true);
                curve->KeyModifyBegin();
                const int key = curve->KeyAdd(time);
                curve->KeySetValue(key, static_cast<float>(frame));
                curve->KeySetInterpolation(key, FbxAnimCurveDef::eInterpolationLinear);
                curve->KeyModifyEnd();
            }
        }
    }
    stack->SetLocalTimeSpan(FbxTimeSpan(FbxTime(0), FbxTime(99 * 1176000LL)));

    FbxNode* spine = mScene->GetRootNode()->FindChild("Spine");
    ASSERT_NE(spine, nullptr);
    EXPECT_EQ(spine->GetParent()->GetParent()->GetParent(), mScene->GetRootNode());
    FbxAnimCurveNode* curveNode = spine->LclRotation.GetCurveNode(layer);
    ASSERT_NE(curveNode, nullptr);
    EXPECT_STREQ(curveNode->GetName(), "R");
    EXPECT_EQ(curveNode->GetDstObject<FbxAnimLayer>(0), layer);
    EXPECT_EQ(curveNode->GetDstProperty(0), spine->LclRotation);
    EXPECT_TRUE(spine->LclRotation.GetFlag(FbxPropertyFlags::eAnimated));
    EXPECT_FALSE(spine->LclTranslation.GetFlag(FbxPropertyFlags::eAnimated));
    FbxAnimCurve* y = curveNode->GetCurve(curveNode->GetChannelIndex("Y"));
    EXPECT_EQ(y->KeyGetCount(), 100);
    EXPECT_EQ(y->KeyGetTime(99).Get(), 99 * 1176000LL);
    EXPECT_EQ(y->KeyGetFlags(99), 0x2104u);
    EXPECT_EQ(y->GetDstProperty(0).GetHierarchicalName(), "d|Y");
    EXPECT_EQ(stack->GetReferenceTimeSpan(), stack->GetLocalTimeSpan());
    EXPECT_EQ(mScene->GetCurrentAnimationStack(), stack);

    // Membership order is creation order; counts by record type.
    std::vector<std::string> types;
    for (int i = 0; i < mScene->GetMemberCount(); ++i) {
        types.push_back(mScene->GetMember(i)->GetTypeName());
    }
    EXPECT_EQ(types.size(), 2u + 2u + 6u + 2u + 6u);
    EXPECT_EQ(types.front(), "Model");
    EXPECT_EQ(mScene->GetMemberCount<FbxAnimCurve>(), 6);
    EXPECT_EQ(mScene->GetNodeCount(), 4);
}

}  // namespace
