// Descriptors as text for people: the brackets around what is nested, and the published call.
#include <CoreServices/AEHelpers.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <cstring>
#include <limits>
#include <new>

#include "platform/events/NestedWalk.h"
#include "platform/events/PrintedValue.h"

namespace osa {
namespace {

using Kind = NestedWalk::Kind;

constexpr std::size_t kLongestText = std::numeric_limits<Size>::max() - 1;

/// Whether a section's items fill it from end to end.
bool isSectionSound(const BlockView& block, Section section) {
    UInt32 end = block.begin(section);
    const OSStatus status = block.forEach(section, [&](const ItemView& item) {
        end = item.offset + item.length();
        return true;
    });
    return status == noErr && end == block.end(section);
}

/// A container whose own items are all there; what is nested in them is seen when its turn comes.
bool isSoundContainer(DescType type, ByteSpan data) {
    if (shapeOf(type, data) == Shape::none) return false;
    const Result<BlockView> block = BlockView::open(data);
    if (!block) return false;
    return data.empty() ||
           (isSectionSound(*block, Section::attributes) && isSectionSound(*block, Section::items));
}

/// The value of an attribute that is a code; an event's class and ID stand before its brackets.
bool codeOf(const ItemView& attribute, FourCharCode& code) {
    if (attribute.type != typeType || attribute.data.size() != sizeof code) return false;
    std::memcpy(&code, attribute.data.data(), sizeof code);
    return true;
}

void printEventCode(ByteSpan event, AEKeyword keyword, std::string& out) {
    FourCharCode code = '\?\?\?\?';
    if (const Result<BlockView> block = BlockView::open(event)) {
        const Result<ItemView> found = block->find(Section::attributes, keyword);
        if (found) codeOf(*found, code);
    }
    printCode(code, out);
}

class Printer {
  public:
    explicit Printer(std::string& out) : out_(out) {}

    void print(const NestedWalk::Step& step) {
        if (step.kind == Kind::close) return close(step.item.type);
        if (isInHeading(step)) return;
        if (!step.isOutermost) separate(step);
        if (step.kind == Kind::open) return open(step.item);
        printValue(step.item.type, step.item.data, out_);
        isAtStart_ = false;
    }

  private:
    static bool isInHeading(const NestedWalk::Step& step) {
        if (step.isOutermost || step.containerType != typeAppleEvent) return false;
        FourCharCode code;
        const bool isNamed =
            step.item.keyword == keyEventClassAttr || step.item.keyword == keyEventIDAttr;
        return step.section == Section::attributes && isNamed && codeOf(step.item, code);
    }
    void separate(const NestedWalk::Step& step) {
        if (!isAtStart_) out_ += ", ";
        if (step.containerType == typeAEList) return;
        if (isAtStart_) out_ += ' ';
        if (step.section == Section::attributes) out_ += '&';
        printKeyword(step.item.keyword, out_);
        out_ += ':';
    }
    void open(const ItemView& item) {
        isAtStart_ = true;
        if (item.type == typeAEList) {
            out_ += '[';
            return;
        }
        if (item.type == typeAppleEvent) {
            printEventCode(item.data, keyEventClassAttr, out_);
            out_ += '\\';
            printEventCode(item.data, keyEventIDAttr, out_);
        } else if (item.type != typeAERecord) {
            printTypeName(item.type, out_);
            out_ += ' ';
        }
        out_ += '{';
    }
    void close(DescType type) {
        if (type == typeAEList) {
            out_ += ']';
        } else {
            out_ += isAtStart_ ? "}" : " }";
        }
        isAtStart_ = false;
    }

    std::string& out_;
    bool isAtStart_ = false;  // of the innermost container
};

OSStatus printDescriptor(DescType type, ByteSpan data, std::string& out) {
    NestedWalk walk(data, std::endian::native, [](const ItemView& item, ByteSpan) {
        return isSoundContainer(item.type, item.data);
    });
    NestedWalk::Step step;
    Printer printer(out);
    bool more = walk.start(type, isSoundContainer(type, data), step);
    for (; more; more = walk.next(step)) {
        printer.print(step);
        if (out.size() > kLongestText) return memFullErr;
    }
    return walk.status();
}

}  // namespace
}  // namespace osa

OSStatus AEPrintDescToHandle(const AEDesc* desc, Handle* result) try {
    if (result == nullptr) return paramErr;
    *result = nullptr;
    if (desc == nullptr) return paramErr;
    std::string text;
    const OSStatus status = osa::printDescriptor(desc->descriptorType, osa::dataOf(*desc), text);
    if (status != noErr) return status;
    return PtrToHand(text.c_str(), result, static_cast<Size>(text.size() + 1));
} catch (const std::bad_alloc&) {
    return memFullErr;
}
