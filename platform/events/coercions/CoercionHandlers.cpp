// Installed coercion handlers: one table for the application, one for the system.
#include "platform/events/coercions/CoercionHandlers.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <unordered_map>

namespace osa {
namespace {

constexpr int kDeepestNesting = 32;

struct Nesting {
    int depth = 0;
    bool wasTooDeep = false;
};
thread_local Nesting nesting;

struct Handler {
    AECoercionHandlerUPP procedure;
    SInt32 refcon;
    bool takesDesc;
};

constexpr std::uint64_t keyOf(DescType from, DescType to) {
    return static_cast<std::uint64_t>(from) << 32 | to;
}

struct HandlerTables {
    std::shared_mutex lock;
    /// Handlers in both tables, read without the lock: most programs install none, and then a
    /// coercion pays for this one load.
    std::atomic<std::size_t> count{0};
    std::unordered_map<std::uint64_t, Handler> application;
    std::unordered_map<std::uint64_t, Handler> system;

    auto& table(Boolean isSysHandler) { return isSysHandler != 0 ? system : application; }
};

/// Never destroyed: destructors of other static objects may still coerce.
HandlerTables& handlerTables() {
    static HandlerTables& tables = *new HandlerTables;
    return tables;
}

/// The handlers that may be asked for one pair, in order.
struct Candidates {
    std::array<Handler, 8> handlers;
    std::size_t count = 0;
};

Candidates candidatesFor(DescType from, DescType to) {
    const std::uint64_t keys[] = {keyOf(from, to), keyOf(from, typeWildCard),
                                  keyOf(typeWildCard, to), keyOf(typeWildCard, typeWildCard)};
    HandlerTables& tables = handlerTables();
    Candidates found;
    const std::shared_lock<std::shared_mutex> lock(tables.lock);
    for (const auto* const table : {&tables.application, &tables.system}) {
        for (const std::uint64_t key : keys) {
            const auto entry = table->find(key);
            if (entry != table->end()) found.handlers[found.count++] = entry->second;
        }
    }
    return found;
}

OSErr callHandler(const Handler& handler, CoercionSource& source, DescType toType, AEDesc* made) {
    if (!handler.takesDesc) {
        const auto procedure = reinterpret_cast<AECoercePtrProcPtr>(handler.procedure);
        return procedure(source.type(), source.data(), source.size(), toType, handler.refcon, made);
    }
    const AEDesc* desc = nullptr;
    if (const OSErr status = source.asDesc(&desc); status != noErr) return status;
    const auto procedure = reinterpret_cast<AECoerceDescProcPtr>(handler.procedure);
    return procedure(desc, toType, handler.refcon, made);
}

}  // namespace

CoercionLevel::CoercionLevel() {
    if (++nesting.depth > kDeepestNesting) nesting.wasTooDeep = true;
}

CoercionLevel::~CoercionLevel() {
    if (--nesting.depth == 0) nesting.wasTooDeep = false;
}

bool CoercionLevel::isTooDeep() const {
    return nesting.depth > kDeepestNesting;
}

CoercionSource::CoercionSource(const AEDesc* desc)
    : type_(desc->descriptorType),
      data_(desc->dataHandle == nullptr ? nullptr : *desc->dataHandle),
      size_(AEGetDescDataSize(desc)),
      given_(desc) {}

CoercionSource::CoercionSource(DescType type, const void* data, Size size)
    : type_(type), data_(data), size_(size) {}

CoercionSource::~CoercionSource() {
    AEDisposeDesc(&made_);
}

OSErr CoercionSource::asDesc(const AEDesc** desc) {
    if (given_ == nullptr) {
        if (const OSErr status = AECreateDesc(type_, data_, size_, &made_); status != noErr) {
            return status;
        }
        given_ = &made_;
    }
    *desc = given_;
    return noErr;
}

OSErr coerceWithHandlers(CoercionSource& source, DescType toType, AEDesc* result) {
    *result = {typeNull, nullptr};
    if (handlerTables().count.load(std::memory_order_acquire) == 0) return errAECoercionFail;
    const Candidates candidates = candidatesFor(source.type(), toType);
    for (std::size_t i = 0; i < candidates.count && !nesting.wasTooDeep; ++i) {
        AEDesc made = {typeNull, nullptr};
        const OSErr status = callHandler(candidates.handlers[i], source, toType, &made);
        // What a failing handler left in `made` may be anybody's: it is forgotten, not disposed of.
        if (status == noErr) *result = made;
        if (status != errAECoercionFail) return status;
    }
    return errAECoercionFail;
}

}  // namespace osa

OSErr AEInstallCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                               SInt32 refcon, Boolean fromTypeIsDesc, Boolean isSysHandler) {
    if (handler == nullptr) return paramErr;
    osa::HandlerTables& tables = osa::handlerTables();
    const std::unique_lock<std::shared_mutex> lock(tables.lock);
    try {
        tables.table(isSysHandler)
            .insert_or_assign(osa::keyOf(fromType, toType),
                              osa::Handler{handler, refcon, fromTypeIsDesc != 0});
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
    tables.count.store(tables.application.size() + tables.system.size(), std::memory_order_release);
    return noErr;
}

OSErr AERemoveCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                              Boolean isSysHandler) {
    osa::HandlerTables& tables = osa::handlerTables();
    const std::unique_lock<std::shared_mutex> lock(tables.lock);
    auto& table = tables.table(isSysHandler);
    const auto entry = table.find(osa::keyOf(fromType, toType));
    if (entry == table.end() || (handler != nullptr && entry->second.procedure != handler)) {
        return errAEHandlerNotFound;
    }
    table.erase(entry);
    tables.count.store(tables.application.size() + tables.system.size(), std::memory_order_release);
    return noErr;
}

OSErr AEGetCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP* handler,
                           SInt32* refcon, Boolean* fromTypeIsDesc, Boolean isSysHandler) {
    if (handler == nullptr || refcon == nullptr || fromTypeIsDesc == nullptr) return paramErr;
    osa::HandlerTables& tables = osa::handlerTables();
    const std::shared_lock<std::shared_mutex> lock(tables.lock);
    const auto& table = tables.table(isSysHandler);
    const auto entry = table.find(osa::keyOf(fromType, toType));
    if (entry == table.end()) return errAEHandlerNotFound;
    *handler = entry->second.procedure;
    *refcon = entry->second.refcon;
    *fromTypeIsDesc = entry->second.takesDesc ? 1 : 0;
    return noErr;
}
