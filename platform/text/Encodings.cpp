// Encoding numbers: Core Foundation's, Windows code pages, Internet names, ICU's converters.
#include "platform/text/Encodings.h"

#include <string>

#include "platform/text/TextConverter.h"

namespace osa {

namespace {

struct Encoding {
    UInt32 cfEncoding;
    unsigned codePage;    ///< 0: none
    const char* icuName;  ///< null: converted by this room
};

// Where a code page stands twice the first row is its encoding. The East Asian Mac scripts are the
// Windows pages here: they differ in a handful of vendor characters.
// clang-format off
constexpr Encoding kEncodings[] = {
    {kTextEncodingMacRoman,      10000, nullptr},
    {kTextEncodingUTF8,          65001, nullptr},
    {kTextEncodingUTF16LE,        1200, nullptr},
    {kTextEncodingUTF16BE,        1201, nullptr},
    {kTextEncodingUTF32LE,       12000, nullptr},
    {kTextEncodingUTF32BE,       12001, nullptr},
    {kTextEncodingUTF16,             0, nullptr},
    {kTextEncodingUTF32,             0, nullptr},
    {kTextEncodingASCII,         20127, nullptr},
    {kTextEncodingISOLatin1,     28591, nullptr},
    {kTextEncodingNextStepLatin,     0, nullptr},
    {0x0500, 1252, "windows-1252"}, {0x0501, 1250, "windows-1250"},
    {0x0502, 1251, "windows-1251"}, {0x0503, 1253, "windows-1253"},
    {0x0504, 1254, "windows-1254"}, {0x0505, 1255, "windows-1255"},
    {0x0506, 1256, "windows-1256"}, {0x0507, 1257, "windows-1257"},
    {0x0508, 1258, "windows-1258"},
    {0x0420,  932, "windows-932"},  {0x0421,  936, "windows-936"},
    {0x0422,  949, "windows-949"},  {0x0423,  950, "windows-950"},
    {0x0400,  437, "ibm-437"},      {0x0405,  737, "ibm-737"},
    {0x0406,  775, "ibm-775"},      {0x0410,  850, "ibm-850"},
    {0x0411,  851, "ibm-851"},      {0x0412,  852, "ibm-852"},
    {0x0413,  855, "ibm-855"},      {0x0414,  857, "ibm-857"},
    {0x0415,  860, "ibm-860"},      {0x0416,  861, "ibm-861"},
    {0x0417,  862, "ibm-862"},      {0x0418,  863, "ibm-863"},
    {0x0419,  864, "ibm-864"},      {0x041A,  865, "ibm-865"},
    {0x041B,  866, "ibm-866"},      {0x041C,  869, "ibm-869"},
    {0x041D,  874, "windows-874"},
    {0x0001, 10001, "windows-932"}, {0x0002, 10002, "windows-950"},
    {0x0003, 10003, "windows-949"}, {0x0019, 10008, "windows-936"},
    {0x0015, 10021, "windows-874"}, {0x0006, 10006, "x-mac-greek"},
    {0x0007, 10007, "x-mac-cyrillic"}, {0x0098, 10017, "x-mac-cyrillic"},
    {0x001D, 10029, "x-mac-centraleurroman"}, {0x0023, 10081, "x-mac-turkish"},
    {0x0202, 28592, "iso-8859-2"},  {0x0203, 28593, "iso-8859-3"},
    {0x0204, 28594, "iso-8859-4"},  {0x0205, 28595, "iso-8859-5"},
    {0x0206, 28596, "iso-8859-6"},  {0x0207, 28597, "iso-8859-7"},
    {0x0208, 28598, "iso-8859-8"},  {0x0209, 28599, "iso-8859-9"},
    {0x020D, 28603, "iso-8859-13"}, {0x020F, 28605, "iso-8859-15"},
    {0x0631,     0, "windows-936"}, {0x0632, 54936, "gb18030"},
    {0x0820, 50220, "iso-2022-jp"}, {0x0920, 20932, "euc-jp"},
    {0x0930, 51936, "gb2312"},      {0x0940, 51949, "euc-kr"},
    {0x0A01,     0, "shift_jis"},   {0x0A02, 20866, "koi8-r"},
    {0x0A03,     0, "big5"},        {0x0A08, 21866, "koi8-u"},
};

struct CharsetName {
    const char* name;
    UInt32 cfEncoding;
};
// The names whose encodings this room converts; ICU's are asked for by the table above.
constexpr CharsetName kCharsetNames[] = {
    {"utf-8", kTextEncodingUTF8},          {"utf8", kTextEncodingUTF8},
    {"utf-16", kTextEncodingUTF16},        {"utf-16be", kTextEncodingUTF16BE},
    {"utf-16le", kTextEncodingUTF16LE},    {"utf-32", kTextEncodingUTF32},
    {"utf-32be", kTextEncodingUTF32BE},    {"utf-32le", kTextEncodingUTF32LE},
    {"us-ascii", kTextEncodingASCII},      {"ascii", kTextEncodingASCII},
    {"iso-8859-1", kTextEncodingISOLatin1}, {"latin1", kTextEncodingISOLatin1},
    {"macintosh", kTextEncodingMacRoman},  {"x-mac-roman", kTextEncodingMacRoman},
    {"x-nextstep", kTextEncodingNextStepLatin},
};
// clang-format on

const Encoding* find(UInt32 cfEncoding) {
    for (const Encoding& encoding : kEncodings)
        if (encoding.cfEncoding == cfEncoding) return &encoding;
    return nullptr;
}

}  // namespace

const char* icuNameOfEncoding(UInt32 cfEncoding) {
    const Encoding* const encoding = find(cfEncoding);
    return encoding == nullptr ? nullptr : encoding->icuName;
}

bool isEncodingKnown(UInt32 cfEncoding) {
    return find(cfEncoding) != nullptr;
}

UInt32 encodingForWindowsCodePage(unsigned codePage) {
    for (const Encoding& encoding : kEncodings)
        if (codePage != 0 && encoding.codePage == codePage) return encoding.cfEncoding;
    return kTextEncodingInvalid;
}

UInt32 encodingForCharsetName(std::string_view name) {
    std::string lower;
    for (const char c : name)
        lower.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c);
    for (const CharsetName& charset : kCharsetNames)
        if (lower == charset.name) return charset.cfEncoding;
    for (const Encoding& encoding : kEncodings)
        if (encoding.icuName != nullptr && lower == encoding.icuName) return encoding.cfEncoding;
    return kTextEncodingInvalid;
}

}  // namespace osa
