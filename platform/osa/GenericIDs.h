// The generic component's numbers: each stands for a number of one of its components' instances.
#pragma once

#include <OpenScripting/OSA.h>

#include <map>
#include <unordered_map>
#include <utility>

namespace osa {

struct RealID {
    ComponentInstance instance = nullptr;
    OSAID id = kOSANullScript;
    auto operator<=>(const RealID&) const = default;
};

class GenericIDs {
  public:
    /// The number of a real one, new unless it has one; kOSANullScript for kOSANullScript.
    OSAID add(const RealID& real);
    /// Null when there is no such number.
    const RealID* find(OSAID id) const;
    /// Has the number stand for another real one.
    void replace(OSAID id, const RealID& real);
    void remove(OSAID id);

  private:
    OSAID unusedID();

    std::unordered_map<OSAID, RealID> reals_;
    std::map<RealID, OSAID> ids_;
    OSAID last_ = kOSANullScript;
};

}  // namespace osa
