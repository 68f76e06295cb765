// The running application, other applications on disk and among the processes, launching and
// activating them, modifier keys, and the application's help book.
//
// Unless they say otherwise, functions throw the platform's status; questions that begin with Is,
// SignatureOfPSN and GetApplicationPSN never throw.
#pragma once

#include <CoreServices/Processes.h>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"
#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

// --- The running application

/// The name of its program, else of its bundle. Asserts "CFBundleGetMainBundle() != NULL" and
/// "cfAppName && CFGetTypeID(cfAppName) == CFStringGetTypeID()"; empty when it has none.
TCLString GetApplicationName();
/// Empty when it has none; not thrown.
TCLString GetApplicationBundleID();
/// Its bundle, or its program file when it has none.
CFileSpec GetApplicationFileSpec();
ProcessSerialNumber GetCurrentApplication();
/// The one in front.
ProcessSerialNumber GetActiveApplication();

// --- Processes

/// The process's bundle, or what stands for it (Processes.h).
CFileSpec FileOfPSN(const ProcessSerialNumber& psn);
/// The creator signature, '????' of a process that has none; 'null' when nobody has the number.
OSType SignatureOfPSN(const ProcessSerialNumber& psn);
/// Whether the process works in the background only.
bool IsFBA(const ProcessSerialNumber& psn);

// The first process with the signature ('????' is that of all that have none), bundle identifier
// (letter for letter) or location; false, and `psn` as it was, when there is none.
bool GetApplicationPSN(UInt32 signature, ProcessSerialNumber& psn);
bool GetApplicationPSN(CFStringRef bundleID, ProcessSerialNumber& psn);
bool GetApplicationPSN(const CFileSpec& application, ProcessSerialNumber& psn);

bool IsApplicationRunning(UInt32 signature);
bool IsApplicationRunning(const CFileSpec& application);
bool IsApplicationRunning(const ProcessSerialNumber& psn);

// --- Applications on disk; kLSApplicationNotFoundErr when there is none.

/// The NoThrow forms return the status, and write `application` only when it is found.
OSStatus FindApplicationNoThrow(CFStringRef bundleID, FSRef& application);
CFileSpec FindApplication(CFStringRef bundleID);
/// A running one goes before one that is only on disk.
OSStatus FindApplicationNoThrow(UInt32 signature, FSRef& application);
CFileSpec FindApplication(UInt32 signature);

// --- Launching: never among the recent items, and to the front only with `inFront`. The last
// argument has no meaning.

void LaunchAnApplication(const FSRef& app, bool inFront, bool unused);
void LaunchAnApplication(CFStringRef bundleID, bool inFront, bool unused);
/// The older way; an alias is followed.
void LaunchAnApplication(const FSSpec* app, bool inFront, bool unused);

// --- Activating

/// Wakes the calling process and brings it to the front. kCannotSetFrontProcessErr is returned,
/// other failures are thrown. The argument has no meaning.
OSStatus ActivateThisApplication(bool unused);
void ActivateAnApplication(const ProcessSerialNumber& psn);
// The first such process; nothing happens when there is none.
void ActivateAnApplication(UInt32 signature);
void ActivateAnApplication(CFStringRef bundleID);
void ActivateAnApplication(const CFileSpec& application);

// --- Modifier keys of the event that is being handled

bool IsCommandDown();
bool IsShiftDown();
bool IsOptionDown();
bool IsControlDown();

// --- Apple events

/// Throws errAEParamMissed when a required parameter of the event was not read, errAENotAppleEvent
/// for what is none.
void CheckForRequiredParams(const CAEDescReader& event);

// --- The help book of the main bundle ("CFBundleHelpBookName"); fnfErr without main bundle.

/// Once a process; does nothing when it was registered before.
void RegisterHelpBook();
/// A page by its path in the book; these register the book first.
void GotoHelpPage(const TCLString& path);
void GotoHelpPage(const TCLString& path, const TCLString& anchor);
void SearchHelpBook(const TCLString& query);
void GotoHelpAnchor(const TCLString& anchor);
