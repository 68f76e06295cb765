// Long random runs against plain models: mutation, conversion, the calendar, paths.
#include <CoreFoundation/CFDate.h>

#include <cmath>
#include <random>

#include "platform/cf/Calendar.h"
#include "tests/platform/cf/CFTestSupport.h"

namespace {

class CFModelTest : public CFTest {
  protected:
    std::size_t below(std::size_t limit) { return random_() % limit; }
    /// Letters that every conversion treats differently: ASCII, Mac Roman, beyond, and pairs.
    std::u16string randomText(std::size_t length) {
        static const std::u16string_view kLetters[] = {
            u"a", u"/", u":", u"%", u"\r", u"\u00E9", u"\u20AC", u"\u4E00", u"\U0001F600"};
        std::u16string text;
        for (std::size_t i = below(length + 1); i > 0; --i)
            text += kLetters[below(std::size(kLetters))];
        return text;
    }
    static StringRef makeUnits(std::u16string_view units) {
        return StringRef::Adopt(
            CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()),
                                         static_cast<CFIndex>(units.size())));
    }

  private:
    std::mt19937 random_{11};
};

TEST_F(CFModelTest, MutableStringsFollowTheModel) {
    const auto string = CFRef<CFMutableStringRef>::Adopt(CFStringCreateMutable(nullptr, 0));
    std::u16string model;
    for (int step = 0; step < 3000; ++step) {
        const std::size_t start = below(model.size() + 1);
        const std::size_t length = below(std::min<std::size_t>(model.size() - start, 12) + 1);
        const std::u16string text = randomText(5);
        model.replace(start, length, text);
        CFStringReplace(string.get(),
                        CFRangeMake(static_cast<CFIndex>(start), static_cast<CFIndex>(length)),
                        makeUnits(text).get());
        ASSERT_TRUE(CFEqual(string.get(), makeUnits(model).get())) << "step " << step;
    }
}

TEST_F(CFModelTest, AnyRoomGetsTheLongestPrefixOfWholeCharacters) {
    for (int round = 0; round < 200; ++round) {
        const std::u16string units = randomText(12);
        const StringRef string = makeUnits(units);
        const CFRange all = CFRangeMake(0, static_cast<CFIndex>(units.size()));
        for (const CFStringEncoding encoding :
             {kCFStringEncodingUTF8, kCFStringEncodingUTF16BE, kCFStringEncodingUTF32LE}) {
            CFIndex before = 0;
            for (CFIndex room = 0; room <= 48; ++room) {
                UInt8 buffer[49];
                buffer[room] = 42;
                CFIndex used = 0;
                const CFIndex done =
                    CFStringGetBytes(string.get(), all, encoding, 0, false, buffer, room, &used);
                ASSERT_EQ(buffer[room], 42) << "written behind the room";
                ASSERT_GE(done, before) << "more room, fewer characters";
                const auto back = StringRef::Adopt(
                    CFStringCreateWithBytes(nullptr, buffer, used, encoding, false));
                ASSERT_TRUE(CFEqual(
                    back.get(), makeUnits(units.substr(0, static_cast<std::size_t>(done))).get()));
                before = done;
            }
            ASSERT_EQ(before, all.length);
        }
    }
}

TEST_F(CFModelTest, EveryDayOfEightCenturies) {
    using namespace std::chrono;
    const sys_days epoch = year(2001) / 1 / 1;
    for (sys_days day = year(1600) / 1 / 1; day < sys_days(year(2400) / 1 / 1); day += days(1)) {
        const year_month_day expected(day);
        const double time = static_cast<double>((day - epoch).count()) * 86400 + 86399.5;
        const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(time, nullptr);
        ASSERT_EQ(date.year, int(expected.year())) << osa::iso8601(time);
        ASSERT_EQ(unsigned(date.month), unsigned(expected.month())) << osa::iso8601(time);
        ASSERT_EQ(unsigned(date.day), unsigned(expected.day())) << osa::iso8601(time);
        ASSERT_EQ(CFGregorianDateGetAbsoluteTime(date, nullptr), time);
        ASSERT_EQ(osa::timeOfISO8601(osa::iso8601(time)), std::floor(time));
    }
}

TEST_F(CFModelTest, PathsComeBackInBothStyles) {
    for (int round = 0; round < 2000; ++round) {
        std::u16string path = u"/" + randomText(8) + u"/" + randomText(8);
        while (path.find(u"//") != path.npos) path.erase(path.find(u"//"), 1);
        if (path.size() > 1 && path.back() == u'/') path.pop_back();
        const StringRef string = makeUnits(path);
        SCOPED_TRACE(text(string));
        for (const CFURLPathStyle style : {kCFURLPOSIXPathStyle, kCFURLHFSPathStyle}) {
            const auto url = CFRef<CFURLRef>::Adopt(
                CFURLCreateWithFileSystemPath(nullptr, string.get(), kCFURLPOSIXPathStyle, false));
            const auto styled = StringRef::Adopt(CFURLCopyFileSystemPath(url.get(), style));
            const auto back = CFRef<CFURLRef>::Adopt(
                CFURLCreateWithFileSystemPath(nullptr, styled.get(), style, false));
            ASSERT_TRUE(CFEqual(url.get(), back.get())) << text(styled);
            const auto posix =
                StringRef::Adopt(CFURLCopyFileSystemPath(back.get(), kCFURLPOSIXPathStyle));
            ASSERT_TRUE(CFEqual(posix.get(), string.get()));
        }
    }
}

}  // namespace
