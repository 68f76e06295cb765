// Who writes to which fork: one writer at a time, or several that agree to share.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/files/Forks.h"
#include "platform/files/References.h"

namespace osa {

class ForkContent;
struct WriteClaim;

enum class Sharing { alone, shared };

/// The right to write to one fork, for as long as it is held.
class WriteAccess {
  public:
    /// opWrErr: another has it, and not both share, or has the resource fork under another name of
    /// the file; fnfErr: the object is not there any more.
    static Result<WriteAccess> claim(const Located& object, ForkKind fork, Sharing sharing);

    /// The object, which this process may have renamed since; fnfErr when it is gone.
    Result<FSRef> object() const;
    /// What those who share the fork use together: the first gets what `make` makes, the others the
    /// same.
    template <typename Make>
    Result<std::shared_ptr<ForkContent>> sharedContent(Make make) const {
        const auto guard = lockContent();
        if (auto there = content()) return there;
        OSA_TRY(std::shared_ptr<ForkContent> made, make());
        setContent(made);
        return made;
    }

  private:
    explicit WriteAccess(std::shared_ptr<WriteClaim> claim) : claim_(std::move(claim)) {}
    std::unique_lock<std::mutex> lockContent() const;
    std::shared_ptr<ForkContent> content() const;
    void setContent(const std::shared_ptr<ForkContent>& content) const;

    std::shared_ptr<WriteClaim> claim_;
};

/// What a change of names means to the claims: made before it, told when it is done. The caller
/// holds a PartsLock from before the first until after the second.
class ClaimMoves {
  public:
    /// The object at the real path `from` will be at `to`, and what is below it with it.
    static ClaimMoves ofMove(const std::string& from, const std::string& to);
    /// Two files will trade their paths.
    static ClaimMoves ofExchange(const std::string& one, const std::string& other);
    void tell() noexcept;

  private:
    struct Move {
        std::shared_ptr<WriteClaim> claim;
        Located object;
    };
    std::vector<Move> moves_;
};

}  // namespace osa
