// Sample scripts: a JSON description of one file or bundle, written to disk in the form it asks
// for.
//
//   name       of the file or bundle, in the folder it is written to
//   type, creator   four characters each (default none), flags a number
//   store      where fork and Finder information go: "._" (default), ".AppleDouble", "%",
//   "__MACOSX",
//              ".rsrc" (with .finf), "attributes"
//   data       content of the data fork
//   resources  [{type, id, name?, attributes?, and a content}]
//   files      for a bundle: {path inside: content}
//   expect     what the importer is to say of it, for tests
//
// A content is one of {"text": …} (UTF-8; Mac Roman inside a resource), {"hex": …}, {"archive": any
// JSON value, "order": "big"?}.
#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace osa::samples {

using Json = nlohmann::ordered_json;

/// Reads a description; throws std::runtime_error naming the file when it is none.
Json readSample(const std::filesystem::path& file);

/// Writes the sample into `folder`, which exists, and returns the path of the file or bundle.
/// Throws std::runtime_error with a reason. Where the file system keeps no attributes, "attributes"
/// becomes "._".
std::filesystem::path writeSample(const Json& sample, const std::filesystem::path& folder);

/// The fork that the description's resources make; empty when it has none.
std::string buildFork(const Json& sample);

}  // namespace osa::samples
