// All of Core Foundation.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/CFUUID.h>
#if __has_include(<CoreFoundation/CFBundle.h>)
#include <CoreFoundation/CFBundle.h>
#endif
#if __has_include(<CoreFoundation/CFPlugIn.h>)
#include <CoreFoundation/CFPlugIn.h>
#endif
