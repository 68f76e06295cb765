// Walking through a volume in search of one object: the kernel opens nothing by its number.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/posix/FileSystem.h"

namespace osa {

/// What all walks of one search may cost together.
class WalkBudget {
  public:
    static constexpr std::uint32_t kMostObjects = 200'000;
    static constexpr std::chrono::seconds kLongest{2};

    /// Counts one object; false when objects or time are used up.
    bool spend();
    bool isSpent() const;

  private:
    // The clock is asked once for so many objects.
    static constexpr std::uint32_t kClockInterval = 64;

    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::uint32_t objects_ = 0;
};

/// Gets an object and its own status, also of a link; false ends the walk.
using VisitObject = std::function<bool(const std::string& folder, const std::string& name,
                                       const posix::FileStatus& status)>;

/// Visits the objects of a volume outward from the folder `start`: what lies in it, in the folder
/// above it and in those below it, then in the folders one step farther away, and so on. Folders
/// that cannot be read are left out. Nothing is visited that lies on another volume than `start`,
/// and no link is followed. False when something was left out for a reason that may pass (too many
/// open files, no memory, a disk in trouble): what was not met may be met by the next walk. True
/// also when `visit` or the budget has ended the walk.
bool walkOutward(const std::string& start, WalkBudget& budget, const VisitObject& visit);

/// An object that a walk has looked for.
struct SoughtObject {
    std::uint64_t device = 0;
    std::uint32_t number = 0;
    std::uint64_t created = 0;
    std::string name;

    bool operator==(const SoughtObject&) const = default;
};

// Whoever compares lost aliases asks for the same objects over and over: what no walk could find is
// not walked for again for some seconds. Safe on any thread.

void rememberLost(const SoughtObject& object);
bool isKnownAsLost(const SoughtObject& object);

}  // namespace osa
