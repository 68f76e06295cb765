// Record fields and event parameters by keyword.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include "platform/events/ItemBlock.h"
#include "platform/events/ItemValues.h"

namespace osa {
namespace {

Result<Container> openRecord(const AERecord* record) {
    OSA_TRY(const Container container, openContainer(record));
    if (container.shape == Shape::list) return Failure(errAEWrongDataType);
    return container;
}

struct Field {
    Container container;
    ItemView item;

    void given() const {
        if (container.shape == Shape::event) container.block.markRead(item);
    }
};

Result<Field> findField(const AERecord* record, AEKeyword keyword) {
    OSA_TRY(const Container container, openRecord(record));
    OSA_TRY(const ItemView item, container.block.find(Section::items, keyword));
    return Field{container, item};
}

OSErr put(AERecord* record, const NewItem& item) {
    const Result<Container> container = openRecord(record);
    if (!container) return static_cast<OSErr>(container.status());
    const Result<ItemView> old = container->block.find(Section::items, item.keyword);
    if (!old && old.status() != errAEDescNotFound) return static_cast<OSErr>(old.status());
    return putItem(record, Section::items, old ? &*old : nullptr, item);
}

}  // namespace
}  // namespace osa

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    return osa::put(event, osa::newItem(keyword, *desc));
}

OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                    Size size) {
    if (size < 0 || (data == nullptr && size > 0)) return paramErr;
    return osa::put(event, osa::newItem(keyword, type, data, size));
}

OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                     AEDesc* result) {
    if (result == nullptr) return paramErr;
    const AppleEvent source = event != nullptr ? *event : AppleEvent{typeNull, nullptr};
    AEInitializeDesc(result);
    if (event == nullptr) return paramErr;
    const auto field = osa::findField(&source, keyword);
    if (!field) return static_cast<OSErr>(field.status());
    const OSErr status = osa::copyItem(field->item, desiredType, result);
    if (status == noErr) field->given();
    return status;
}

OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                    DescType* actualType, void* buffer, Size maximumSize, Size* actualSize) {
    const osa::DataOutput output{actualType, buffer, maximumSize, actualSize};
    if (!output.isPossible()) return paramErr;
    const auto field = osa::findField(event, keyword);
    if (!field) return static_cast<OSErr>(field.status());
    const OSErr status = osa::copyItemData(field->item, desiredType, output);
    if (status == noErr) field->given();
    return status;
}

OSErr AESizeOfParam(const AppleEvent* event, AEKeyword keyword, DescType* type, Size* size) {
    const auto field = osa::findField(event, keyword);
    if (!field) return static_cast<OSErr>(field.status());
    osa::tellItem(field->item, type, size);
    return noErr;
}

OSErr AEDeleteParam(AppleEvent* event, AEKeyword keyword) {
    const auto field = osa::findField(event, keyword);
    if (!field) return static_cast<OSErr>(field.status());
    return osa::removeItem(event, osa::Section::items, field->item);
}
