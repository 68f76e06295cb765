// Result<T>: a value, or the status that says why there is none; and the macros that pass it on.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cassert>
#include <optional>
#include <utility>

namespace osa {

/// A failure on its way up: `return Failure(fnfErr);`. Never holds 0.
class [[nodiscard]] Failure {
  public:
    explicit constexpr Failure(OSStatus status) : status_(status) { assert(status != 0); }
    constexpr OSStatus status() const { return status_; }

  private:
    OSStatus status_;
};

/// Either a T or a non-zero status.
template <typename T>
class [[nodiscard]] Result {
  public:
    Result(T value) : value_(std::move(value)) {}           // NOLINT: implicit by design
    Result(Failure failure) : status_(failure.status()) {}  // NOLINT: implicit by design

    bool ok() const { return status_ == 0; }
    explicit operator bool() const { return ok(); }
    /// 0 when there is a value.
    OSStatus status() const { return status_; }

    // The value: only to be asked for when ok().
    T& operator*() & { return *value_; }
    const T& operator*() const& { return *value_; }
    T&& operator*() && { return *std::move(value_); }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }

  private:
    std::optional<T> value_;
    OSStatus status_ = 0;
};

/// A status alone, for operations that give nothing back.
template <>
class [[nodiscard]] Result<void> {
  public:
    Result() = default;
    Result(Failure failure) : status_(failure.status()) {}  // NOLINT: implicit by design

    bool ok() const { return status_ == 0; }
    explicit operator bool() const { return ok(); }
    OSStatus status() const { return status_; }

  private:
    OSStatus status_ = 0;
};

}  // namespace osa

#define OSA_CONCAT_(a, b) a##b
#define OSA_CONCAT(a, b) OSA_CONCAT_(a, b)

/// OSA_TRY(target, expression): leaves the function with the expression's failure, else assigns
/// its value to `target` (a declaration or an lvalue).
#define OSA_TRY(target, expression) OSA_TRY_(OSA_CONCAT(osaResult, __LINE__), target, expression)
#define OSA_TRY_(result, target, expression)                  \
    auto result = (expression);                               \
    if (!result.ok()) return ::osa::Failure(result.status()); \
    target = *std::move(result)

/// OSA_CHECK(expression): the same for a Result<void>.
#define OSA_CHECK(expression) \
    if (auto osaChecked = (expression); !osaChecked.ok()) return ::osa::Failure(osaChecked.status())
