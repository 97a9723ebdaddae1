// Which objects the FBX 7 writer stores, and the "Definitions" section that announces them
// type by type with each type's property template.
#include "fbx/io/fbxwriterfbx7impl.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnodeattribute.h"
#include "fbx/scene/fbxscene.h"

namespace {

bool IsAnimationObject(const FbxObject& object) {
    return object.Is<FbxAnimStack>() || object.Is<FbxAnimLayer>() ||
           object.Is<FbxAnimCurveNode>() || object.Is<FbxAnimCurve>();
}

}  // namespace

// The records of "Objects", grouped as readers expect them: node attributes, then models,
// then the animation objects in the document's order. The root node is implied (id 0); the
// global settings and the document information have sections of their own.
void FbxWriterFbx7_Impl::CollectObjects() {
    std::vector<const FbxObject*> attributes, models, animation;
    for (int i = 0; i < mDocument->GetMemberCount(); ++i) {
        const FbxObject* object = mDocument->GetMember(i);
        if (!object->IsSavable() || (mScene && object == mScene->GetRootNode())) continue;
        if (object->Is<FbxNodeAttribute>()) {
            if (mOptions.model) attributes.push_back(object);
        } else if (object->Is<FbxNode>()) {
            models.push_back(object);
        } else if (IsAnimationObject(*object)) {
            animation.push_back(object);
        }
    }
    mObjects = attributes;
    mTimesOf = nullptr;
    mObjects.insert(mObjects.end(), models.begin(), models.end());
    mObjects.insert(mObjects.end(), animation.begin(), animation.end());
    mWritten = std::unordered_set<const FbxObject*>(mObjects.begin(), mObjects.end());

    mDefinitions.clear();
    mDefinitionIndex.clear();
    if (mScene) AddDefinition(mScene->GetGlobalSettings());
    for (const FbxObject* object : mObjects) AddDefinition(*object);
}

// The first object of a type decides the type's template: a file carries one template per
// type.
void FbxWriterFbx7_Impl::AddDefinition(const FbxObject& object) {
    const auto [found, added] = mDefinitionIndex.emplace(object.GetTypeName(), mDefinitions.size());
    if (!added) {
        ++mDefinitions[found->second].count;
        return;
    }
    const FbxClassId& classId = object.GetClassId();
    const FbxObject* propertyTemplate =
        classId.HasPropertyTemplate() ? mManager.GetDefaultObject(classId) : nullptr;
    mDefinitions.push_back({object.GetTypeName(), 1, propertyTemplate, classId.GetName()});
}

const FbxObject* FbxWriterFbx7_Impl::TemplateFor(const FbxObject& object) const {
    const auto found = mDefinitionIndex.find(object.GetTypeName());
    return found == mDefinitionIndex.end() ? nullptr : mDefinitions[found->second].propertyTemplate;
}

void FbxWriterFbx7_Impl::WriteDefinitions() {
    int total = 0;
    for (const TypeDefinition& definition : mDefinitions) total += definition.count;
    WriteBanner(" Object definitions");
    mIO->FieldWriteBegin("Definitions");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("Version", 100);
    mIO->FieldWriteI("Count", total);
    for (const TypeDefinition& definition : mDefinitions) {
        mIO->FieldWriteBegin("ObjectType");
        mIO->FieldWriteS(definition.typeName);
        mIO->FieldWriteBlockBegin();
        mIO->FieldWriteI("Count", definition.count);
        if (definition.propertyTemplate) {
            mIO->FieldWriteBegin("PropertyTemplate");
            mIO->FieldWriteS(definition.templateName);
            mIO->FieldWriteBlockBegin();
            WriteProperties(*definition.propertyTemplate, nullptr);
            mIO->FieldWriteBlockEnd();
            mIO->FieldWriteEnd();
        }
        mIO->FieldWriteBlockEnd();
        mIO->FieldWriteEnd();
    }
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}
