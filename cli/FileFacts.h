// What the catalog and the forks tell of one file or folder, without reading what is in it.
#pragma once

#include <CoreServices/Files.h>

#include <string>

#include "cli/JsonValue.h"

namespace osa::cli {

/// The facts as an object: path, name, kind, volume, nodeID, mode, locked; type, creator (null when
/// there is none), flags (names), label; created, modified, accessed, backedUp (ISO 8601 in UTC);
/// dataForkSize and resourceForkSize of a file; finderInfoIn, resourceForkIn, appleDouble (places).
/// `facts` is filled on noErr.
OSStatus gatherFacts(const FSRef& ref, const std::string& path, Json& facts);

/// Aligned "key = value" lines for people; nothing in them can steer a terminal.
std::string factsAsText(const Json& facts);

}  // namespace osa::cli
