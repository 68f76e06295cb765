// Items by index, of lists, records and events.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include "platform/events/ItemBlock.h"
#include "platform/events/ItemValues.h"

namespace osa {
namespace {

struct IndexedItem {
    Container container;
    ItemView item;

    AEKeyword keyword() const {
        return container.shape == Shape::list ? AEKeyword{typeWildCard} : item.keyword;
    }
    void given(AEKeyword* keywordOut) const {
        if (keywordOut != nullptr) *keywordOut = keyword();
        if (container.shape == Shape::event) container.block.markRead(item);
    }
};

Result<IndexedItem> itemAt(const AEDescList* list, SInt32 index) {
    OSA_TRY(const Container container, openContainer(list));
    OSA_TRY(const ItemView item, container.block.item(index));
    return IndexedItem{container, item};
}

OSErr put(AEDescList* list, SInt32 index, const NewItem& item) {
    const Result<Container> container = openContainer(list);
    if (!container) return static_cast<OSErr>(container.status());
    if (container->shape != Shape::list) return errAEWrongDataType;
    const auto count = static_cast<SInt64>(container->block.count(Section::items));
    if (index == 0 || index == count + 1) return putItem(list, Section::items, nullptr, item);
    const Result<ItemView> old = container->block.item(index);
    if (!old) return static_cast<OSErr>(old.status());
    return putItem(list, Section::items, &*old, item);
}

}  // namespace
}  // namespace osa

OSErr AECreateList(const void*, Size, Boolean isRecord, AEDescList* result) {
    const osa::BlockHeader empty = osa::emptyBlock();
    return AECreateDesc(isRecord != 0 ? typeAERecord : typeAEList, &empty, sizeof empty, result);
}

OSErr AECountItems(const AEDescList* list, SInt32* count) {
    if (count == nullptr) return paramErr;
    *count = 0;
    const auto container = osa::openContainer(list);
    if (!container) return static_cast<OSErr>(container.status());
    *count = static_cast<SInt32>(container->block.count(osa::Section::items));
    return noErr;
}

OSErr AEPutDesc(AEDescList* list, SInt32 index, const AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    return osa::put(list, index, osa::newItem(typeWildCard, *desc));
}

OSErr AEPutPtr(AEDescList* list, SInt32 index, DescType type, const void* data, Size size) {
    if (size < 0 || (data == nullptr && size > 0)) return paramErr;
    return osa::put(list, index, osa::newItem(typeWildCard, type, data, size));
}

OSErr AEGetNthDesc(const AEDescList* list, SInt32 index, DescType desiredType, AEKeyword* keyword,
                   AEDesc* result) {
    if (result == nullptr) return paramErr;
    const AEDescList source = list != nullptr ? *list : AEDescList{typeNull, nullptr};
    AEInitializeDesc(result);
    if (list == nullptr) return paramErr;
    const auto found = osa::itemAt(&source, index);
    if (!found) return static_cast<OSErr>(found.status());
    const OSErr status = osa::copyItem(found->item, desiredType, result);
    if (status == noErr) found->given(keyword);
    return status;
}

OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, DescType desiredType, AEKeyword* keyword,
                  DescType* actualType, void* buffer, Size maximumSize, Size* actualSize) {
    const osa::DataOutput output{actualType, buffer, maximumSize, actualSize};
    if (!output.isPossible()) return paramErr;
    const auto found = osa::itemAt(list, index);
    if (!found) return static_cast<OSErr>(found.status());
    const OSErr status = osa::copyItemData(found->item, desiredType, output);
    if (status == noErr) found->given(keyword);
    return status;
}

OSErr AESizeOfNthItem(const AEDescList* list, SInt32 index, DescType* type, Size* size) {
    const auto found = osa::itemAt(list, index);
    if (!found) return static_cast<OSErr>(found.status());
    osa::tellItem(found->item, type, size);
    return noErr;
}

OSErr AEDeleteItem(AEDescList* list, SInt32 index) {
    const auto found = osa::itemAt(list, index);
    if (!found) return static_cast<OSErr>(found.status());
    return osa::removeItem(list, osa::Section::items, found->item);
}

Boolean AECheckIsRecord(const AEDesc* desc) {
    const auto container = osa::openContainer(desc);
    return container.ok() && container->shape != osa::Shape::list;
}
