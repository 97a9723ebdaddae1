#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"
#include "fbx/scene/fbxstatus.h"

namespace {

struct ManagerDeleter {
    void operator()(FbxManager* manager) const { manager->Destroy(); }
};
using ManagerPtr = std::unique_ptr<FbxManager, ManagerDeleter>;

std::vector<std::string> PropertyNames(const FbxObject& object) {
    std::vector<std::string> names;
    for (FbxProperty p = object.GetFirstProperty(); p.IsValid(); p = object.GetNextProperty(p)) {
        names.push_back(p.GetHierarchicalName().Std());
    }
    return names;
}

TEST(FbxPropertyTest, HierarchyTypesFlagsAndValues) {
    ManagerPtr manager(FbxManager::Create());
    FbxObject* object = FbxObject::Create(manager.get(), "holder");
    FbxProperty a = FbxProperty::Create(object, FbxCompoundDT, "a");
    FbxProperty b = FbxProperty::Create(object, FbxDoubleDT, "b", FbxPropertyFlags::eAnimatable);
    FbxProperty ax = FbxProperty::Create(a, FbxDoubleDT, "x");
    FbxProperty ay = FbxProperty::Create(a, FbxCompoundDT, "y");
    FbxProperty::Create(ay, FbxStringDT, "z");
    // Children follow their parent even when created after a later sibling.
    EXPECT_EQ(PropertyNames(*object), (std::vector<std::string>{"a", "a|x", "a|y", "a|y|z", "b"}));
    EXPECT_FALSE(FbxProperty::Create(object, FbxIntDT, "b").IsValid());
    EXPECT_FALSE(FbxProperty::Create(a, FbxIntDT, "x").IsValid());
    EXPECT_EQ(object->FindProperty("a|y|z").GetName(), "z");
    EXPECT_EQ(ax.GetParent(), a);

    EXPECT_STREQ(b.GetPropertyDataType().GetName(), "Number");
    EXPECT_STREQ(b.GetPropertyDataType().GetIOName(), "double");
    EXPECT_EQ(b.GetFlags(), 2u);
    ASSERT_TRUE(b.SetLockBits(0xA));
    ASSERT_TRUE(b.SetMuteBits(3));
    b.ModifyFlag(FbxPropertyFlags::eHidden, true);
    EXPECT_EQ(b.GetFlags(), 2u | 32u | (0xAu << 7) | (3u << 11));
    EXPECT_EQ(b.GetLockBits(), 0xA);
    EXPECT_EQ(b.GetMuteBits(), 3);
    EXPECT_FALSE(b.SetLockBits(16));

    // Numbers convert to the property's storage; other kinds are refused.
    EXPECT_TRUE(b.Set(3));
    EXPECT_TRUE(std::holds_alternative<double>(b.GetValue()));
    EXPECT_EQ(b.Get<int>(), 3);
    EXPECT_FALSE(b.Set(FbxString("three")));
    EXPECT_FALSE(b.Set(FbxDouble3(1, 2, 3)));
    EXPECT_FALSE(a.Set(1.0));
    EXPECT_DOUBLE_EQ(b.Get<double>(), 3.0);
    EXPECT_FALSE(b.HasMinLimit());
    b.SetMinLimit(-1.0);
    EXPECT_TRUE(b.HasMinLimit());
    EXPECT_DOUBLE_EQ(b.GetMinLimit(), -1.0);
}

TEST(FbxConnectionTest, BothEndsInOrderAndCutOnDestroy) {
    ManagerPtr manager(FbxManager::Create());
    FbxObject* hub = FbxObject::Create(manager.get(), "hub");
    FbxObject* first = FbxObject::Create(manager.get(), "first");
    FbxObject* second = FbxObject::Create(manager.get(), "second");
    FbxProperty slot = FbxProperty::Create(hub, FbxReferenceDT, "slot");
    FbxProperty port = FbxProperty::Create(first, FbxDoubleDT, "port");

    EXPECT_TRUE(hub->ConnectSrcObject(second));
    EXPECT_TRUE(hub->ConnectSrcObject(first));
    EXPECT_FALSE(hub->ConnectSrcObject(first));
    EXPECT_FALSE(hub->ConnectSrcObject(hub));
    EXPECT_TRUE(first->ConnectDstProperty(slot));
    EXPECT_TRUE(port.ConnectDstProperty(slot));
    EXPECT_TRUE(port.ConnectDstObject(second));

    EXPECT_EQ(hub->GetSrcObject(0), second);
    EXPECT_EQ(hub->GetSrcObject(1), first);
    EXPECT_EQ(first->GetDstObject(0), hub);
    EXPECT_EQ(first->GetDstProperty(0), slot);
    EXPECT_EQ(slot.GetSrcObject(0), first);
    EXPECT_EQ(slot.GetSrcProperty(0), port);
    EXPECT_EQ(second->GetSrcProperty(0), port);

    first->Destroy();
    EXPECT_EQ(hub->GetSrcObjectCount(), 1);
    EXPECT_EQ(slot.GetSrcObjectCount(), 0);
    EXPECT_EQ(slot.GetSrcPropertyCount(), 0);
    EXPECT_EQ(second->GetSrcPropertyCount(), 0);
    EXPECT_EQ(manager->GetObjectCount(), 2);
}

TEST(FbxObjectTest, IdentityAndClassNames) {
    ManagerPtr manager(FbxManager::Create());
    FbxScene* scene = FbxScene::Create(manager.get(), "scene");
    FbxNode* node = FbxNode::Create(scene, "Hips");
    FbxSkeleton* skeleton = FbxSkeleton::Create(manager.get(), nullptr);
    EXPECT_STREQ(skeleton->GetName(), "");
    // Unique ids come from one counter: the scene's own members follow it.
    EXPECT_EQ(scene->GetRootNode()->GetUniqueID(), scene->GetUniqueID() + 1);
    EXPECT_EQ(skeleton->GetUniqueID(), node->GetUniqueID() + 1);

    EXPECT_STREQ(node->GetTypeName(), "Model");
    EXPECT_STREQ(node->GetClassName(), "FbxNode");
    EXPECT_EQ(node->GetNameWithNameSpacePrefix(), "Model::Hips");
    EXPECT_STREQ(skeleton->GetTypeName(), "NodeAttribute");
    EXPECT_TRUE(skeleton->Is<FbxNodeAttribute>());
    EXPECT_FALSE(skeleton->Is<FbxNull>());
    EXPECT_EQ(FbxCast<FbxNull>(skeleton), nullptr);
    EXPECT_EQ(FbxCast<FbxNodeAttribute>(skeleton), skeleton);
    EXPECT_EQ(node->GetScene(), scene);
    EXPECT_EQ(skeleton->GetScene(), nullptr);
}

TEST(FbxObjectTest, DefaultObjectIsTheClassTemplate) {
    ManagerPtr manager(FbxManager::Create());
    FbxScene* scene = FbxScene::Create(manager.get(), "scene");
    FbxNode* node = FbxNode::Create(scene, "node");
    const int objects = manager->GetObjectCount();
    FbxObject* tmpl = manager->GetDefaultObject(FbxNode::ClassId);
    ASSERT_NE(tmpl, nullptr);
    EXPECT_EQ(manager->GetDefaultObject(FbxNode::ClassId), tmpl);
    EXPECT_EQ(manager->GetObjectCount(), objects);
    EXPECT_EQ(tmpl->GetDocument(), nullptr);
    EXPECT_EQ(PropertyNames(*tmpl), PropertyNames(*node));

    // Only what differs from the template would reach a file.
    node->LclTranslation.Set(FbxDouble3(1, 2, 3));
    std::vector<std::string> differing;
    for (FbxProperty p = node->GetFirstProperty(); p.IsValid(); p = node->GetNextProperty(p)) {
        if (!p.CompareValue(tmpl->FindProperty(p.GetHierarchicalName().Buffer()))) {
            differing.push_back(p.GetHierarchicalName().Std());
        }
    }
    EXPECT_EQ(differing, std::vector<std::string>{"Lcl Translation"});
    EXPECT_TRUE(FbxNode::ClassId.HasPropertyTemplate());
    EXPECT_FALSE(FbxGlobalSettings::ClassId.HasPropertyTemplate());
}

}  // namespace

namespace {

TEST(FbxStatusTest, FirstErrorSticksUntilCleared) {
    FbxStatus status;
    EXPECT_FALSE(status.Error());
    EXPECT_STREQ(status.GetErrorString(), "Success");
    status.SetCode(FbxStatus::eSuccess, "ignored");
    EXPECT_FALSE(status.Error());
    status.SetCode(FbxStatus::eInvalidFile, "File not created");
    status.SetCode(FbxStatus::eFailure, "out of disk space");
    EXPECT_EQ(status.GetCode(), FbxStatus::eInvalidFile);
    EXPECT_STREQ(status.GetErrorString(), "File not created");
    status.Clear();
    status.SetCode(FbxStatus::eFailure, "out of disk space");
    EXPECT_STREQ(status.GetErrorString(), "out of disk space");
}

TEST(FbxDocumentTest, InformationAndCurrentTake) {
    ManagerPtr manager(FbxManager::Create());
    FbxScene* scene = FbxScene::Create(manager.get(), "scene");
    FbxDocumentInfo* info = FbxDocumentInfo::Create(manager.get(), "SceneInfo");
    info->mTitle = "title";
    scene->SetSceneInfo(info);
    EXPECT_EQ(scene->GetSceneInfo(), info);
    EXPECT_EQ(info->GetDocument(), scene);
    EXPECT_STREQ(info->GetSubTypeName(), "UserData");
    EXPECT_EQ(PropertyNames(*info),
              (std::vector<std::string>{"DocumentUrl", "SrcDocumentUrl", "Original",
                                        "Original|ApplicationVendor", "Original|ApplicationName",
                                        "Original|ApplicationVersion", "Original|DateTime_GMT",
                                        "Original|FileName", "LastSaved",
                                        "LastSaved|ApplicationVendor", "LastSaved|ApplicationName",
                                        "LastSaved|ApplicationVersion", "LastSaved|DateTime_GMT"}));
    EXPECT_STREQ(info->Url.GetPropertyDataType().GetName(), "Url");
    info->Destroy();
    EXPECT_EQ(scene->GetSceneInfo(), nullptr);

    EXPECT_EQ(scene->GetCurrentAnimationStack(), nullptr);
    FbxAnimStack* first = FbxAnimStack::Create(scene, "first");
    FbxAnimStack* second = FbxAnimStack::Create(scene, "second");
    EXPECT_EQ(scene->GetCurrentAnimationStack(), first);
    scene->SetCurrentAnimationStack(second);
    EXPECT_EQ(scene->GetCurrentAnimationStack(), second);
    EXPECT_EQ(scene->ActiveAnimStackName.Get(), "second");
    second->SetReferenceTimeSpan(FbxTimeSpan(FbxTime(0), FbxTime(10)));
    second->SetLocalTimeSpan(FbxTimeSpan(FbxTime(5), FbxTime(7)));
    EXPECT_EQ(second->GetReferenceTimeSpan(), FbxTimeSpan(FbxTime(0), FbxTime(10)));
}

}  // namespace
