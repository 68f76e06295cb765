// The plug-in protocol around GetMetadataForFile.
#include "importer/MetadataImporterPlugin.h"

#include <CoreFoundation/CFPlugIn.h>
#include <CoreFoundation/CFString.h>

#include <cstdlib>

#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"

namespace {

/// As the information property list of the bundle names it.
#define kFactoryID "5E0F3A91-27C4-4D6B-9A18-C03B7E2D64F5"

const MDImporterInterfaceStruct testInterfaceFtbl = {
    nullptr,
    MetadataImporterQueryInterface,
    MetadataImporterPluginAddRef,
    MetadataImporterPluginRelease,
    GetMetadataForFile,
};

MetadataImporterPluginType* AsInstance(void* instance) {
    return static_cast<MetadataImporterPluginType*>(instance);
}

}  // namespace

MetadataImporterPluginType* AllocMetadataImporterPluginType(CFUUIDRef factoryID) {
    auto* const instance =
        static_cast<MetadataImporterPluginType*>(std::malloc(sizeof(MetadataImporterPluginType)));
    if (instance == nullptr) return nullptr;
    *instance = {&testInterfaceFtbl, nullptr, 0};
    if (factoryID != nullptr) {
        instance->factoryID = static_cast<CFUUIDRef>(CFRetain(factoryID));
        CFPlugInAddInstanceForFactory(factoryID);
    }
    instance->refCount = 1;
    return instance;
}

void DeallocMetadataImporterPluginType(MetadataImporterPluginType* instance) {
    const CFUUIDRef factoryID = instance->factoryID;
    std::free(instance);
    if (factoryID == nullptr) return;
    CFPlugInRemoveInstanceForFactory(factoryID);
    CFRelease(factoryID);
}

HRESULT MetadataImporterQueryInterface(void* instance, REFIID iid, LPVOID* ppv) {
    const SCoreFoundation<CFUUIDRef> interfaceID(
        CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, iid));
    if (CFEqual(interfaceID, kMDImporterInterfaceID) || CFEqual(interfaceID, IUnknownUUID)) {
        AsInstance(instance)->conduitInterface->AddRef(instance);
        *ppv = instance;
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

ULONG MetadataImporterPluginAddRef(void* instance) {
    return ++AsInstance(instance)->refCount;
}

ULONG MetadataImporterPluginRelease(void* instance) {
    const ULONG left = --AsInstance(instance)->refCount;
    if (left == 0) DeallocMetadataImporterPluginType(AsInstance(instance));
    return left;
}

void* MetadataImporterPluginFactory(CFAllocatorRef /*allocator*/, CFUUIDRef typeID) {
    if (!CFEqual(typeID, kMDImporterTypeID)) return nullptr;
    const SCoreFoundation<CFUUIDRef> factoryID(
        CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR(kFactoryID)));
    return AllocMetadataImporterPluginType(factoryID);
}
