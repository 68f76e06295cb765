// SAliasHandle: the owner of one alias record.
#pragma once

#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/SAliasHandleBase.h"

class SAliasHandle : public SAliasHandleBase {
  public:
    SAliasHandle() = default;
    /// Takes over a handle that the caller owns; null is allowed.
    explicit SAliasHandle(AliasHandle owned) : mAlias(owned) {}
    SAliasHandle(const SAliasHandle&) = delete;
    SAliasHandle& operator=(const SAliasHandle&) = delete;
    ~SAliasHandle() override;

    void DisposeAliasHandle() override;
    AliasHandle& GetAliasHandle() override { return mAlias; }
    AliasHandle GetAliasHandle() const override { return mAlias; }

    /// Gives the handle to the caller.
    [[nodiscard]] AliasHandle Release() { return std::exchange(mAlias, nullptr); }

  private:
    AliasHandle mAlias = nullptr;
};
