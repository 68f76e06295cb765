// Scripts in files, for components that leave them to the platform.
#pragma once

#include <OpenScripting/OSA.h>

namespace osa {

/// OSALoadFile with the instance's load and compile; `storable` is written on success only.
OSAError loadScriptFile(ComponentInstance instance, const FSRef& file, Boolean& storable,
                        SInt32 modeFlags, OSAID& script);
/// OSAStoreFile with the instance's store.
OSAError storeScriptFile(ComponentInstance instance, OSAID script, DescType desiredType,
                         SInt32 modeFlags, const FSRef& file);

}  // namespace osa
