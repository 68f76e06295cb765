// Records as JSON, as text and as property lists.
#include "cli/RecordFormat.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFNumber.h>

#include <algorithm>
#include <vector>

#include "cli/JsonValue.h"

namespace osa::cli {
namespace {

Json recordObject(const service::ImportRecord& record) {
    Json object;
    object["path"] = toValidUTF8(record.path);
    if (record.kind) {
        object["kind"] = *record.kind;
        object["kindName"] = service::kindName(*record.kind);
    }
    object["imported"] = record.imported;
    object["attributes"] = jsonValue(record.attributes.get());
    Json log = Json::array();
    for (const std::string& line : record.log) log.push_back(toValidUTF8(line));
    object["log"] = std::move(log);
    if (!record.error.empty()) object["error"] = record.error;
    return object;
}

struct Line {
    std::string key;
    std::string value;
};

std::vector<Line> recordLines(const service::ImportRecord& record) {
    std::vector<Line> lines;
    if (record.kind) {
        lines.push_back(
            {"kind", std::to_string(*record.kind) + " (" + service::kindName(*record.kind) + ")"});
    }
    if (!record.error.empty()) {
        lines.push_back({"error", record.error});
        return lines;
    }
    lines.push_back({"imported", record.imported ? "yes" : "no"});
    const Json attributes = jsonValue(record.attributes.get());
    for (const auto& [key, value] : attributes.items()) lines.push_back({key, value.dump()});
    for (const std::string& line : record.log)
        lines.push_back({"log", Json(toValidUTF8(line)).dump()});
    return lines;
}

CFRef<CFTypeRef> makeString(const std::string& utf8) {
    return CFRef<CFTypeRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

void setValue(CFMutableDictionaryRef dictionary, CFStringRef key, const CFRef<CFTypeRef>& value) {
    if (value) CFDictionarySetValue(dictionary, key, value.get());
}

}  // namespace

std::string recordAsJson(const service::ImportRecord& record) {
    return forTerminal(recordObject(record).dump());
}

std::string recordAsText(const service::ImportRecord& record) {
    std::vector<Line> lines = recordLines(record);
    std::size_t width = 0;
    for (Line& line : lines) {
        line = {forTerminal(line.key), forTerminal(line.value)};
        width = std::max(width, line.key.size());
    }
    std::string text = forTerminal(record.path) + "\n";
    for (const Line& line : lines) {
        const std::string padding(width - line.key.size(), ' ');
        text += "    " + line.key + padding + " = " + line.value + "\n";
    }
    return text;
}

CFRef<CFDictionaryRef> recordAsPropertyList(const service::ImportRecord& record) {
    const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    setValue(dictionary, CFSTR("path"), makeString(toValidUTF8(record.path)));
    if (record.kind) {
        const auto kind = static_cast<SInt32>(*record.kind);
        setValue(dictionary, CFSTR("kind"),
                 CFRef<CFTypeRef>::Adopt(
                     CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &kind)));
        setValue(dictionary, CFSTR("kindName"), makeString(service::kindName(*record.kind)));
    }
    CFDictionarySetValue(dictionary, CFSTR("imported"),
                         record.imported ? kCFBooleanTrue : kCFBooleanFalse);
    CFDictionarySetValue(dictionary, CFSTR("attributes"), record.attributes.get());
    const auto log = CFRef<CFMutableArrayRef>::Adopt(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const std::string& line : record.log) {
        CFArrayAppendValue(log.get(), makeString(toValidUTF8(line)).get());
    }
    CFDictionarySetValue(dictionary, CFSTR("log"), log.get());
    if (!record.error.empty()) setValue(dictionary, CFSTR("error"), makeString(record.error));
    return CFRef<CFDictionaryRef>::Adopt(dictionary);
}

}  // namespace osa::cli
