// Names of handlers and properties.
#include "platform/osa/javascript/Names.h"

#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>

#include "platform/base/ByteReader.h"
#include "platform/osa/javascript/Text.h"

namespace osa::script {
namespace {

constexpr DescType kEventName = 'evnt';

struct StandardHandler {
    AEEventID event;
    const char16_t* name;
};

constexpr StandardHandler kStandard[] = {
    {'oapp', u"run"},  {'odoc', u"openDocuments"}, {'pdoc', u"printDocuments"},
    {'quit', u"quit"}, {'rapp', u"reopen"},
};

bool inBars(const std::u16string& text) {
    return text.size() >= 2 && text.front() == u'|' && text.back() == u'|';
}

}  // namespace

Name eventName(AEEventClass eventClass, AEEventID eventID) {
    Name name;
    name.event = codeText(eventClass) + codeText(eventID);
    if (eventClass != 'aevt') return name;
    for (const StandardHandler& handler : kStandard)
        if (handler.event == eventID) name.text = handler.name;
    return name;
}

OSErr plainNameOf(const AEDesc& desc, Name* name) {
    const OSErr status = textOf(desc, &name->text);
    if (status == noErr && inBars(name->text))
        name->text = name->text.substr(1, name->text.size() - 2);
    return status;
}

OSErr nameOf(const AEDesc& desc, bool mayBeEvent, Name* name) {
    if (mayBeEvent && desc.descriptorType == kEventName) {
        std::byte bytes[8];
        if (AEGetDescDataSize(&desc) != static_cast<Size>(sizeof bytes)) return paramErr;
        if (const OSErr status = AEGetDescData(&desc, bytes, sizeof bytes); status != noErr)
            return status;
        ByteReader reader(bytes);
        const AEEventClass eventClass = reader.fourCC();
        *name = eventName(eventClass, reader.fourCC());
        return noErr;
    }
    std::u16string text;
    if (const OSErr status = textOf(desc, &text); status != noErr) return status;
    if (!inBars(text) && !JS_IsIdentifier(text.data(), text.size())) return paramErr;
    return plainNameOf(desc, name);
}

}  // namespace osa::script
