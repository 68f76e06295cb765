// What follows the name in a call of a script's handler: parameters, then the mode flags.
#pragma once

#include <array>
#include <concepts>
#include <span>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"

/// Points at the parameters, which must outlive it.
class SubroutineArguments {
  public:
    static constexpr std::size_t kMostParameters = 5;

    template <typename... Arguments>
    explicit SubroutineArguments(const Arguments&... arguments) {
        constexpr std::array isFlags{std::integral<Arguments>...};
        static_assert(isFlags.size() <= kMostParameters + 1, "too many parameters");
        static_assert(isFlags.back(), "the mode flags come last");
        (Take(arguments), ...);
    }

    std::span<const CAEDescReader* const> Parameters() const {
        return {mParameters.data(), mCount};
    }
    SInt32 ModeFlags() const { return mModeFlags; }

  private:
    void Take(const CAEDescReader& parameter) { mParameters[mCount++] = &parameter; }
    template <std::integral Flags>
    void Take(Flags modeFlags) {
        mModeFlags = static_cast<SInt32>(modeFlags);
    }

    std::array<const CAEDescReader*, kMostParameters + 1> mParameters{};
    std::size_t mCount = 0;
    SInt32 mModeFlags = 0;
};
