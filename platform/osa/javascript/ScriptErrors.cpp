// Errors of scripts: taken from the engine, told as descriptors.
#include "platform/osa/javascript/ScriptErrors.h"

#include <CoreServices/MacErrors.h>
#include <OpenScripting/OSA.h>

#include <algorithm>
#include <atomic>
#include <cmath>

#include "platform/osa/javascript/Text.h"

namespace osa::script {
namespace {

constexpr std::u16string_view kLineEnds = u"\n\r\u2028\u2029";

/// The start of a line counted from 1; npos when there are not so many.
std::size_t lineStart(std::u16string_view text, unsigned line) {
    std::size_t start = 0;
    for (; line > 1; --line) {
        const std::size_t end = text.find_first_of(kLineEnds, start);
        if (end == text.npos) return text.npos;
        start = end + (text.substr(end, 2) == u"\r\n" ? 2 : 1);
    }
    return start;
}

/// Where the word, or the one character, at `start` ends.
std::size_t tokenEnd(std::u16string_view text, std::size_t start) {
    std::size_t end = start;
    while (end < text.size() && isWord(text[end])) ++end;
    return end == start ? std::min(start + 1, text.size()) : end;
}

/// What the script says itself: the exception's property "errorNumber".
SInt32 numberOf(JSContext* cx, JS::HandleValue exception) {
    if (!exception.isObject()) return errOSAScriptError;
    JS::RootedObject object(cx, &exception.toObject());
    JS::RootedValue number(cx);
    if (!JS_GetProperty(cx, object, "errorNumber", &number)) JS_ClearPendingException(cx);
    const double given = number.isNumber() ? number.toNumber() : 0.5;
    const bool fits = given == std::trunc(given) && std::abs(given + 0.5) < 2147483648.0;
    return fits ? static_cast<SInt32>(given) : SInt32{errOSAScriptError};
}

/// What is thrown and is no error may have a message all the same. Nothing of the script is run.
std::u16string messageOf(JSContext* cx, JS::HandleValue exception) {
    std::u16string message;
    if (!exception.isObject()) return message;
    JS::RootedObject object(cx, &exception.toObject());
    if (JS::GetClass(object)->isProxyObject() || JS_ErrorFromException(cx, object) != nullptr)
        return message;
    JS::Rooted<mozilla::Maybe<JS::PropertyDescriptor>> property(cx);
    const bool known = JS_GetOwnPropertyDescriptor(cx, object, "message", &property);
    if (known && property.isSome() && property->isDataDescriptor() &&
        property->value().isString()) {
        JS::RootedString text(cx, property->value().toString());
        toText(cx, text, &message);
    }
    JS_ClearPendingException(cx);
    return message;
}

std::u16string decimal(unsigned number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

}  // namespace

SourceText::SourceText(std::u16string source) : text(std::move(source)) {
    static std::atomic<std::uint64_t> last = 0;
    file = "script " + std::to_string(++last);
}

void ScriptError::takeReport(JSContext* cx, const JSErrorReport& report, const SourceText* source) {
    brief_ = fromUtf8(cx, report.message().c_str());
    if (source == nullptr || report.filename == nullptr || source->file != report.filename) return;
    message_ += u" (line " + decimal(report.lineno) + u")";
    // The parser counts columns from 0, what runs counts them from 1.
    const bool parsed = report.linebuf() != nullptr;
    const std::size_t column = parsed ? report.column : std::max(report.column, 1U) - 1;
    const std::size_t line = lineStart(source->text, report.lineno);
    if (line == std::u16string_view::npos) return;
    const std::size_t start = std::min(line + column, source->text.size());
    range_ = {static_cast<SInt32>(start), static_cast<SInt32>(tokenEnd(source->text, start))};
}

void ScriptError::take(JSContext* cx, const SourceText* source) {
    *this = ScriptError();
    known_ = true;
    number_ = errOSAScriptError;
    JS::ExceptionStack stack(cx);
    JS::ErrorReportBuilder report(cx);
    if (!JS::StealPendingExceptionStack(cx, &stack) ||
        !report.init(cx, stack, JS::ErrorReportBuilder::NoSideEffects)) {
        JS_ClearPendingException(cx);
        return;
    }
    const std::u16string message = messageOf(cx, stack.exception());
    message_ = message.empty() ? fromUtf8(cx, report.toStringResult().c_str()) : message;
    takeReport(cx, *report.report(), source);
    if (!message.empty()) brief_ = message;
    number_ = numberOf(cx, stack.exception());
    JS_ClearPendingException(cx);
}

OSErr ScriptError::answerNumber(DescType type, AEDesc* result) const {
    if (type != typeSInt16 && type != typeWildCard && type != typeBest)
        return AECoercePtr(typeSInt32, &number_, sizeof number_, type, result);
    const auto narrow = static_cast<SInt16>(number_);
    return narrow == number_ ? AECreateDesc(typeSInt16, &narrow, sizeof narrow, result)
                             : AECreateDesc(typeSInt32, &number_, sizeof number_, result);
}

OSErr ScriptError::answerRange(DescType type, AEDesc* result) const {
    if (!range_) return errAEDescNotFound;
    Desc record;
    OSErr status = AECreateList(nullptr, 0, true, record.out());
    const auto put = [&](AEKeyword keyword, SInt32 value) {
        if (status == noErr)
            status = AEPutParamPtr(&record.desc, keyword, typeSInt32, &value, sizeof value);
    };
    put(keyOSASourceStart, range_->start);
    put(keyOSASourceEnd, range_->end);
    if (status != noErr) return status;
    return AECoerceDesc(&record.desc, type == typeBest ? DescType(typeWildCard) : type, result);
}

OSErr ScriptError::answer(OSType selector, DescType type, AEDesc* result) const {
    if (!known_) return errAEDescNotFound;
    switch (selector) {
        case kOSAErrorNumber:
            return answerNumber(type, result);
        case kOSAErrorMessage:
            return answerText(message_, type, result);
        case kOSAErrorBriefMessage:
            return answerText(brief_.empty() ? message_ : brief_, type, result);
        case kOSAErrorRange:
            return answerRange(type, result);
        case kOSAErrorApp:
        case kOSAErrorPartialResult:
        case kOSAErrorOffendingObject:
        case kOSAErrorExpectedType:
            return errAEDescNotFound;
        default:
            return errOSABadSelector;
    }
}

}  // namespace osa::script
