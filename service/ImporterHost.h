// Loads the importer plug-in and asks it about files, as a search service does.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPlugIn.h>
#include <CoreFoundation/CFRef.h>
#include <Metadata/MDImporter.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace osa::service {

/// What the importer said of one file.
struct ImportRecord {
    std::string path;
    /// The kind of script; absent when it could not be told.
    std::optional<std::uint32_t> kind;
    /// Whether the importer reported that it imported anything.
    bool imported = false;
    /// What it set, untouched; never null.
    CFRef<CFDictionaryRef> attributes;
    /// Lines that it wrote to the standard error stream for this file.
    std::vector<std::string> log;
    /// Why the file could not be processed at all; empty when it could.
    std::string error;
};

/// The published name of a kind, for example "kScriptTypeText".
const char* kindName(std::uint32_t kind);

/// One loaded plug-in. Not for several threads at once: what the importer logs is told apart by
/// time.
class ImporterHost {
  public:
    /// Loads the bundle at `bundlePath`; null with a reason when it is no importer plug-in.
    static std::unique_ptr<ImporterHost> load(const std::string& bundlePath, std::string& reason);
    ImporterHost(const ImporterHost&) = delete;
    ImporterHost& operator=(const ImporterHost&) = delete;
    ~ImporterHost();

    ImportRecord import(const std::string& path);

    /// The bare call of the importer: its result, false for a path that is not UTF-8 too. What it
    /// logs goes to the standard error stream. May be called on several threads at once for
    /// different files.
    bool callImporter(const std::string& path, CFMutableDictionaryRef attributes) const;
    /// An empty dictionary to be filled.
    static CFRef<CFMutableDictionaryRef> makeAttributes();

  private:
    ImporterHost(CFRef<CFPlugInRef> plugIn, MDImporterInterfaceStruct** importer)
        : plugIn_(std::move(plugIn)), importer_(importer) {}

    CFRef<CFPlugInRef> plugIn_;
    MDImporterInterfaceStruct** importer_;
};

/// Where the plug-in is looked for: beside the program (../lib/osa), then in the user's
/// $XDG_DATA_HOME/osa/importers. Empty when it is in neither.
std::string findImporterBundle();

}  // namespace osa::service
