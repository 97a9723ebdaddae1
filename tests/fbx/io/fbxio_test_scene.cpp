#include <cmath>
#include <cstdio>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"
#include "tests/fbx/io/fbxio_test_util.h"

namespace fbxtest {

namespace {

void AddKeys(FbxProperty& property, FbxAnimLayer* layer, int node, int keys,
             float (*value)(int, int, int)) {
    const char* channels[] = {"X", "Y", "Z"};
    for (int axis = 0; axis < 3; ++axis) {
        FbxAnimCurve* curve =
            property.GetCurve(layer, property.GetName().Buffer(), channels[axis], true);
        curve->KeyModifyBegin();
        curve->ResizeKeyBuffer(keys);
        for (int key = 0; key < keys; ++key) {
            const int index = curve->KeyAdd(KeyTime(key));
            curve->KeySetValue(index, value(node, axis, key));
            curve->KeySetInterpolation(index, FbxAnimCurveDef::eInterpolationLinear);
        }
        curve->KeyModifyEnd();
    }
}

}  // namespace

std::string NodeName(int node) {
    char name[32];
    std::snprintf(name, sizeof name, "Joint%02d", node);
    return node == 0 ? "Reference" : name;
}

int ParentOf(int node, const AnimatedSceneShape& shape) {
    return node == 0 ? -1 : shape.chain ? node - 1 : (node - 1) / 2;
}

FbxTime KeyTime(int key) {
    return FbxTime(static_cast<FbxLongLong>(key) * 1176000);
}

float TranslationValue(int node, int axis, int key) {
    return static_cast<float>(node * 10 + axis + 5.0 * std::sin(0.01 * key + axis));
}

float RotationValue(int node, int axis, int key) {
    return static_cast<float>(60.0 * std::sin(0.003 * key * (axis + 1) + node));
}

FbxScene* BuildAnimatedScene(FbxManager* manager, const AnimatedSceneShape& shape) {
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    FbxDocumentInfo* info = FbxDocumentInfo::Create(manager, "SceneInfo");
    info->mTitle = "Test scene";
    info->mComment = "written by the writer's tests";
    scene->SetSceneInfo(info);
    scene->GetGlobalSettings().SetTimeMode(FbxTime::eFrames120);

    FbxAnimStack* stack = FbxAnimStack::Create(scene, shape.takeName);
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "Base Layer");
    stack->AddMember(layer);
    scene->SetCurrentAnimationStack(stack);
    stack->SetLocalTimeSpan(FbxTimeSpan(FbxTime(0), KeyTime(shape.keys - 1)));

    std::vector<FbxNode*> nodes;
    for (int i = 0; i <= shape.joints; ++i) {
        FbxNode* node = FbxNode::Create(scene, NodeName(i).c_str());
        FbxSkeleton* skeleton = FbxSkeleton::Create(scene, NodeName(i).c_str());
        skeleton->SetSkeletonType(i == 0 ? FbxSkeleton::eRoot : FbxSkeleton::eLimbNode);
        node->SetNodeAttribute(skeleton);
        FbxNode* parent = i == 0 ? scene->GetRootNode() : nodes[ParentOf(i, shape)];
        parent->AddChild(node);
        if (i > 0) {
            node->SetTransformationInheritType(FbxTransform::eInheritRSrs);
            node->LclTranslation.Set(FbxDouble3(
                TranslationValue(i, 0, 0), TranslationValue(i, 1, 0), TranslationValue(i, 2, 0)));
            AddKeys(node->LclTranslation, layer, i, shape.keys, &TranslationValue);
            AddKeys(node->LclRotation, layer, i, shape.keys, &RotationValue);
        }
        nodes.push_back(node);
    }
    return scene;
}

}  // namespace fbxtest
