// The component's calls, one for each entry of its table, as work on an instance. All run on the
// engine's thread; errOSAScriptError with an exception pending, or stopped, as Instance::perform
// has it.
#pragma once

#include "platform/osa/javascript/Instance.h"

namespace osa::script {

// Scripts and values
OSAError load(Instance&, const AEDesc*, SInt32 mode, OSAID*);
OSAError store(Instance&, OSAID, DescType, SInt32 mode, AEDesc*);
OSAError compile(Instance&, const AEDesc*, SInt32 mode, OSAID*);
OSAError copyID(Instance&, OSAID, OSAID*);
OSAError getSource(Instance&, OSAID, DescType, AEDesc*);
OSAError getScriptInfo(Instance&, OSAID, OSType selector, SInt32*);
OSAError display(Instance&, OSAID, DescType, SInt32 mode, AEDesc*);
OSAError coerceFromDesc(Instance&, const AEDesc*, SInt32 mode, OSAID*);
OSAError coerceToDesc(Instance&, OSAID, DescType, SInt32 mode, AEDesc*);

// Running
OSAError execute(Instance&, OSAID, OSAID context, SInt32 mode, OSAID*);
OSAError executeEvent(Instance&, const AppleEvent*, OSAID context, SInt32 mode, OSAID*);

// Handlers and properties
OSAError getHandler(Instance&, SInt32 mode, OSAID, const AEDesc*, OSAID*);
OSAError getProperty(Instance&, SInt32 mode, OSAID, const AEDesc*, OSAID*);
OSAError getPropertyNames(Instance&, SInt32 mode, OSAID, AEDescList*);
OSAError getHandlerNames(Instance&, SInt32 mode, OSAID, AEDescList*);
/// Whether the script handles 'aevt' 'odoc'. What fails on the way counts as no.
bool handlesOpening(Script& script);

}  // namespace osa::script
