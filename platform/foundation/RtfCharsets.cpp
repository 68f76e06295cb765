// The table of character sets.
#include "platform/foundation/RtfCharsets.h"

namespace osa {

unsigned codePageForRtfCharset(int charset) {
    static constexpr struct {
        int charset;
        unsigned codePage;
    } kCharsets[] = {
        {0, 1252},   {77, 10000}, {78, 10001}, {79, 10003}, {80, 10008}, {81, 10002},
        {82, 10000}, {83, 10005}, {84, 10004}, {85, 10006}, {86, 10081}, {87, 10021},
        {88, 10029}, {89, 10007}, {128, 932},  {129, 949},  {130, 1361}, {134, 936},
        {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256},
        {186, 1257}, {204, 1251}, {222, 874},  {238, 1250}, {254, 437},  {255, 850},
    };
    for (const auto& entry : kCharsets)
        if (entry.charset == charset) return entry.codePage;
    return 0;
}

}  // namespace osa
