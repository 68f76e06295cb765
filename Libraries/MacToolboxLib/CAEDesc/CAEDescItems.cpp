// Items of lists, fields of records, attributes of events.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"

namespace {

// The attributes that are copied, in this order, ended by 'null'.
constexpr AEKeyword kAttributesForRecords[] = {keySubjectAttr,         keyOptionalKeywordAttr,
                                               keyTimeoutAttr,         keyInteractLevelAttr,
                                               keyEventSourceAttr,     keyMissedKeywordAttr,
                                               keyOriginalAddressAttr, 'actm',
                                               keyReplyRequestedAttr,  typeNull};
constexpr AEKeyword kAttributesForEvents[] = {keySubjectAttr,         keyOptionalKeywordAttr,
                                              keyTimeoutAttr,         keyInteractLevelAttr,
                                              keyEventSourceAttr,     keyMissedKeywordAttr,
                                              keyOriginalAddressAttr, 'actm',
                                              keyReplyRequestedAttr,  typeNull};

}  // namespace

SInt32 CAEDescReader::CountItems() const {
    SInt32 count = 0;
    FailOSErr(AECountItems(&mDesc, &count));
    return count;
}

void CAEDescReader::GetItem(SInt32 index, CAEDesc& out, DescType type) const {
    CAEDesc item;
    FailOSErr(AEGetNthDesc(&mDesc, index, type, nullptr, &item.mDesc));
    out.Aquire(item);
}

void CAEDescReader::AppendItem(const CAEDescReader& item) {
    FailOSErr(AEPutDesc(&mDesc, 0, &item.mDesc));
}

AEKeyword CAEDescReader::GetPropertyKeyword(SInt32 index) const {
    AEKeyword keyword = 0;
    FailOSErr(AEGetNthPtr(&mDesc, index, typeWildCard, &keyword, nullptr, nullptr, 0, nullptr));
    return keyword;
}

void CAEDescReader::GetProperty(AEKeyword key, CAEDesc& out, DescType type) const {
    CAEDesc value(&mDesc, key, type);
    out.Aquire(value);
}

void CAEDescReader::SetProperty(AEKeyword key, const CAEDescReader& value) {
    FailOSErr(AEPutParamDesc(&mDesc, key, &value.mDesc));
}

void CAEDescReader::SetProperty(AEKeyword key, DescType type, const char* data, SInt32 size) {
    FailOSErr(AEPutParamPtr(&mDesc, key, type, data, size));
}

void CAEDescReader::GetAttribute(AEKeyword key, CAEDesc& out, DescType type) const {
    CAEDesc value;
    FailOSErr(AEGetAttributeDesc(&mDesc, key, type, &value.mDesc));
    out.Aquire(value);
}

void CAEDescReader::SetAttribute(AEKeyword key, const CAEDescReader& value) {
    FailOSErr(AEPutAttributeDesc(&mDesc, key, &value.mDesc));
}

void CAEDescReader::GetEventIdentifier(unsigned char* buffer) const {
    constexpr Size size = 8;
    if (AEGetDescDataSize(&mDesc) < size) FailOSErr(errAECorruptData);
    GetData(reinterpret_cast<char*>(buffer), size);
}

SInt32 CAEDescReader::GetReturnID() const {
    CAEDesc value;
    GetAttribute(keyReturnIDAttr, value, typeWildCard);
    return value.GetLong();
}

void CAEDescReader::CopyItems(CAEDesc& list) const {
    const SInt32 count = CountItems();
    CAEDesc item;
    for (SInt32 index = 1; index <= count; ++index) {
        GetItem(index, item, typeWildCard);
        list.AppendItem(item);
    }
}

void CAEDescReader::CopyProperties(CAEDescReader& record) const {
    const SInt32 count = CountItems();
    CAEDesc value;
    for (SInt32 index = 1; index <= count; ++index) {
        const AEKeyword keyword = GetPropertyKeyword(index);
        GetItem(index, value, typeWildCard);
        record.SetProperty(keyword, value);
    }
}

void CAEDescReader::CopyAttributesToRecord(CAEDescReader& record) const {
    CAEDesc value;
    for (const AEKeyword* key = kAttributesForRecords; *key != typeNull; ++key) {
        if (AESizeOfAttribute(&mDesc, *key, nullptr, nullptr) != noErr) continue;
        GetAttribute(*key, value, typeWildCard);
        record.SetProperty(*key, value);
    }
}

void CAEDescReader::CopyAttributes(CAEDescReader& event) const {
    const bool isEvent = Is(typeAppleEvent);
    CAEDesc value;
    for (const AEKeyword* key = kAttributesForEvents; *key != typeNull; ++key) {
        const OSErr status = isEvent ? AESizeOfAttribute(&mDesc, *key, nullptr, nullptr)
                                     : AESizeOfParam(&mDesc, *key, nullptr, nullptr);
        if (status != noErr) continue;
        if (isEvent) {
            GetAttribute(*key, value, typeWildCard);
        } else {
            GetProperty(*key, value, typeWildCard);
        }
        event.SetAttribute(*key, value);
    }
}
