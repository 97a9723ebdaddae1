// The "Connections" section of the FBX 7 writer.
#include "fbx/io/fbxwriterfbx7impl.h"
#include "fbx/scene/fbxdocument.h"

// Each written object's links to written destinations: objects ("OO"), properties ("OP"), and
// from its properties to objects ("PO") and properties ("PP"). Links to a document are
// membership, not content, and stay out.
void FbxWriterFbx7_Impl::WriteConnections() {
    const auto wanted = [&](const FbxObject* destination) {
        return destination && !destination->Is<FbxDocument>() && IsWritten(*destination);
    };
    WriteBanner(" Object connections");
    mIO->FieldWriteBegin("Connections");
    mIO->FieldWriteBlockBegin();
    for (const FbxObject* object : mObjects) {
        for (int i = 0; i < object->GetDstObjectCount(); ++i) {
            const FbxObject* destination = object->GetDstObject(i);
            if (wanted(destination)) WriteConnection("OO", *object, nullptr, *destination, nullptr);
        }
        for (int i = 0; i < object->GetDstPropertyCount(); ++i) {
            const FbxProperty property = object->GetDstProperty(i);
            if (!wanted(property.GetFbxObject())) continue;
            WriteConnection("OP", *object, nullptr, *property.GetFbxObject(),
                            property.GetHierarchicalName().Buffer());
        }
        for (FbxProperty p = object->GetFirstProperty(); p.IsValid();
             p = object->GetNextProperty(p)) {
            const FbxString name = p.GetHierarchicalName();
            for (int i = 0; i < p.GetDstObjectCount(); ++i) {
                if (wanted(p.GetDstObject(i))) {
                    WriteConnection("PO", *object, name.Buffer(), *p.GetDstObject(i), nullptr);
                }
            }
            for (int i = 0; i < p.GetDstPropertyCount(); ++i) {
                const FbxProperty target = p.GetDstProperty(i);
                if (!wanted(target.GetFbxObject())) continue;
                WriteConnection("PP", *object, name.Buffer(), *target.GetFbxObject(),
                                target.GetHierarchicalName().Buffer());
            }
        }
        if (mIO->GetStatus().Error()) break;
    }
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

// C: kind, source id[, source property], destination id[, destination property]; in ASCII
// after a blank line and a comment naming both ends.
void FbxWriterFbx7_Impl::WriteConnection(const char* kind, const FbxObject& source,
                                         const char* sourceProperty, const FbxObject& destination,
                                         const char* destinationProperty) {
    if (!mBinary) {
        mIO->WriteComments("");
        const FbxString ends =
            source.GetNameWithNameSpacePrefix() + ", " + destination.GetNameWithNameSpacePrefix();
        mIO->WriteComments(ends.View());
    }
    mIO->FieldWriteBegin("C");
    mIO->FieldWriteS(kind);
    mIO->FieldWriteLL(GetObjectId(source));
    if (sourceProperty) mIO->FieldWriteS(sourceProperty);
    mIO->FieldWriteLL(GetObjectId(destination));
    if (destinationProperty) mIO->FieldWriteS(destinationProperty);
    mIO->FieldWriteEnd();
}
