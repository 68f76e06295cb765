// The plug-in's object model, called through the published plug-in calls and a plain table of
// functions.
#include <CoreFoundation/CFPlugIn.h>
#include <Metadata/MDImporter.h>
#include <dlfcn.h>

#include "tests/support/ImportFixture.h"

namespace osa::test {
namespace {

class PluginObject : public testing::Test {
  protected:
    void SetUp() override {
        const auto url = urlOf(std::getenv("OSA_IMPORTER"), true);
        plugIn_ = CFRef<CFPlugInRef>::Adopt(CFPlugInCreate(kCFAllocatorDefault, url.get()));
        ASSERT_TRUE(plugIn_);
        factory_ = CFRef<CFUUIDRef>::Adopt(CFUUIDCreateFromString(
            kCFAllocatorDefault, CFSTR("5e0f3a91-27c4-4d6b-9a18-c03b7e2d64f5")));
    }
    IUnknownVTbl** create() {
        return static_cast<IUnknownVTbl**>(
            CFPlugInInstanceCreate(kCFAllocatorDefault, factory_.get(), kMDImporterTypeID));
    }

    CFRef<CFPlugInRef> plugIn_;
    CFRef<CFUUIDRef> factory_;
};

TEST_F(PluginObject, CountsItsReferencesAndKeepsThePlugInAlive) {
    IUnknownVTbl** const instance = create();
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ((*instance)->_reserved, nullptr);
    const CFIndex retained = CFGetRetainCount(plugIn_.get());
    void* importer = nullptr;
    void* unknown = nullptr;
    EXPECT_EQ((*instance)->QueryInterface(instance, CFUUIDGetUUIDBytes(kMDImporterInterfaceID),
                                          &importer),
              S_OK);
    EXPECT_EQ((*instance)->QueryInterface(instance, CFUUIDGetUUIDBytes(IUnknownUUID), &unknown),
              S_OK);
    EXPECT_EQ(importer, instance);
    EXPECT_EQ(unknown, instance);
    void* other = instance;
    const HRESULT refused =
        (*instance)->QueryInterface(instance, CFUUIDGetUUIDBytes(kMDImporterTypeID), &other);
    EXPECT_EQ(static_cast<UInt32>(refused), 0x80000004U);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ((*instance)->AddRef(instance), 4U) << "the refused interface took no reference";
    for (ULONG left = 3; left > 0; --left) EXPECT_EQ((*instance)->Release(instance), left);
    EXPECT_EQ((*instance)->Release(instance), 0U);
    EXPECT_EQ(CFGetRetainCount(plugIn_.get()), retained - 1);
}

TEST_F(PluginObject, MayBeLoadedTwiceAndGivenBackInAnyOrder) {
    plugIn_.reset();
    for (const bool firstGoesFirst : {true, false}) {
        auto first = loadImporter();
        auto second = loadImporter();
        (firstGoesFirst ? first : second).reset();
        auto third = loadImporter();
        (firstGoesFirst ? second : first).reset();
        EXPECT_FALSE(third->import("/nowhere").error.empty());
    }
    EXPECT_EQ(create(), nullptr) << "with the last plug-in its factory went";
}

TEST_F(PluginObject, ServesItsTypeAloneAndLeaksNothing) {
    IUnknownVTbl** const first = create();
    (*first)->Release(first);
    const Resources before;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(
            CFPlugInInstanceCreate(kCFAllocatorDefault, factory_.get(), kMDImporterInterfaceID),
            nullptr);
        IUnknownVTbl** const instance = create();
        (*instance)->Release(instance);
    }
    EXPECT_EQ(Resources(), before);
    EXPECT_EQ(CFPlugInInstanceCreate(kCFAllocatorDefault, kMDImporterTypeID, kMDImporterTypeID),
              nullptr)
        << "no factory of that identifier is registered";
}

TEST_F(PluginObject, ExportsItsNamesAndTheExtensionRoutinesAndNothingElse) {
    const std::string program =
        std::string(std::getenv("OSA_IMPORTER")) + "/Contents/Linux/OSAImporter";
    void* const loaded = dlopen(program.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(loaded, nullptr) << dlerror();
    for (const char* const name :
         {"MetadataImporterPluginFactory", "AllocMetadataImporterPluginType",
          "DeallocMetadataImporterPluginType", "MetadataImporterQueryInterface",
          "MetadataImporterPluginAddRef", "MetadataImporterPluginRelease", "GetMetadataForFile",
          "FSGetFinderInfo", "FSDeleteContainer", "HFSNameGetUnicodeName", "GetTempBuffer",
          "FSCopyFork"}) {
        EXPECT_NE(dlsym(loaded, name), nullptr) << name;
    }
    EXPECT_EQ(dlsym(loaded, "FURLInstallCoercionHandlers"), nullptr);
    const auto allocate =
        reinterpret_cast<void* (*)(CFUUIDRef)>(dlsym(loaded, "AllocMetadataImporterPluginType"));
    auto** const unregistered = static_cast<IUnknownVTbl**>(allocate(nullptr));
    ASSERT_NE(unregistered, nullptr);
    EXPECT_EQ((*unregistered)->Release(unregistered), 0U);
    dlclose(loaded);
}

}  // namespace
}  // namespace osa::test
