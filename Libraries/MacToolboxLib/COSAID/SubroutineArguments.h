// What follows the name in a call of a script's handler: parameters, then the mode flags.
#pragma once

#include <algorithm>
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
        constexpr std::array areParameters{std::derived_from<Arguments, CAEDescReader>...};
        static_assert(areParameters.size() <= kMostParameters + 1, "too many parameters");
        static_assert(std::ranges::count(areParameters, true) + 1 == areParameters.size() &&
                          !areParameters.back(),
                      "parameters are descriptors, and the mode flags come last");
        (Take(arguments), ...);
    }

    std::span<const CAEDescReader* const> Parameters() const {
        return {mParameters.data(), mCount};
    }
    SInt32 ModeFlags() const { return mModeFlags; }

  private:
    void Take(const CAEDescReader& parameter) { mParameters[mCount++] = &parameter; }
    void Take(SInt32 modeFlags) { mModeFlags = modeFlags; }
    template <std::floating_point T>
    void Take(T) = delete;

    std::array<const CAEDescReader*, kMostParameters + 1> mParameters{};
    std::size_t mCount = 0;
    SInt32 mModeFlags = 0;
};
