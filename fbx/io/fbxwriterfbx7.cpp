#include "fbx/io/fbxwriterfbx7.h"

#include <locale.h>

#include <filesystem>

#include "fbx/io/fbxfileversion.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/io/fbxwriterfbx7impl.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"

namespace {

// Numbers in FBX files use "." whatever the user's locale. The switch is per thread, so a
// host's other threads keep their locale during the write.
class ScopedNumericCLocale {
public:
    ScopedNumericCLocale() {
        locale_t base = duplocale(uselocale(static_cast<locale_t>(0)));
        if (!base) return;
        mC = newlocale(LC_NUMERIC_MASK, "C", base);
        if (!mC) {
            freelocale(base);
            return;
        }
        mPrevious = uselocale(mC);
    }
    ~ScopedNumericCLocale() {
        if (!mC) return;
        uselocale(mPrevious);
        freelocale(mC);
    }
    ScopedNumericCLocale(const ScopedNumericCLocale&) = delete;
    ScopedNumericCLocale& operator=(const ScopedNumericCLocale&) = delete;

private:
    locale_t mC = static_cast<locale_t>(0);
    locale_t mPrevious = static_cast<locale_t>(0);
};

}  // namespace

FbxWriteOptions FbxWriteOptions::Read(const FbxIOSettings* settings) {
    FbxWriteOptions options;
    if (!settings) return options;
    options.deterministic = settings->GetBoolProp(EXP_FBX_DETERMINISTIC, options.deterministic);
    options.model = settings->GetBoolProp(EXP_FBX_MODEL, options.model);
    options.animation = settings->GetBoolProp(EXP_FBX_ANIMATION, options.animation);
    options.character = settings->GetBoolProp(EXP_FBX_CHARACTER, options.character);
    options.compressArrays = settings->GetBoolProp(EXP_FBX_COMPRESS_ARRAYS, options.compressArrays);
    options.compressLevel = settings->GetIntProp(EXP_FBX_COMPRESS_LEVEL, options.compressLevel);
    options.compressMinimumSize =
        settings->GetIntProp(EXP_FBX_COMPRESS_MINSIZE, options.compressMinimumSize);
    options.cacheSize = settings->GetIntProp(EXP_CACHE_SIZE, options.cacheSize);
    return options;
}

FbxWriterFbx7_Impl::FbxWriterFbx7_Impl(FbxManager& manager, FbxIOSettings* settings, bool binary)
    : mManager(manager),
      mSettings(settings),
      mBinary(binary),
      mFileVersionName(FBX_DEFAULT_FILE_VERSION) {}

bool FbxWriterFbx7_Impl::FileCreate(const char* fileName) {
    mStatus.Clear();
    mOptions = FbxWriteOptions::Read(mSettings);
    const FbxFileVersion* version = FbxFindFileVersion(mFileVersionName.Buffer());
    mVersion = version ? version->version : 7700;
    mIO = std::make_unique<FbxIO>(FbxIO::ImplementationForVersion(mVersion));
    mIO->CacheSize(mOptions.cacheSize);
    mIO->CompressArrays(mOptions.compressArrays);
    mIO->CompressLevel(mOptions.compressLevel);
    mIO->CompressMinimumSize(mOptions.compressMinimumSize);
    // Messages name the file as the user finds it; "-" is standard output, not a file.
    std::string path = fileName ? fileName : "";
    std::error_code error;
    if (path != "-") path = std::filesystem::absolute(path, error).string();
    if (!mIO->ProjectCreateEmpty(path.c_str(), mVersion, mBinary)) {
        Check();
        return false;
    }
    // Deterministic files take every time-derived byte from the zero time.
    if (mOptions.deterministic) mIO->SetCreationTime(FbxCreationTime{});
    return true;
}

bool FbxWriterFbx7_Impl::FileClose() {
    if (!mIO || !mIO->IsOpen()) {
        mStatus.SetCode(FbxStatus::eFailure, "File not created");
        return false;
    }
    if (mStatus.Error()) {
        mIO->ProjectCancel();
        return false;
    }
    if (mIO->ProjectClose()) return true;
    Check();
    return false;
}

bool FbxWriterFbx7_Impl::Write(FbxDocument* document) {
    if (!document) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid document handle");
        return false;
    }
    if (!mIO || !mIO->IsOpen()) {
        mStatus.SetCode(FbxStatus::eFailure, "File not created");
        return false;
    }
    ScopedNumericCLocale numericLocale;
    mDocument = document;
    mScene = FbxCast<FbxScene>(document);
    CollectObjects();
    return WriteSections();
}

bool FbxWriterFbx7_Impl::WriteSections() {
    WriteHeaderExtension();
    if (!Check()) return false;
    if (mBinary) WriteTopLevelBinaryFields();
    WriteGlobalSettings();
    WriteDocuments();
    WriteReferences();
    if (!Check()) return false;
    WriteDefinitions();
    if (!Check()) return false;
    WriteObjects();
    if (!Check()) return false;
    WriteConnections();
    if (!Check()) return false;
    if (mOptions.animation) WriteTakes();
    return Check();
}

// Any error of the field writer stops the write. Its first error is the cause (a full disk,
// a refused rename), so it is passed on as it is rather than renamed after the section.
bool FbxWriterFbx7_Impl::Check() {
    const FbxStatus& status = mIO->GetStatus();
    if (!status.Error()) return true;
    mStatus.SetCode(status.GetCode(), status.GetErrorString());
    return false;
}

void FbxWriterFbx7_Impl::WriteBanner(const char* title, bool takes) {
    mIO->WriteComments("");
    mIO->WriteComments(title);
    mIO->WriteComments(takes
                           ? "----------------------------------------------------"
                           : "------------------------------------------------------------------");
    mIO->WriteComments("");
}

// The root node is 0 in every file. Deterministic ids count from the exported document,
// so they repeat from run to run; otherwise the object's address serves (unique while the
// objects live).
FbxLongLong FbxWriterFbx7_Impl::GetObjectId(const FbxObject& object) const {
    if (mScene && &object == mScene->GetRootNode()) return 0;
    if (mOptions.deterministic) {
        return static_cast<FbxLongLong>(object.GetUniqueID() - mDocument->GetUniqueID());
    }
    return static_cast<FbxLongLong>(reinterpret_cast<uintptr_t>(&object));
}

bool FbxWriterFbx7_Impl::IsWritten(const FbxObject& object) const {
    return mWritten.count(&object) > 0 || (mScene && &object == mScene->GetRootNode());
}

FbxWriterFbx7::FbxWriterFbx7(FbxManager& manager, FbxIOSettings* settings, EExportMode mode)
    : mImpl(std::make_unique<FbxWriterFbx7_Impl>(manager, settings, mode == eBINARY)) {}

FbxWriterFbx7::~FbxWriterFbx7() = default;

void FbxWriterFbx7::SetFileExportVersion(const FbxString& version) {
    mImpl->mFileVersionName =
        FbxFindFileVersion(version.Buffer()) ? version : FbxString(FBX_DEFAULT_FILE_VERSION);
}

bool FbxWriterFbx7::FileCreate(const char* fileName) {
    return mImpl->FileCreate(fileName);
}
bool FbxWriterFbx7::FileClose() {
    return mImpl->FileClose();
}
bool FbxWriterFbx7::IsFileOpen() const {
    return mImpl->mIO && mImpl->mIO->IsOpen();
}
bool FbxWriterFbx7::Write(FbxDocument* document) {
    return mImpl->Write(document);
}
FbxStatus& FbxWriterFbx7::GetStatus() {
    return mImpl->mStatus;
}
