// Events: making them, and their attributes.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <vector>

#include "platform/events/ItemBlock.h"
#include "platform/events/ItemValues.h"

namespace osa {
namespace {

constexpr UInt32 kLargestReturnID = 32767;

SInt16 nextReturnID() {
    static std::atomic<UInt32> made{0};
    return static_cast<SInt16>(made.fetch_add(1, std::memory_order_relaxed) % kLargestReturnID + 1);
}

/// The keywords in the event's list of optional parameters, sorted. A list that is none lists
/// nothing.
std::vector<AEKeyword> optionalKeywords(const BlockView& event) {
    std::vector<AEKeyword> keywords;
    const Result<ItemView> attribute = event.find(Section::attributes, keyOptionalKeywordAttr);
    if (!attribute || attribute->type != typeAEList) return keywords;
    const Result<BlockView> list = BlockView::open(attribute->data);
    if (!list) return keywords;
    list->forEach(Section::items, [&](const ItemView& item) {
        AEKeyword keyword = 0;
        const bool isKeyword = item.type == typeKeyword || item.type == typeType;
        if (isKeyword && item.data.size() == sizeof keyword) {
            std::memcpy(&keyword, item.data.data(), sizeof keyword);
            keywords.push_back(keyword);
        }
        return true;
    });
    std::ranges::sort(keywords);
    return keywords;
}

Result<AEKeyword> missedKeyword(const BlockView& event) try {
    const std::vector<AEKeyword> optional = optionalKeywords(event);
    Result<AEKeyword> missed = Failure(errAEDescNotFound);
    const OSStatus status = event.forEach(Section::items, [&](const ItemView& item) {
        if (event.wasRead(item) || std::ranges::binary_search(optional, item.keyword)) return true;
        missed = item.keyword;
        return false;
    });
    if (status != noErr) return Failure(status);
    return missed;
} catch (const std::bad_alloc&) {
    return Failure(memFullErr);
}

/// Calls `use` with the attribute; the missed keyword is an item made for the occasion.
template <typename Use>
OSErr withAttribute(const AppleEvent* event, AEKeyword keyword, Use use) {
    const Result<BlockView> block = openEvent(event);
    if (!block) return static_cast<OSErr>(block.status());
    if (keyword == keyMissedKeywordAttr) {
        const Result<AEKeyword> missed = missedKeyword(*block);
        if (!missed) return static_cast<OSErr>(missed.status());
        return use(ItemView{keyword, typeKeyword, 0, std::as_bytes(std::span(&*missed, 1))});
    }
    const Result<ItemView> attribute = block->find(Section::attributes, keyword);
    return attribute ? use(*attribute) : static_cast<OSErr>(attribute.status());
}

OSErr put(AppleEvent* event, const NewItem& item) {
    const Result<BlockView> block = openEvent(event);
    if (!block) return static_cast<OSErr>(block.status());
    if (item.keyword == keyMissedKeywordAttr) return noErr;
    const Result<ItemView> old = block->find(Section::attributes, item.keyword);
    if (!old && old.status() != errAEDescNotFound) return static_cast<OSErr>(old.status());
    return putItem(event, Section::attributes, old ? &*old : nullptr, item);
}

}  // namespace
}  // namespace osa

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result) {
    if (result == nullptr) return paramErr;
    const AEDesc address = target != nullptr ? *target : AEDesc{typeNull, nullptr};
    const SInt32 id = returnID == kAutoGenerateReturnID ? osa::nextReturnID() : returnID;
    const osa::NewItem attributes[] = {
        osa::newItem(keyEventClassAttr, typeType, &eventClass, sizeof eventClass),
        osa::newItem(keyEventIDAttr, typeType, &eventID, sizeof eventID),
        osa::newItem(keyReturnIDAttr, typeSInt32, &id, sizeof id),
        osa::newItem(keyTransactionIDAttr, typeSInt32, &transactionID, sizeof transactionID),
        osa::newItem(keyAddressAttr, address),
    };
    const osa::BlockHeader empty = osa::emptyBlock();
    AEDesc event;
    OSErr status = AECreateDesc(typeAppleEvent, &empty, sizeof empty, &event);
    for (const osa::NewItem& each : attributes) {
        const bool isLeftOut = each.keyword == keyAddressAttr && each.type == typeNull;
        if (status == noErr && !isLeftOut) {
            status = osa::putItem(&event, osa::Section::attributes, nullptr, each);
        }
    }
    if (status != noErr) AEDisposeDesc(&event);
    *result = event;
    return status;
}

OSErr AEPutAttributeDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    return osa::put(event, osa::newItem(keyword, *desc));
}

OSErr AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                        Size size) {
    if (size < 0 || (data == nullptr && size > 0)) return paramErr;
    return osa::put(event, osa::newItem(keyword, type, data, size));
}

OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                         AEDesc* result) {
    if (result == nullptr) return paramErr;
    const AppleEvent source = event != nullptr ? *event : AppleEvent{typeNull, nullptr};
    AEInitializeDesc(result);
    if (event == nullptr) return paramErr;
    return osa::withAttribute(&source, keyword, [&](const osa::ItemView& attribute) {
        return osa::copyItem(attribute, desiredType, result);
    });
}

OSErr AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                        DescType* actualType, void* buffer, Size maximumSize, Size* actualSize) {
    const osa::DataOutput output{actualType, buffer, maximumSize, actualSize};
    if (!output.isPossible()) return paramErr;
    return osa::withAttribute(event, keyword, [&](const osa::ItemView& attribute) {
        return osa::copyItemData(attribute, desiredType, output);
    });
}

OSErr AESizeOfAttribute(const AppleEvent* event, AEKeyword keyword, DescType* type, Size* size) {
    return osa::withAttribute(event, keyword, [&](const osa::ItemView& attribute) {
        osa::tellItem(attribute, type, size);
        return OSErr{noErr};
    });
}
