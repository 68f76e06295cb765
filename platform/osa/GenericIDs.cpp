// The generic component's numbers.
#include "platform/osa/GenericIDs.h"

namespace osa {

OSAID GenericIDs::add(const RealID& real) {
    if (real.id == kOSANullScript) return kOSANullScript;
    if (const auto known = ids_.find(real); known != ids_.end()) return known->second;
    const OSAID id = unusedID();
    const auto added = reals_.emplace(id, real).first;
    try {
        ids_.emplace(real, id);
    } catch (...) {
        reals_.erase(added);
        throw;
    }
    return id;
}

const RealID* GenericIDs::find(OSAID id) const {
    const auto known = reals_.find(id);
    return known == reals_.end() ? nullptr : &known->second;
}

void GenericIDs::replace(OSAID id, const RealID& real) {
    RealID& known = reals_.at(id);
    if (known == real) return;
    ids_.emplace(real, id);
    ids_.erase(known);
    known = real;
}

void GenericIDs::remove(OSAID id) {
    const auto known = reals_.find(id);
    if (known == reals_.end()) return;
    ids_.erase(known->second);
    reals_.erase(known);
}

OSAID GenericIDs::unusedID() {
    do {
        ++last_;
    } while (last_ == kOSANullScript || reals_.contains(last_));
    return last_;
}

}  // namespace osa
