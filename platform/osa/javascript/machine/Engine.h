// The script engine's headers, included in one place; the rest of the room names no other.
#pragma once

#include <js/Array.h>
#include <js/ArrayBuffer.h>
#include <js/BigInt.h>
#include <js/CompilationAndEvaluation.h>
#include <js/ContextOptions.h>
#include <js/Conversions.h>
#include <js/Date.h>
#include <js/Exception.h>
#include <js/GCAPI.h>
#include <js/Initialization.h>
#include <js/Interrupt.h>
#include <js/MemoryCallbacks.h>
#include <js/Object.h>
#include <js/Promise.h>
#include <js/PropertyAndElement.h>
#include <js/SourceText.h>
#include <js/String.h>
#include <js/experimental/TypedData.h>
#include <jsapi.h>
#include <jsfriendapi.h>
