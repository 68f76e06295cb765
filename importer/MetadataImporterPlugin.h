// The plug-in object: factory, interface table and reference count.
#pragma once

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CFUUID.h>
#include <Metadata/MDImporter.h>

#include "importer/MetadataImporter.h"

/// One instance; a pointer to it is the interface pointer that is handed out. Made with malloc,
/// freed by its last Release. The count is a plain number: the service takes and drops references
/// on one thread at a time.
struct MetadataImporterPluginType {
    const MDImporterInterfaceStruct* conduitInterface;
    CFUUIDRef factoryID;  ///< retained, may be null
    UInt32 refCount;
};

/// A new instance with one reference, registered with the factory; null for any type but
/// kMDImporterTypeID.
OSA_IMPORTER_EXPORT void* MetadataImporterPluginFactory(CFAllocatorRef allocator, CFUUIDRef typeID);
/// A new instance with one reference; retains `factoryID` and registers with it unless it is null.
OSA_IMPORTER_EXPORT MetadataImporterPluginType* AllocMetadataImporterPluginType(
    CFUUIDRef factoryID);
/// Frees the instance, then unregisters it.
OSA_IMPORTER_EXPORT void DeallocMetadataImporterPluginType(MetadataImporterPluginType* instance);
/// The importer interface and IUnknown are the same pointer. E_NOINTERFACE and null for any other.
OSA_IMPORTER_EXPORT HRESULT MetadataImporterQueryInterface(void* instance, REFIID iid, LPVOID* ppv);
OSA_IMPORTER_EXPORT ULONG MetadataImporterPluginAddRef(void* instance);
OSA_IMPORTER_EXPORT ULONG MetadataImporterPluginRelease(void* instance);
