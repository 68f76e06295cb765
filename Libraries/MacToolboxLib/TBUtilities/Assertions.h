// Assertions of the support library: they report a programming error and execution
// carries on, unless the operation says otherwise.
#pragma once

/// Writes "unit:line: failed assertion `condition'" to the standard error stream. `unit` is the
/// source path of the unit, without extension.
void ReportFailedAssertion(const char* unit, unsigned line, const char* condition);

/// Reports `condition` as written when it does not hold. The code after it runs in any case and
/// must stay safe.
#define TB_ASSERT(unit, condition) TB_ASSERT_TEXT(unit, condition, #condition)

/// TB_ASSERT with a text of its own for the condition.
#define TB_ASSERT_TEXT(unit, condition, text) \
    ((condition) ? static_cast<void>(0) : ReportFailedAssertion(unit, __LINE__, text))
