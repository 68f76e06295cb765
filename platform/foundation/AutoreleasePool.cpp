// The thread's stack of autorelease pools: one list of objects, and where in it each pool begins.
#include <Foundation/Foundation.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

class PoolStack {
  public:
    ~PoolStack() { releaseFrom(0); }

    static PoolStack& mine() {
        thread_local PoolStack stack;
        return stack;
    }

    void push(NSAutoreleasePool* pool) { pools_.emplace_back(pool, objects_.size()); }
    void add(CFTypeRef owned) { objects_.push_back(owned); }

    /// Where the objects of `pool` begin, after it and all later pools have left the stack, into
    /// `gone`.
    bool pop(const NSAutoreleasePool* pool, std::size_t& first,
             std::vector<NSAutoreleasePool*>& gone) {
        auto place = pools_.end();
        while (place != pools_.begin() && (--place)->first != pool) {
        }
        if (place == pools_.end() || place->first != pool) return false;
        first = place->second;
        for (auto later = place; later != pools_.end(); ++later) gone.push_back(later->first);
        pools_.erase(place, pools_.end());
        return true;
    }

    void releaseFrom(std::size_t first) {
        // One at a time: an object that goes may autorelease others.
        while (objects_.size() > first) {
            const CFTypeRef last = objects_.back();
            objects_.pop_back();
            CFRelease(last);
        }
    }

  private:
    std::vector<CFTypeRef> objects_;
    std::vector<std::pair<NSAutoreleasePool*, std::size_t>> pools_;
};

}  // namespace

NSAutoreleasePool* NSAutoreleasePool::create() {
    auto* const pool = new NSAutoreleasePool;
    PoolStack::mine().push(pool);
    return pool;
}

void NSAutoreleasePool::release() {
    PoolStack& stack = PoolStack::mine();
    std::size_t first = 0;
    std::vector<NSAutoreleasePool*> gone;
    if (!stack.pop(this, first, gone)) return;
    stack.releaseFrom(first);
    for (const NSAutoreleasePool* const pool : gone) delete pool;
}

void NSAutoreleasePool::addObject(CFTypeRef owned) {
    if (owned != nullptr) PoolStack::mine().add(owned);
}
