// Changing resources through the Resource Manager.
#include "cli/ResourceEdits.h"

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>
#include <OSA/ResourceListing.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "cli/ResourceSelector.h"

namespace osa::cli {
namespace {

using Kind = ResourceEdit::Kind;

/// The attributes of protected resources, which are put back once their new data is written.
using Protections = std::map<Handle, ResAttributes>;

/// A resource file that is open for writing. Closing it writes nothing.
class EditedFile {
  public:
    EditedFile() = default;
    EditedFile(const EditedFile&) = delete;
    EditedFile& operator=(const EditedFile&) = delete;
    ~EditedFile() {
        if (number_ <= 0) return;
        SetResFileAttrs(number_, mapReadOnly);
        CloseResFile(number_);
        if (isForkNew_) FSDeleteFork(&ref_, forkName_.length, forkName_.unicode);
    }

    /// A reason, or nothing when it is open; a file without a fork gets one unless there is a
    /// reason against that.
    std::string open(const std::string& path, const std::string& reasonAgainstFork) {
        if (std::string reason = find(path, reasonAgainstFork); !reason.empty()) return reason;
        if ((GetResFileAttrs(number_) & mapReadOnly) == 0) return {};
        return "its resource map is marked as read-only";
    }

    /// Protected resources keep their old data: these are protected by a second writing.
    std::string save(const Protections& protections) {
        UpdateResFile(number_);
        if (ResError() != noErr) return resourceReason(ResError());
        isForkNew_ = false;
        if (protections.empty()) return {};
        for (const auto& [resource, attributes] : protections) SetResAttrs(resource, attributes);
        SetResFileAttrs(number_, mapChanged);
        UpdateResFile(number_);
        if (ResError() == noErr) return {};
        return "is changed, but what was protected no longer is: " + resourceReason(ResError());
    }

  private:
    std::string find(const std::string& path, const std::string& reasonAgainstFork) {
        const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
        if (const OSStatus status = FSPathMakeRef(bytes, &ref_, nullptr))
            return resourceReason(status);
        number_ = FSOpenResFile(&ref_, fsRdWrPerm);
        if (number_ > 0) return {};
        if (ResError() != eofErr) return resourceReason(ResError());
        // No fork of its own: it may be one, or hold one in a way that is not written.
        const OSErr status = FSOpenResourceFile(&ref_, 0, nullptr, fsRdWrPerm, &number_);
        if (status == noErr) return {};
        if (status != eofErr && status != mapReadErr) return resourceReason(status);
        if (isContainer(path)) return "keeps its resources in a container, which is not written";
        return reasonAgainstFork.empty() ? resourceReason(makeFork()) : reasonAgainstFork;
    }

    static bool isContainer(const std::string& path) {
        OSAResourceListRef list = nullptr;
        const OSStatus status = OSAResourceListOpen(path.c_str(), &list);
        OSAResourceListClose(list);
        return status == noErr;
    }

    OSStatus makeFork() {
        FSRef parent;
        HFSUniStr255 name;
        OSStatus status = FSGetCatalogInfo(&ref_, kFSCatInfoNone, nullptr, &name, nullptr, &parent);
        if (status == noErr) status = FSGetResourceForkName(&forkName_);
        if (status != noErr) return status;
        FSCreateResFile(&parent, name.length, name.unicode, kFSCatInfoNone, nullptr, nullptr,
                        nullptr);
        if (ResError() != noErr) return ResError();
        number_ = FSOpenResFile(&ref_, fsRdWrPerm);
        isForkNew_ = number_ > 0;
        return ResError();
    }

    FSRef ref_{};
    HFSUniStr255 forkName_{};
    ResFileRefNum number_ = 0;
    bool isForkNew_ = false;
};

/// A resource of the current file, protected or not, until its attributes are put back.
class EditedResource {
  public:
    explicit EditedResource(const ResourceEdit& edit) {
        SetResLoad(false);
        handle_ = Get1Resource(edit.type, edit.id);
        SetResLoad(true);
        if (handle_ == nullptr) return;
        attributes_ = GetResAttrs(handle_);
        SetResAttrs(handle_, static_cast<ResAttributes>(attributes_ & ~resProtected));
    }
    Handle handle() const { return handle_; }
    ResAttributes attributes() const { return attributes_; }
    bool wasProtected() const { return (attributes_ & resProtected) != 0; }
    void putAttributesBack() const { SetResAttrs(handle_, attributes_); }

  private:
    Handle handle_ = nullptr;
    ResAttributes attributes_ = 0;
};

OSStatus fill(Handle handle, const std::string& data) {
    SetHandleSize(handle, static_cast<Size>(data.size()));
    if (MemError() != noErr) return MemError();
    BlockMoveData(data.data(), *handle, static_cast<Size>(data.size()));
    return noErr;
}

OSStatus add(const ResourceEdit& edit) {
    const Handle handle = NewHandle(0);
    if (handle == nullptr) return memFullErr;
    OSStatus status = fill(handle, edit.value);
    if (status == noErr) {
        AddResource(handle, edit.type, edit.id, nullptr);
        status = ResError();
    }
    if (status != noErr) DisposeHandle(handle);
    return status;
}

OSStatus remove(Handle handle) {
    RemoveResource(handle);
    const OSStatus status = ResError();
    if (status == noErr) DisposeHandle(handle);
    return status;
}

OSStatus apply(const ResourceEdit& edit, Protections& protections) {
    const EditedResource resource(edit);
    const Handle handle = resource.handle();
    if (handle == nullptr) return edit.kind == Kind::set ? add(edit) : OSStatus{resNotFound};
    if (edit.kind == Kind::remove) {
        protections.erase(handle);
        return remove(handle);
    }
    if (edit.kind == Kind::rename) {
        SetResInfo(handle, edit.id, edit.name.data());
        const OSStatus status = ResError();
        resource.putAttributesBack();
        return status;
    }
    if (const OSStatus status = fill(handle, edit.value)) return status;
    ChangedResource(handle);
    if (resource.wasProtected()) protections.emplace(handle, resource.attributes());
    return ResError();
}

bool toMacRoman(std::string_view utf8, std::array<unsigned char, 256>& name) {
    const auto string = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
    return string &&
           CFStringGetPascalString(string.get(), name.data(), static_cast<CFIndex>(name.size()),
                                   kCFStringEncodingMacRoman);
}

std::string label(const ResourceEdit& edit) {
    return "'" + fourCharText(edit.type) + "' " + std::to_string(edit.id);
}

std::string missing(const ResourceEdit& edit) {
    return "has no resource " + label(edit);
}

/// Why a file without resources gets no fork; empty when all edits can be made to it.
std::string reasonAgainstFork(const std::vector<ResourceEdit>& edits) {
    std::set<std::pair<ResType, SInt16>> resources;
    for (const ResourceEdit& edit : edits) {
        const std::pair resource(edit.type, edit.id);
        if (edit.kind == Kind::set) {
            resources.insert(resource);
        } else if (!resources.contains(resource)) {
            return resources.empty() ? resourceReason(eofErr) : missing(edit);
        } else if (edit.kind == Kind::remove) {
            resources.erase(resource);
        }
    }
    return {};
}

}  // namespace

std::string parseResourceEdit(Kind kind, std::string_view text, ResourceEdit& edit) {
    edit.kind = kind;
    // A type may hold an equals sign itself: the first counts that has a type and an id before it.
    std::size_t end = kind == Kind::remove ? text.size() : text.find('=');
    for (; end != std::string_view::npos; end = text.find('=', end + 1)) {
        const auto selector = parseResourceSelector(text.substr(0, end));
        if (!selector || !selector->id) {
            if (end == text.size()) break;
            continue;
        }
        edit.type = selector->type;
        edit.id = *selector->id;
        edit.value = text.substr(std::min(end + 1, text.size()));
        if (kind == Kind::rename && (edit.value.empty() || !toMacRoman(edit.value, edit.name)))
            return "the name is empty, over 255 characters, or has characters that Mac Roman lacks";
        return {};
    }
    return kind == Kind::remove   ? "is not TYPE:ID"
           : kind == Kind::rename ? "is not TYPE:ID=NAME"
                                  : "is not TYPE:ID=FILE";
}

std::string readEditData(std::vector<ResourceEdit>& edits) {
    for (ResourceEdit& edit : edits) {
        if (edit.kind != Kind::set) continue;
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(
            std::fopen(edit.value.c_str(), "rb"), std::fclose);
        if (!in) return edit.value;
        std::string data;
        std::array<char, 65536> chunk;
        while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), in.get()))
            data.append(chunk.data(), count);
        // A folder opens, but cannot be read.
        if (std::ferror(in.get()) != 0) return edit.value;
        edit.value = std::move(data);
    }
    return {};
}

std::string applyResourceEdits(const std::string& file, const std::vector<ResourceEdit>& edits) {
    EditedFile edited;
    if (std::string reason = edited.open(file, reasonAgainstFork(edits)); !reason.empty())
        return reason;
    Protections protections;
    for (const ResourceEdit& edit : edits) {
        const OSStatus status = apply(edit, protections);
        if (status == resNotFound) return missing(edit);
        if (status != noErr) return label(edit) + ": " + resourceReason(status);
    }
    return edited.save(protections);
}

}  // namespace osa::cli
