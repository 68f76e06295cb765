// Lists, records and events into each other, and what is made of lists of numbers.
#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"
#include "platform/events/coercions/CoercionTable.h"

namespace osa {
namespace {

constexpr std::size_t kMostParts = 4;

/// A type whose data is some 16-bit words, and the order in which a list has them.
struct ShapeForm {
    DescType type;
    DescType partType;
    std::size_t count;
    std::size_t wordOfItem[kMostParts];
};

constexpr ShapeForm kShapeForms[] = {
    {typeQDRectangle, typeSInt16, 4, {1, 0, 3, 2}},  // left, top, right, bottom
    {typeQDPoint, typeSInt16, 2, {1, 0}},            // horizontal, vertical
    {typeRGBColor, typeUInt16, 3, {0, 1, 2}},
};

/// The table of coercions sends only types that are here.
const ShapeForm& formOf(DescType type) {
    const ShapeForm* form = kShapeForms;
    while (form->type != type) ++form;
    return *form;
}

OSErr readPart(const AEDesc* list, std::size_t index, DescType partType, UInt16& word) {
    DescType actualType = typeNull;
    Size actualSize = 0;
    const OSErr status = AEGetNthPtr(list, static_cast<SInt32>(index + 1), partType, nullptr,
                                     &actualType, &word, sizeof word, &actualSize);
    if (status != noErr) return status;
    return actualType == partType && actualSize == sizeof word ? noErr : errAECoercionFail;
}

}  // namespace

OSErr anythingToList(const AEDesc* from, DescType, AEDesc* result) {
    OwnedDesc list;
    OSErr status = AECreateList(nullptr, 0, 0, list.out());
    if (status == noErr) status = AEPutDesc(list.out(), 0, from);
    if (status == noErr) *result = list.leak();
    return status;
}

OSErr listToOnlyItem(const AEDesc* from, DescType toType, AEDesc* result) {
    SInt32 count = 0;
    if (const OSErr status = AECountItems(from, &count); status != noErr) return status;
    return count == 1 ? AEGetNthDesc(from, 1, toType, nullptr, result) : OSErr{errAECoercionFail};
}

OSErr shapeToList(const AEDesc* from, DescType, AEDesc* result) {
    const ShapeForm& form = formOf(from->descriptorType);
    UInt16 words[kMostParts];
    const ByteSpan bytes = dataOf(*from);
    if (bytes.size() != form.count * sizeof *words) return errAECoercionFail;
    std::memcpy(words, bytes.data(), bytes.size());
    OwnedDesc list;
    OSErr status = AECreateList(nullptr, 0, 0, list.out());
    for (std::size_t i = 0; i < form.count && status == noErr; ++i) {
        status = AEPutPtr(list.out(), 0, form.partType, &words[form.wordOfItem[i]], sizeof *words);
    }
    if (status == noErr) *result = list.leak();
    return status;
}

OSErr listToShape(const AEDesc* from, DescType toType, AEDesc* result) {
    const ShapeForm& form = formOf(toType);
    SInt32 count = 0;
    if (const OSErr status = AECountItems(from, &count); status != noErr) return status;
    if (static_cast<std::size_t>(count) != form.count) return listToOnlyItem(from, toType, result);
    UInt16 words[kMostParts];
    for (std::size_t i = 0; i < form.count; ++i) {
        const OSErr status = readPart(from, i, form.partType, words[form.wordOfItem[i]]);
        if (status != noErr) return status;
    }
    return makeDesc(toType, {reinterpret_cast<const char*>(words), form.count * sizeof *words},
                    result);
}

OSErr eventToRecord(const AEDesc* from, DescType, AEDesc* result) {
    const Result<BlockView> event = openEvent(from);
    if (!event) return static_cast<OSErr>(event.status());
    OwnedDesc record;
    OSErr put = AECreateList(nullptr, 0, 1, record.out());
    if (put != noErr) return put;
    // The keywords differ already, so that nothing has to be looked for; and an event that is only
    // coerced keeps its parameters unread.
    const OSStatus walked = event->forEach(Section::items, [&](const ItemView& item) {
        put = putItem(record.out(), Section::items, nullptr,
                      newItem(item.keyword, item.type, item.data.data(),
                              static_cast<Size>(item.data.size())));
        return put == noErr;
    });
    if (walked != noErr || put != noErr) return put != noErr ? put : static_cast<OSErr>(walked);
    *result = record.leak();
    return noErr;
}

OSErr recordToRecord(const AEDesc* from, DescType toType, AEDesc* result) {
    if (AECheckIsRecord(from) == 0) return errAECoercionFail;
    const OSErr status = AEDuplicateDesc(from, result);
    if (status == noErr) result->descriptorType = toType;
    return status;
}

OSErr recordToUnknown(const AEDesc* from, DescType toType, AEDesc* result) {
    return isNamedInTable(toType) ? OSErr{errAECoercionFail} : recordToRecord(from, toType, result);
}

}  // namespace osa
