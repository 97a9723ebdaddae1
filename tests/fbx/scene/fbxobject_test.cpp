#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxskeleton.h"
#include "fbx/scene/fbxstatus.h"
#include "tests/fbx/scene/scenetest.h"

namespace {

using FbxObjectTest = SceneTest;

TEST_F(FbxObjectTest, PropertyHierarchyTypesFlagsAndValues) {
    FbxObject* object = FbxObject::Create(mManager, "holder");
    FbxProperty a = FbxProperty::Create(object, FbxCompoundDT, "a");
    FbxProperty b = FbxProperty::Create(object, FbxDoubleDT, "b", FbxPropertyFlags::eAnimatable);
    FbxProperty::Create(a, FbxDoubleDT, "x");
    FbxProperty ay = FbxProperty::Create(a, FbxCompoundDT, "y");
    FbxProperty::Create(ay, FbxStringDT, "z");
    // Children follow their parent even when created after a later sibling.
    EXPECT_EQ(PropertyNames(*object), (std::vector<std::string>{"a", "a|x", "a|y", "a|y|z", "b"}));
    EXPECT_FALSE(FbxProperty::Create(object, FbxIntDT, "b").IsValid());
    EXPECT_FALSE(FbxProperty::Create(a, FbxIntDT, "x").IsValid());
    EXPECT_EQ(object->FindProperty("a|y|z").GetName(), "z");

    EXPECT_STREQ(b.GetPropertyDataType().GetName(), "Number");
    EXPECT_STREQ(b.GetPropertyDataType().GetIOName(), "double");
    EXPECT_EQ(b.GetFlags(), 2u);
    ASSERT_TRUE(b.SetLockBits(0xA));
    ASSERT_TRUE(b.SetMuteBits(3));
    b.ModifyFlag(FbxPropertyFlags::eHidden, true);
    EXPECT_EQ(b.GetFlags(), 2u | 32u | (0xAu << 7) | (3u << 11));
    EXPECT_FALSE(b.SetLockBits(16));

    // Numbers convert to the property's storage; other kinds are refused.
    EXPECT_TRUE(b.Set(3));
    EXPECT_TRUE(std::holds_alternative<double>(b.GetValue()));
    EXPECT_FALSE(b.Set(FbxString("three")));
    EXPECT_FALSE(a.Set(1.0));
    EXPECT_DOUBLE_EQ(b.Get<double>(), 3.0);
}

TEST_F(FbxObjectTest, ConnectionsBothEndsInOrderAndCutOnDestroy) {
    FbxObject* hub = FbxObject::Create(mManager, "hub");
    FbxObject* first = FbxObject::Create(mManager, "first");
    FbxObject* second = FbxObject::Create(mManager, "second");
    FbxProperty slot = FbxProperty::Create(hub, FbxReferenceDT, "slot");
    FbxProperty port = FbxProperty::Create(first, FbxDoubleDT, "port");

    EXPECT_TRUE(hub->ConnectSrcObject(second));
    EXPECT_TRUE(hub->ConnectSrcObject(first));
    EXPECT_FALSE(hub->ConnectSrcObject(first));
    EXPECT_FALSE(hub->ConnectSrcObject(hub));
    EXPECT_TRUE(first->ConnectDstProperty(slot));
    EXPECT_TRUE(port.ConnectDstProperty(slot));
    EXPECT_TRUE(port.ConnectDstObject(second));

    EXPECT_EQ(hub->GetSrcObject(1), first);
    EXPECT_EQ(first->GetDstObject(0), hub);
    EXPECT_EQ(first->GetDstProperty(0), slot);
    EXPECT_EQ(slot.GetSrcProperty(0), port);
    EXPECT_EQ(second->GetSrcProperty(0), port);

    const int objects = mManager->GetObjectCount();
    first->Destroy();
    EXPECT_EQ(hub->GetSrcObjectCount(), 1);
    EXPECT_EQ(slot.GetSrcObjectCount() + slot.GetSrcPropertyCount(), 0);
    EXPECT_EQ(second->GetSrcPropertyCount(), 0);
    EXPECT_EQ(mManager->GetObjectCount(), objects - 1);
}

TEST_F(FbxObjectTest, IdentityAndClassNames) {
    FbxNode* node = FbxNode::Create(mScene, "Hips");
    FbxSkeleton* skeleton = FbxSkeleton::Create(mManager, nullptr);
    EXPECT_STREQ(skeleton->GetName(), "");
    // Unique ids come from one counter: the scene's own members follow it.
    EXPECT_EQ(mScene->GetRootNode()->GetUniqueID(), mScene->GetUniqueID() + 1);
    EXPECT_EQ(skeleton->GetUniqueID(), node->GetUniqueID() + 1);

    EXPECT_STREQ(node->GetTypeName(), "Model");
    EXPECT_EQ(node->GetNameWithNameSpacePrefix(), "Model::Hips");
    EXPECT_STREQ(skeleton->GetTypeName(), "NodeAttribute");
    EXPECT_EQ(FbxCast<FbxNull>(skeleton), nullptr);
    EXPECT_EQ(node->GetScene(), mScene);
    EXPECT_EQ(skeleton->GetScene(), nullptr);
}

TEST_F(FbxObjectTest, DefaultObjectIsTheClassTemplate) {
    FbxNode* node = FbxNode::Create(mScene, "node");
    const int objects = mManager->GetObjectCount();
    FbxObject* tmpl = mManager->GetDefaultObject(FbxNode::ClassId);
    ASSERT_NE(tmpl, nullptr);
    EXPECT_EQ(mManager->GetDefaultObject(FbxNode::ClassId), tmpl);
    EXPECT_EQ(mManager->GetObjectCount(), objects);
    EXPECT_EQ(tmpl->GetDocument(), nullptr);
    EXPECT_EQ(PropertyNames(*tmpl), PropertyNames(*node));
}

TEST(FbxStatusTest, FirstErrorSticksUntilCleared) {
    FbxStatus status;
    EXPECT_FALSE(status.Error());
    status.SetCode(FbxStatus::eSuccess, "ignored");
    EXPECT_STREQ(status.GetErrorString(), "Success");
    status.SetCode(FbxStatus::eInvalidFile, "File not created");
    status.SetCode(FbxStatus::eFailure, "out of disk space");
    EXPECT_EQ(status.GetCode(), FbxStatus::eInvalidFile);
    EXPECT_STREQ(status.GetErrorString(), "File not created");
    status.Clear();
    status.SetCode(FbxStatus::eFailure, "out of disk space");
    EXPECT_STREQ(status.GetErrorString(), "out of disk space");
}

TEST_F(FbxObjectTest, DocumentInformationAndCurrentTake) {
    FbxDocumentInfo* info = FbxDocumentInfo::Create(mManager, "SceneInfo");
    mScene->SetSceneInfo(info);
    EXPECT_EQ(info->GetDocument(), mScene);
    EXPECT_STREQ(info->GetSubTypeName(), "UserData");
    const std::vector<std::string> names = PropertyNames(*info);
    ASSERT_EQ(names.size(), 13u);
    EXPECT_EQ(names.back(), "LastSaved|DateTime_GMT");
    EXPECT_STREQ(info->Url.GetPropertyDataType().GetName(), "Url");
    info->Destroy();
    EXPECT_EQ(mScene->GetSceneInfo(), nullptr);

    EXPECT_EQ(mScene->GetCurrentAnimationStack(), nullptr);
    FbxAnimStack* first = FbxAnimStack::Create(mScene, "first");
    FbxAnimStack* second = FbxAnimStack::Create(mScene, "second");
    EXPECT_EQ(mScene->GetCurrentAnimationStack(), first);
    mScene->SetCurrentAnimationStack(second);
    EXPECT_EQ(mScene->GetCurrentAnimationStack(), second);
    EXPECT_EQ(mScene->ActiveAnimStackName.Get(), "second");
    second->SetReferenceTimeSpan(FbxTimeSpan(FbxTime(0), FbxTime(10)));
    second->SetLocalTimeSpan(FbxTimeSpan(FbxTime(5), FbxTime(7)));
    EXPECT_EQ(second->GetReferenceTimeSpan().GetStop(), FbxTime(10));
}

}  // namespace
