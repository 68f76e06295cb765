// CFPlugIn: bundles whose information dictionary declares factories, found by type.
//
// A plug-in's Info.plist maps factory identifiers to function names ("CFPlugInFactories") and type
// identifiers to lists of factories ("CFPlugInTypes"), both as UUID texts.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFUUID.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __CFBundle* CFPlugInRef;

/// Makes an instance of `typeUUID`; null when the factory does not serve that type. The instance
/// belongs to the caller, who gives it back through its Release.
typedef void* (*CFPlugInFactoryFunction)(CFAllocatorRef allocator, CFUUIDRef typeUUID);

/// The plug-in at `url`, its factories registered for the process; the caller releases it. The same
/// object while an earlier one of that folder lives; a factory that another plug-in has registered
/// stays with that one. Null when there is no bundle or it declares no factories. Its program is
/// loaded with the first instance.
OSA_PLATFORM_EXPORT CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator,
                                               CFURLRef url) CF_RETURNS_RETAINED;
/// The bundle of a plug-in, borrowed.
OSA_PLATFORM_EXPORT CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn);
/// Factory identifiers (CFUUID) that the plug-in declares for the type; the caller releases the
/// array.
OSA_PLATFORM_EXPORT CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(
    CFUUIDRef typeUUID, CFPlugInRef plugIn) CF_RETURNS_RETAINED;
/// Calls the factory's function, loading its program when need be. Null when the factory is not
/// registered, cannot be loaded or refuses the type.
OSA_PLATFORM_EXPORT void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factoryUUID,
                                                 CFUUIDRef typeUUID);

/// An instance keeps its plug-in alive from Add to Remove.
OSA_PLATFORM_EXPORT void CFPlugInAddInstanceForFactory(CFUUIDRef factoryUUID);
OSA_PLATFORM_EXPORT void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryUUID);

#ifdef __cplusplus
}
#endif
