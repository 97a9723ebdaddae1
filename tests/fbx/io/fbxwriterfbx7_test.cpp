#include <map>
#include <set>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbxfile/fbxasciireader.h"
#include "tests/fbx/io/fbxio_test_util.h"

namespace {

using namespace fbxfile;
using namespace fbxtest;
using Strings = std::vector<std::string>;
using namespace std::string_literals;

// The names of the records, separated by blanks.
std::string Names(const std::vector<Record>& records) {
    std::string names;
    for (const Record& record : records) names.append(names.empty() ? "" : " ").append(record.name);
    return names;
}

// "Model::Hips" from "Hips\0\x01Model", the way binary files store it.
std::string Readable(const std::string& stored) {
    const size_t at = stored.find("\0\x01"s);
    return at == std::string::npos ? stored : stored.substr(at + 2) + "::" + stored.substr(0, at);
}

const Record* FindObject(const File& file, const std::string& type, const std::string& name) {
    for (const Record* record : file.Find("Objects")->Children(type)) {
        if (Readable(record->values[1].String()) == name) return record;
    }
    return nullptr;
}

// Exports `scene` as a binary file and reads it back with the structural reader.
File WriteBinary(ManagerScope& manager, FbxDocument* scene, const TempDir& dir,
                 const ExportRequest& request = {}) {
    EXPECT_EQ("", Export(manager.get(), scene, dir.File("scene.fbx"), request));
    return ReadChecked(dir.File("scene.fbx"));
}

std::string WriteAscii(ManagerScope& manager, FbxDocument* scene, const TempDir& dir) {
    EXPECT_EQ("", Export(manager.get(), scene, dir.File("scene.fbx"), {.ascii = true}));
    return ReadText(dir.File("scene.fbx"));
}

TEST(FbxWriterFbx7, ObjectRecordsPropertiesAndCurves) {
    TempDir dir;
    ManagerScope manager;
    FbxScene* scene = BuildAnimatedScene(manager.get(), {2, true, 5});
    FbxNode* joint = scene->FindNodeByName("Joint01");
    FbxProperty custom = FbxProperty::Create(
        joint, FbxDoubleDT, "Stiffness",
        FbxPropertyFlags::eAnimatable | FbxPropertyFlags::eUserDefined | FbxPropertyFlags::eHidden);
    custom.Set(0.5);
    custom.SetMinLimit(0.0);
    custom.SetMaxLimit(1.0);
    custom.SetLockBits(12);
    // An integer limit open at one end is written as the type's extreme.
    FbxProperty level = FbxProperty::Create(
        joint, FbxIntDT, "Level", FbxPropertyFlags::eAnimatable | FbxPropertyFlags::eUserDefined);
    level.Set(3);
    level.SetMinLimit(-5.0);
    joint->LclTranslation.Set(FbxDouble3(1, 2.5, -3));
    const File file = WriteBinary(manager, scene, dir);

    const Record* model = FindObject(file, "Model", "Model::Joint01");
    ASSERT_NE(nullptr, model);
    EXPECT_EQ("SLimbNode", model->values[2].Text());
    // Only what differs from the FbxNode template, with type strings, flags and limits.
    Strings properties;
    for (const Record& p : model->Child("Properties70")->children)
        properties.push_back(Texts(p.values));
    EXPECT_EQ((Strings{"SInheritType Senum S S I1", "SDefaultAttributeIndex Sint SInteger S I0",
                       "SLcl Translation SLcl Translation S SA+ D1 D2.5 D-3",
                       "SStiffness SNumber S SAUHLc D0.5 D0 D1",
                       "SLevel SInteger S SAU I3 I-5 I2147483647"}),
              properties);
    const Record* root = FindObject(file, "NodeAttribute", "NodeAttribute::Reference");
    ASSERT_NE(nullptr, root);
    EXPECT_EQ("SNull SSkeleton SRoot", Texts(root->Child("TypeFlags")->values));

    const Record* curve = file.Find("Objects/AnimationCurve");
    EXPECT_EQ("i[8452]", Texts(curve->Child("KeyAttrFlags")->values));
    EXPECT_EQ("f[0,0,4.09994609e-31,0]", Texts(curve->Child("KeyAttrDataFloat")->values))
        << "weights 3333/3333 packed into one word";
}

TEST(FbxWriterFbx7, KeyAttributesShareRunsOfConsecutiveKeysOnly) {
    TempDir dir;
    ManagerScope manager;
    FbxScene* scene = FbxScene::Create(manager.get(), "My Scene");
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "Layer");
    FbxAnimStack::Create(scene, "Take")->AddMember(layer);
    FbxNode* node = FbxNode::Create(scene, "Node");
    scene->GetRootNode()->AddChild(node);
    FbxAnimCurve* curve = node->LclRotation.GetCurve(layer, "Lcl Rotation", "X", true);
    for (int i = 0; i < 5; ++i) {
        curve->KeySetInterpolation(curve->KeyAdd(KeyTime(i)),
                                   i == 3 ? FbxAnimCurveDef::eInterpolationConstant
                                          : FbxAnimCurveDef::eInterpolationLinear);
    }
    node->LclRotation.GetCurve(layer, "Lcl Rotation", "Y", true);  // keyless

    const File file = WriteBinary(manager, scene, dir);
    const auto curves = file.Find("Objects")->Children("AnimationCurve");
    ASSERT_EQ(2u, curves.size());
    EXPECT_EQ("i[3,1,1]", Texts(curves[0]->Child("KeyAttrRefCount")->values));
    EXPECT_EQ("Default", Names(curves[1]->children)) << "no keys: only the default";
    // ASCII files keep the bit patterns of the packed weights as integers.
    EXPECT_NE(std::string::npos,
              WriteAscii(manager, scene, dir)
                  .find("\ta: 0,0,218434821,0,0,0,218434821,0,0,0,218434821,0\n"));
}

TEST(FbxWriterFbx7, ConnectionsAndTakes) {
    TempDir dir;
    ManagerScope manager;
    const File file =
        WriteBinary(manager, BuildAnimatedScene(manager.get(), {2, true, 3, "My\tTake 1"}), dir);
    std::map<int64_t, std::string> names{{0, "RootNode"}};
    for (const Record& object : file.Find("Objects")->children) {
        names[object.values[0].Int()] = Readable(object.values[1].String());
    }
    std::set<std::string> links;
    for (const Record& c : file.Find("Connections")->children) {
        links.insert(c.values[0].String() + " " + names[c.values[1].Int()] + " -> " +
                     names[c.values[2].Int()] +
                     (c.values.size() > 3 ? " " + c.values[3].String() : ""));
    }
    EXPECT_EQ(27u, file.Find("Connections")->children.size());
    // The links assimp needs for the hierarchy and the keys are checked by the round trip.
    for (const char* expected : {"OO NodeAttribute::Joint01 -> Model::Joint01",
                                 "OO AnimLayer::Base Layer -> AnimStack::My\tTake 1"}) {
        EXPECT_EQ(1u, links.count(expected)) << expected;
    }
    const Record* takes = file.Find("Takes");
    EXPECT_EQ("SMy\tTake 1", Texts(takes->Child("Current")->values));
    EXPECT_EQ("SMy_Take_1.tak", Texts(takes->Find("Take/FileName")->values));
    EXPECT_EQ("L0 L769769300", Texts(takes->Find("Take/LocalTime")->values));
    EXPECT_EQ("L0 L769769300", Texts(takes->Find("Take/ReferenceTime")->values));
}

// Names come from the user: whatever they hold, each comment naming them stays one line and
// the file stays readable.
TEST(FbxWriterFbx7, HostileNamesKeepAsciiLinesWhole) {
    TempDir dir;
    ManagerScope manager;
    FbxScene* scene = BuildAnimatedScene(manager.get(), {1, true, 2});
    const std::string hostile = "Left\nArm\r\f\x1b\x7f;\"x\" {}";
    scene->FindNodeByName(NodeName(1).c_str())->SetName(hostile.c_str());
    const std::string text = WriteAscii(manager, scene, dir);
    EXPECT_NE(std::string::npos,
              text.find(";Model::Left&lf;Arm&cr;&#12;&#27;&#127;;\"x\" {}, Model::Reference\n"));
    File file;
    std::string error;
    ASSERT_TRUE(ReadAsciiFile(dir.File("scene.fbx"), file, error)) << error;
    EXPECT_NE(nullptr, FindObject(file, "Model", "Model::" + hostile));
}

TEST(FbxWriterFbx7, DeterministicFilesAreByteIdentical) {
    TempDir dir;
    for (bool ascii : {false, true}) {
        std::vector<std::vector<uint8_t>> files;
        for (int run = 0; run < 2; ++run) {  // the same scene twice, and a rebuilt one
            ManagerScope manager;
            FbxScene* scene = BuildAnimatedScene(manager.get(), {3, false, 50});
            for (int again = 0; again < 2; ++again) {
                ASSERT_EQ("", Export(manager.get(), scene, dir.File("det.fbx"), {.ascii = ascii}));
                files.push_back(ReadAllBytes(dir.File("det.fbx")));
                if (!ascii) ReadChecked(dir.File("det.fbx"));
            }
        }
        for (const auto& bytes : files) EXPECT_EQ(files[0], bytes) << (ascii ? "ascii" : "binary");
    }
    // Without the flag, ids are the objects' addresses.
    ManagerScope manager;
    FbxScene* scene = BuildAnimatedScene(manager.get(), {1, true, 2});
    const File file = WriteBinary(manager, scene, dir, {.deterministic = false});
    EXPECT_EQ(static_cast<int64_t>(reinterpret_cast<uintptr_t>(scene->FindNodeByName("Joint01"))),
              FindObject(file, "Model", "Model::Joint01")->values[0].Int());
}

TEST(FbxWriterFbx7, OlderVersionsHeadersAndKeyVersion) {
    for (const auto& [name, version, header, key] :
         {std::tuple{"FBX201100", 7100u, "I1003", "I4007"},
          {"FBX201400", 7400u, "I1003", "I4009"},
          {"FBX201800", 7500u, "I1003", "I4009"},
          {"FBX201000", 7700u, "I1004", "I4009"}}) {
        TempDir dir;
        ManagerScope manager;
        const File file = WriteBinary(manager, BuildAnimatedScene(manager.get(), {1, true, 2}), dir,
                                      {.version = name});
        EXPECT_EQ(version, file.version) << name;
        EXPECT_EQ(header, Texts(file.Find("FBXHeaderExtension/FBXHeaderVersion")->values));
        EXPECT_EQ(key, Texts(file.Find("Objects/AnimationCurve/KeyVer")->values));
    }
}

TEST(FbxWriterFbx7, FailedWritesReportAndKeepTheOldFile) {
    TempDir dir;
    ManagerScope manager;
    FbxScene* scene = BuildAnimatedScene(manager.get(), {1, true, 2});
    const std::string target = dir.File("take.fbx");
    std::ofstream(target) << "previous take";
    EXPECT_EQ("Invalid document handle", Export(manager.get(), nullptr, target));

    // Fault injection: the file system refuses every byte past a limit, for limits spread
    // over the whole file, with the output unbuffered so that every write meets it. The
    // first refusal is what the user reads, whichever section it hit.
    manager->GetIOSettings()->SetIntProp(EXP_CACHE_SIZE, 0);
    for (const bool ascii : {false, true}) {
        ASSERT_EQ("", Export(manager.get(), scene, dir.File("whole.fbx"), {.ascii = ascii}));
        const size_t size = std::filesystem::file_size(dir.File("whole.fbx"));
        std::filesystem::remove(dir.File("whole.fbx"));
        // Every byte of the file header, then about sixty points over the rest.
        const size_t step = size / 60 + 1;
        for (size_t limit = 0; limit < size; limit += limit < 32 ? 1 : step) {
            std::string error;
            WithFileSizeLimit(
                limit, [&] { error = Export(manager.get(), scene, target, {.ascii = ascii}); });
            ASSERT_EQ("Could not write " + target + ": File too large", error)
                << limit << (ascii ? " ascii" : " binary");
            ASSERT_EQ("previous take", ReadText(target)) << limit;
            ASSERT_EQ(Strings{"take.fbx"}, dir.Entries()) << limit;
        }
    }
}

}  // namespace
