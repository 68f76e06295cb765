// osa show: one record a file, through the importer plug-in.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFPropertyList.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/RecordFormat.h"
#include "service/ImporterHost.h"

namespace osa::cli {
namespace {

struct ShowOptions {
    bool json = false;
    bool plist = false;
    std::string importer;
    std::vector<std::string> files;
};

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/// One document around the records of all files.
class PropertyListOutput {
  public:
    PropertyListOutput()
        : records_(CFRef<CFMutableArrayRef>::Adopt(
              CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks))) {}
    /// False, and named, when the attributes cannot be written; the rest of the record is.
    bool add(const service::ImportRecord& record) {
        const auto list = recordAsPropertyList(record);
        if (CFPropertyListIsValid(list.get(), kCFPropertyListXMLFormat_v1_0)) {
            CFArrayAppendValue(records_.get(), list.get());
            return true;
        }
        service::ImportRecord bare = record;
        bare.attributes = CFRef<CFDictionaryRef>::Adopt(
            CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0,
                               &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
        bare.error = "an attribute cannot be written in a property list";
        reportError(record.path, bare.error);
        CFArrayAppendValue(records_.get(), recordAsPropertyList(bare).get());
        return false;
    }
    bool finish() const {
        const auto data = CFRef<CFDataRef>::Adopt(
            CFPropertyListCreateXMLData(kCFAllocatorDefault, records_.get()));
        if (!data) return false;
        std::fwrite(CFDataGetBytePtr(data.get()), 1,
                    static_cast<std::size_t>(CFDataGetLength(data.get())), stdout);
        return true;
    }

  private:
    CFRef<CFMutableArrayRef> records_;
};

std::unique_ptr<service::ImporterHost> loadImporter(const std::string& asked) {
    const std::string bundle = asked.empty() ? service::findImporterBundle() : asked;
    if (bundle.empty()) {
        reportError("OSAImporter.mdimporter", "the importer plug-in is not installed");
        return nullptr;
    }
    std::string reason;
    auto host = service::ImporterHost::load(bundle, reason);
    if (host == nullptr) reportError(bundle, reason);
    return host;
}

int show(const ShowOptions& options) {
    const auto host = loadImporter(options.importer);
    if (host == nullptr) return kSomethingFailed;
    int exitStatus = kAllWell;
    PropertyListOutput list;
    for (const std::string& file : options.files) {
        const service::ImportRecord record = host->import(file);
        if (!record.error.empty()) {
            reportError(file, record.error);
            exitStatus = kSomethingFailed;
        }
        if (options.plist) {
            if (!list.add(record)) exitStatus = kSomethingFailed;
        } else {
            print(options.json ? recordAsJson(record) + "\n" : recordAsText(record));
        }
    }
    if (options.plist && !list.finish()) {
        reportError("standard output", "the records cannot be written as a property list");
        exitStatus = kSomethingFailed;
    }
    return exitStatus;
}

}  // namespace

void addShowCommand(CLI::App& program, int& exitStatus) {
    auto options = std::make_shared<ShowOptions>();
    CLI::App* const command =
        program.add_subcommand("show", "Show what the importer reads of each file");
    CLI::Option* const json =
        command->add_flag("--json", options->json, "One JSON object a line for each file");
    command->add_flag("--plist", options->plist, "One property list for all files")->excludes(json);
    command->add_option("--importer", options->importer, "The plug-in bundle to use")
        ->type_name("BUNDLE");
    command->add_option("files", options->files, "Scripts: files and bundles")
        ->required()
        ->type_name("FILE");
    command->callback([options, &exitStatus] { exitStatus = show(*options); });
}

}  // namespace osa::cli
