// Opening, closing and choosing resource files.
#include <CoreServices/Resources.h>

#include <mutex>
#include <vector>

#include "platform/resources/ForkPlace.h"
#include "platform/resources/ResourceThread.h"

using namespace osa;

namespace {

Result<ResourceFork> parse(Result<std::shared_ptr<const ByteSource>> source) {
    // To callers of the Resource Manager an absent fork is one that ends before its header.
    if (source.status() == errFSForkNotFound) return Failure(eofErr);
    OSA_CHECK(source);
    return ResourceFork::open(*std::move(source));
}

Result<SInt16> enter(ResourceThread& thread, const OpenResourceFilePtr& file) {
    thread.makeRoom();  // once it has a number nothing fails
    OSA_TRY(const SInt16 number, addOpenFile(file));
    file->setNumber(number);
    thread.use(file);
    return number;
}

Result<SInt16> openForReading(ResourceThread& thread, const FSRef& ref, ForkKind kind) {
    OSA_TRY(const ResourceFork fork, parse(openForkForReading(ref, kind)));
    return enter(thread, std::make_shared<OpenResourceFile>(fork));
}

/// The files that are open for writing.
struct Writers {
    std::mutex lock;  // also while one is opened: another thread shall find it or be first
    std::vector<std::weak_ptr<OpenResourceFile>> files;

    static Writers& all() {
        static Writers shared;
        return shared;
    }
    /// Null also for one that is being closed: it has no number any longer.
    OpenResourceFilePtr find(const Located& fork, ForkKind kind) const {
        for (const auto& entry : files) {
            const OpenResourceFilePtr file = entry.lock();
            if (file && findOpenFile(file->number()) == file && file->writesTo(fork, kind))
                return file;
        }
        return nullptr;
    }
};

Result<SInt16> openForWriting(ResourceThread& thread, const FSRef& ref, ForkKind kind) {
    OSA_TRY(const Located located, locate(&ref));
    Writers& writers = Writers::all();
    const std::lock_guard guard(writers.lock);
    auto place = openForkPlace(located, kind);
    if (place.status() == opWrErr) {
        const OpenResourceFilePtr file = writers.find(located, kind);
        if (!file) return Failure(opWrErr);
        thread.use(file);
        return file->number();
    }
    if (!place.ok()) return Failure(place.status());
    OSA_TRY(const ResourceFork fork, parse((*place)->read()));
    const auto file = std::make_shared<OpenResourceFile>(fork, *std::move(place));
    std::erase_if(writers.files, [](const auto& entry) { return entry.expired(); });
    writers.files.push_back(file);
    return enter(thread, file);
}

Result<SInt16> open(ResourceThread& thread, const FSRef* ref, ForkKind kind, SInt8 permission) {
    if (ref == nullptr || permission < fsCurPerm || permission > fsRdWrShPerm)
        return Failure(paramErr);
    if (permission != fsRdPerm) {
        auto opened = openForWriting(thread, *ref, kind);
        if (opened.ok() || permission != fsCurPerm) return opened;
    }
    return openForReading(thread, *ref, kind);
}

Result<OpenResourceFilePtr> fileOfNumber(SInt16 number) {
    auto file = findOpenFile<OpenResourceFile>(number);
    if (!file) return Failure(resFNotFound);
    return file;
}

/// Closes a file whatever comes of writing it.
struct Closing {
    ResourceThread& thread;
    const OpenResourceFilePtr& file;

    ~Closing() {
        thread.forget(file);
        removeOpenFile(file->number(), *file);
    }
};

}  // namespace

OSErr ResError() {
    return ResourceThread::mine().error;
}

ResFileRefNum FSOpenResFile(const FSRef* ref, SInt8 permission) {
    return resourceCall<SInt16>(-1, [&](ResourceThread& thread) {
        return open(thread, ref, ForkKind::resource, permission);
    });
}

ResFileRefNum FSpOpenResFile(const FSSpec* spec, SInt8 permission) {
    return resourceCall<SInt16>(-1, [&](ResourceThread& thread) -> Result<SInt16> {
        FSRef ref;
        const OSErr status = FSpMakeFSRef(spec, &ref);
        if (status != noErr) return Failure(status);
        return open(thread, &ref, ForkKind::resource, permission);
    });
}

OSErr FSOpenResourceFile(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName,
                         SInt8 permission, ResFileRefNum* refNum) {
    const SInt16 number = resourceCall<SInt16>(-1, [&](ResourceThread& thread) -> Result<SInt16> {
        if (refNum == nullptr) return Failure(paramErr);
        OSA_TRY(const ForkKind kind, forkOfName(forkNameLength, forkName));
        return open(thread, ref, kind, permission);
    });
    if (refNum != nullptr) *refNum = number;
    return ResError();
}

void CloseResFile(ResFileRefNum refNum) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        const Closing closing{thread, file};
        return file->update();
    });
}

void UpdateResFile(ResFileRefNum refNum) {
    resourceCall([&](ResourceThread&) -> Result<void> {
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        return file->update();
    });
}

ResAttributes GetResFileAttrs(ResFileRefNum refNum) {
    return resourceCall<ResAttributes>(0, [&](ResourceThread&) -> Result<ResAttributes> {
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        return static_cast<ResAttributes>(file->mapAttributes());
    });
}

void SetResFileAttrs(ResFileRefNum refNum, ResAttributes attributes) {
    resourceCall([&](ResourceThread&) -> Result<void> {
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        file->setMapAttributes(static_cast<UInt16>(attributes));
        return {};
    });
}

ResFileRefNum CurResFile() {
    return resourceCall<SInt16>(0, [](ResourceThread& thread) -> Result<SInt16> {
        const OpenResourceFilePtr file = thread.current();
        return file ? file->number() : SInt16{0};
    });
}

void UseResFile(ResFileRefNum refNum) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        if (refNum == 0) {
            thread.useNone();
            return {};
        }
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        thread.use(file);
        return {};
    });
}

ResFileRefNum HomeResFile(Handle resource) {
    return resourceCall<SInt16>(-1, [&](ResourceThread& thread) -> Result<SInt16> {
        const OpenResourceFilePtr file = thread.home(resource);
        if (!file) return Failure(resNotFound);
        return file->number();
    });
}

void SetResLoad(Boolean load) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        thread.loads = load != 0;
        return {};
    });
}
