// A row of changes of names that is taken back, the last first, unless all of it is done.
#pragma once

#include <string>
#include <vector>

#include "platform/base/Result.h"

namespace osa {

class NameSteps {
  public:
    NameSteps() = default;
    NameSteps(const NameSteps&) = delete;
    NameSteps& operator=(const NameSteps&) = delete;
    ~NameSteps();

    // As posix::renameToFree, exchangeNames, addName and moveAside.
    Result<void> rename(const std::string& from, const std::string& to);
    Result<void> exchange(const std::string& one, const std::string& other);
    Result<void> addName(const std::string& file, const std::string& name);
    Result<std::string> moveAside(const std::string& path);
    /// As addName, when the file has had the name since before.
    void adoptName(const std::string& file, const std::string& name);
    /// Makes the folder and those above it that are missing; one that is there is as good, but a
    /// link to one is dupFNErr. `mode` as for posix::createFolder.
    Result<void> makeFolder(const std::string& path, std::uint32_t mode = 0777);

    void keep() { done_.clear(); }

  private:
    enum class Kind { rename, exchange, addName, makeFolder };
    struct Step {
        Kind kind;
        std::string from, to;
    };
    template <typename Work>
    Result<void> run(Step step, Work work);
    static void undo(const Step& step);

    std::vector<Step> done_;
};

}  // namespace osa
