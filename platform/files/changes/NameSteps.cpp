// Changing names step by step, and back.
#include "platform/files/changes/NameSteps.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>

#include "platform/posix/CatalogChanges.h"

namespace osa {

NameSteps::~NameSteps() {
    for (auto step = done_.rbegin(); step != done_.rend(); ++step) {
        try {
            undo(*step);
        } catch (const std::bad_alloc&) {
            continue;  // as when the system refuses
        }
    }
}

void NameSteps::undo(const Step& step) {
    switch (step.kind) {
        case Kind::rename:
            return posix::putBack(step.to, step.from);
        case Kind::exchange:
            return posix::exchangeBack(step.from, step.to);
        case Kind::addName:
            return posix::takeBackName(step.from, step.to);
        case Kind::makeFolder:
            return posix::discard(step.to);
    }
}

/// A step is in the list before it is made: there may be no memory for it afterwards.
template <typename Work>
Result<void> NameSteps::run(Step step, Work work) {
    done_.push_back(std::move(step));
    const auto worked = work(done_.back());
    if (!worked.ok()) done_.pop_back();
    return worked;
}

Result<void> NameSteps::rename(const std::string& from, const std::string& to) {
    return run({Kind::rename, from, to},
               [](const Step& step) { return posix::renameToFree(step.from, step.to); });
}

Result<void> NameSteps::exchange(const std::string& one, const std::string& other) {
    return run({Kind::exchange, one, other},
               [](const Step& step) { return posix::exchangeNames(step.from, step.to); });
}

Result<void> NameSteps::addName(const std::string& file, const std::string& name) {
    return run({Kind::addName, file, name},
               [](const Step& step) { return posix::addName(step.from, step.to); });
}

void NameSteps::adoptName(const std::string& file, const std::string& name) {
    done_.push_back({Kind::addName, file, name});
}

Result<std::string> NameSteps::moveAside(const std::string& path) {
    OSA_CHECK(run({Kind::rename, path, {}}, [](Step& step) -> Result<void> {
        OSA_TRY(step.to, posix::moveAside(step.from));
        return {};
    }));
    return done_.back().to;
}

Result<void> NameSteps::makeFolder(const std::string& path, std::uint32_t mode) {
    const auto there = posix::status(path, posix::Follow::no);
    if (there.ok() && !there->isFolder()) return Failure(dupFNErr);
    if (there.ok()) return {};
    if (there.status() != fnfErr || path == "/") return Failure(there.status());
    OSA_CHECK(makeFolder(path.substr(0, std::max<std::size_t>(path.rfind('/'), 1)), mode));
    return run({Kind::makeFolder, {}, path},
               [&](const Step& step) { return posix::createFolder(step.to, mode); });
}

}  // namespace osa
