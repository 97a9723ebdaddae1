#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxmarker.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxskeleton.h"
#include "tests/fbx/scene/scenetest.h"

namespace {

using FbxSceneTest = SceneTest;

// A node made through the manager joins the scene, with its subtree and their
// attributes, when it is added under a member.
TEST_F(FbxSceneTest, AddChildMovesJoinsAndRefusesCycles) {
    FbxNode* a = FbxNode::Create(mScene, "a");
    FbxNode* b = FbxNode::Create(mScene, "b");
    FbxNode* c = FbxNode::Create(mManager, "c");
    FbxNode* leaf = FbxNode::Create(mManager, "leaf");
    FbxNull* null = FbxNull::Create(mManager, "leaf");
    leaf->SetNodeAttribute(null);
    EXPECT_TRUE(c->AddChild(leaf));
    EXPECT_FALSE(a->AddChild(nullptr));
    EXPECT_TRUE(a->AddChild(c));
    EXPECT_EQ(mScene->FindNodeByName("leaf"), leaf);
    EXPECT_EQ(null->GetScene(), mScene);
    EXPECT_TRUE(a->AddChild(b));
    EXPECT_EQ(a->GetChild(1), b);
    EXPECT_TRUE(b->AddChild(c));
    EXPECT_EQ(c->GetParent(), b);
    EXPECT_EQ(a->GetChildCount(), 1);
    EXPECT_EQ(a->GetChildCount(true), 3);
    EXPECT_FALSE(leaf->AddChild(a));
    EXPECT_FALSE(c->AddChild(c));
    EXPECT_EQ(a->RemoveChild(c), nullptr);
    EXPECT_EQ(b->RemoveChild(c), c);
    EXPECT_EQ(c->GetParent(), nullptr);
}

FbxNode* ScanForNode(const FbxScene& scene, const char* name) {
    for (int i = 0; i < scene.GetSrcObjectCount<FbxNode>(); ++i) {
        if (scene.GetSrcObject<FbxNode>(i)->GetNameString() == name) {
            return scene.GetSrcObject<FbxNode>(i);
        }
    }
    return nullptr;
}

// Seeded random edits over two scenes (nodes made in one, or through the manager,
// and connected to the other too): the index answers like a scan of the
// connected nodes in order.
TEST_F(FbxSceneTest, FindNodeByNameMatchesAScanThroughEdits) {
    FbxScene* other = FbxScene::Create(mManager, "other");
    FbxScene* scenes[] = {mScene, other};
    const char* names[] = {"Hips", "hips", "Spine", "RootNode"};
    std::vector<FbxNode*> nodes;
    std::mt19937 random(11);
    auto pick = [&](size_t n) { return static_cast<size_t>(random() % n); };
    for (int step = 0; step < 600; ++step) {
        FbxNode* node = nodes.empty() ? nullptr : nodes[pick(nodes.size())];
        FbxScene* scene = scenes[pick(2)];
        switch (node ? pick(5) : 0) {
            case 0:
                nodes.push_back(pick(3) ? FbxNode::Create(scene, names[pick(4)])
                                        : FbxNode::Create(mManager, names[pick(4)]));
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
    EXPECT_EQ(skeleton->GetNode(), node);
    EXPECT_TRUE(skeleton->LimbLength.GetFlag(FbxPropertyFlags::eHidden));
    EXPECT_STREQ(node->GetSubTypeName(), "Root");
    const std::vector<const char*> flags = skeleton->GetTypeFlags();
    EXPECT_EQ(std::vector<std::string>(flags.begin(), flags.end()),
              (std::vector<std::string>{"Null", "Skeleton", "Root"}));
    skeleton->SetSkeletonType(FbxSkeleton::eLimbNode);
    EXPECT_FALSE(skeleton->LimbLength.GetFlag(FbxPropertyFlags::eHidden));
    EXPECT_STREQ(node->GetSubTypeName(), "LimbNode");
    EXPECT_DOUBLE_EQ(skeleton->Size.Get(), 100.0);

    FbxNode* other = FbxNode::Create(mScene, "other");
    EXPECT_FALSE(other->SetNodeAttribute(skeleton));
    FbxMarker* marker = FbxMarker::Create(mScene, "m");
    marker->Look.Set(FbxMarker::eLightCross);
    EXPECT_TRUE(node->SetNodeAttribute(marker));
    EXPECT_EQ(skeleton->GetNode(), nullptr);
    EXPECT_STREQ(node->GetSubTypeName(), "Marker");
    EXPECT_EQ(marker->Look.Get<int>(), 2);
    EXPECT_TRUE(node->SetNodeAttribute(nullptr));
    EXPECT_EQ(node->DefaultAttributeIndex.Get(), -1);

    node->SetTransformationInheritType(FbxTransform::eInheritRrs);
    EXPECT_EQ(node->InheritType.Get<int>(), 2);
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
                KeyAsTaken(*node->LclRotation.GetCurve(layer, "Lcl Rotation", channel, true),
                           time.Get(), static_cast<float>(frame));
            }
        }
    }

    FbxNode* spine = mScene->GetRootNode()->FindChild("Spine");
    ASSERT_NE(spine, nullptr);
    EXPECT_EQ(spine->GetParent()->GetParent()->GetParent(), mScene->GetRootNode());
    FbxAnimCurveNode* curveNode = spine->LclRotation.GetCurveNode(layer);
    ASSERT_NE(curveNode, nullptr);
    EXPECT_STREQ(curveNode->GetName(), "R");
    EXPECT_EQ(curveNode->GetDstProperty(0), spine->LclRotation);
    EXPECT_FALSE(spine->LclTranslation.GetFlag(FbxPropertyFlags::eAnimated));
    FbxAnimCurve* y = curveNode->GetCurve(curveNode->GetChannelIndex("Y"));
    EXPECT_EQ(y->KeyGetCount(), 100);
    EXPECT_EQ(y->KeyGetTime(99).Get(), 99 * 1176000LL);
    EXPECT_EQ(y->KeyGetFlags(99), 0x2104u);
    EXPECT_EQ(y->GetDstProperty(0).GetHierarchicalName(), "d|Y");

    // Membership order is creation order; counts by record type.
    EXPECT_EQ(mScene->GetMemberCount(), 2 + 2 + 6 + 2 + 6);
    EXPECT_STREQ(mScene->GetMember(0)->GetTypeName(), "Model");
    EXPECT_EQ(mScene->GetMemberCount<FbxAnimCurve>(), 6);
    EXPECT_EQ(mScene->GetNodeCount(), 4);
}

// A layer makes curve nodes only for animatable properties, and marks them animated.
TEST_F(FbxSceneTest, LayerCurveNodesOnlyForAnimatableProperties) {
    FbxNode* node = FbxNode::Create(mScene, "node");
    FbxAnimLayer* layers[] = {FbxAnimLayer::Create(mScene, "a"), FbxAnimLayer::Create(mScene, "b")};
    EXPECT_EQ(layers[0]->CreateCurveNode(node->Show), nullptr);
    FbxProperty invalid;
    EXPECT_EQ(layers[0]->CreateCurveNode(invalid), nullptr);
    FbxAnimCurveNode* scaling = layers[0]->CreateCurveNode(node->LclScaling);
    ASSERT_NE(scaling, nullptr);
    EXPECT_STREQ(scaling->GetName(), "S");
    EXPECT_EQ(layers[0]->GetMember(0), scaling);
    EXPECT_EQ(layers[0]->GetMemberCount(), 1);
    EXPECT_EQ(layers[1]->GetMemberCount(), 0);
    EXPECT_TRUE(node->LclScaling.GetFlag(FbxPropertyFlags::eAnimated));
}

}  // namespace
