// What runs between the fork and the program that is started.
//
// Only async-signal-safe calls are made there, and no fork handler of the host's runs, for another
// thread may have held any lock when the process was copied: whatever needs memory is made before.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/posix/UniqueFd.h"

namespace osa::posix {

inline constexpr int kFirstFreeDescriptor = 3;
/// Bytes for a process's number in digits.
inline constexpr std::size_t kNumberRoom = 20;

/// What comes through the pipe, all at once: the program's number, or why there is none.
struct Report {
    enum class Kind { number, failure } kind;
    int value;
};

/// A program's arguments or environment: texts, and pointers to them with a null behind.
class TextList {
  public:
    void add(std::string text) { texts_.push_back(std::move(text)); }
    char* last() { return texts_.back().data(); }
    /// Nothing is added from now on.
    char* const* pointers() {
        pointers_.clear();
        for (std::string& text : texts_) pointers_.push_back(text.data());
        pointers_.push_back(nullptr);
        return pointers_.data();
    }

  private:
    std::vector<std::string> texts_;
    std::vector<char*> pointers_;
};

/// All that the program is started with, made before the fork.
struct Preparation {
    TextList arguments;
    TextList environment;
    char* const* argumentPointers = nullptr;
    char* const* environmentPointers = nullptr;
    const char* program = nullptr;
    const char* folder = nullptr;
    char* ownNumber = nullptr;  ///< room for it in the environment, zeros
    UniqueFd null;
    UniqueFd reports;
    std::uint64_t descriptorLimit = 0;
};

/// In a copy of the caller: makes the program's process and ends, which makes that one an orphan.
[[noreturn]] void makeOrphan(const Preparation& preparation);

}  // namespace osa::posix
