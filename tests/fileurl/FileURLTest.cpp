// File URL descriptors: to and from everything else that names a file.
#include "fileurl/FileURL.h"

#include <CoreServices/AEObjects.h>
#include <CoreServices/Resources.h>
#include <dlfcn.h>

#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

/// A descriptor, or the status that came instead of one.
struct Desc {
    AEDesc desc{typeNull, nullptr};
    OSStatus status = noErr;

    Desc() = default;
    Desc(DescType type, const std::string& data) {
        status = AECreateDesc(type, data.data(), static_cast<Size>(data.size()), &desc);
    }
    Desc(Desc&& other) noexcept
        : desc(std::exchange(other.desc, {typeNull, nullptr})), status(other.status) {}
    ~Desc() { AEDisposeDesc(&desc); }

    Desc to(DescType type) const {
        Desc made;
        made.status = AECoerceDesc(&desc, type, &made.desc);
        return made;
    }
    Desc handled() const {
        Desc made;
        made.status = FURLCoerceDescToFURL(&desc, typeFileURL, 0, &made.desc);
        return made;
    }
    /// The data, or "status -43".
    std::string text() const {
        if (status != noErr) return "status " + std::to_string(status);
        std::string data(static_cast<std::size_t>(AEGetDescDataSize(&desc)), '\0');
        AEGetDescData(&desc, data.data(), static_cast<Size>(data.size()));
        return data;
    }
};

using URL = CFRef<CFURLRef>;

Desc makeFURL(const URL& url) {
    Desc made;
    made.status = FURLCreateDescFromCFURL(url.get(), &made.desc);
    return made;
}

class FileURL : public testing::Test {
  protected:
    Desc furlOf(const std::string& name) const {
        return makeFURL(urlOf(folder_.path(name), name.ends_with('/')));
    }
    const NoLeaks leaks_;
    TemporaryFolder folder_;
};

TEST_F(FileURL, GoesToEveryFormAndBack) {
    for (const std::string& name :
         {std::string("two words"), std::string("100% #1?"), std::string("Ünï"), std::string("a:b"),
          std::string("in a/"), std::string("e\u0301 日本"), std::string(70, 'n')}) {
        SCOPED_TRACE(name);
        folder_.write(name.ends_with('/') ? name + "in" : name, "");
        const Desc furl = furlOf(name);
        for (const DescType type : {typeFSRef, typeAlias, typeChar, typeUnicodeText})
            EXPECT_EQ(furl.to(type).to(typeFileURL).text(), furl.text()) << "by way of " << type;
        EXPECT_EQ(furl.to(typeChar).text(), furl.text()) << "the URL, no path";
        EXPECT_EQ(furl.to(typeObjectSpecifier).handled().text(), furl.text());
        const Desc spec = furl.to(cFile);
        const bool hasSpec = name.size() <= 63 && name[0] != 'e';
        EXPECT_EQ(spec.status, hasSpec ? noErr : bdNamErr);
        EXPECT_EQ(spec.desc.descriptorType, DescType{hasSpec ? typeFSS : typeNull});
        EXPECT_EQ(spec.to(typeFileURL).text(), hasSpec ? furl.text() : "status -1700");
    }
}

TEST_F(FileURL, NamesWhatIsNotThere) {
    const Desc later = furlOf("la:ter");
    EXPECT_EQ(later.to(typeFSRef).status, fnfErr);
    EXPECT_EQ(later.to(typeFSS).to(typeFileURL).text(), later.text());
    const Desc alias = later.to(typeAlias);
    EXPECT_EQ(alias.to(typeFileURL).status, fnfErr);
    folder_.write("la:ter", "");
    EXPECT_EQ(alias.to(typeFileURL).text(), later.text());
    const Desc folder = furlOf("folder/").to(typeAlias);
    folder_.write("folder/in", "");
    EXPECT_EQ(folder.to(typeFileURL).text(), furlOf("folder/").text());

    const auto rest = 255 - std::string("Linux").size() - folder_.path("").size();
    EXPECT_EQ(furlOf(std::string(rest, 'x')).to(typeAlias).status, noErr);
    EXPECT_EQ(furlOf(std::string(rest + 1, 'x')).to(typeAlias).status, pathTooLongErr);
    EXPECT_EQ(furlOf("日本").to(typeFSS).status, pathTooLongErr);
    EXPECT_EQ(furlOf("no/where").to(typeFSS).status, dirNFErr);
}

TEST_F(FileURL, RefusesWhatIsNone) {
    EXPECT_EQ(Desc(typeChar, "file:///a b").to(typeFileURL).text(), "file:///a%20b");
    const std::tuple<DescType, std::string, OSStatus> rows[] = {
        {typeChar, "", cfStringConversionErr},      {typeSInt32, "four", errAECoercionFail},
        {typeFSRef, "short", errAECoercionFail},    {typeAlias, "none", paramErr},
        {typeFSS, std::string(70, '\xFF'), fnfErr},
    };
    for (const auto& [type, data, status] : rows)
        EXPECT_EQ(Desc(type, data).handled().status, status) << data;
    EXPECT_EQ(Desc(typeFileURL, "http://host/a").to(typeAlias).status, fnfErr);
    EXPECT_EQ(Desc(typeFileURL, "").to(typeFSRef).status, cfStringConversionErr);
    Desc result;
    EXPECT_EQ(FURLCoerceFURLPtrToDesc(typeFileURL, "file:///", 8, typeSInt32, 0, &result.desc),
              errAECoercionFail);
}

TEST_F(FileURL, LooksIntoObjectSpecifiers) {
    const auto object = [](DescType wanted, const Desc& key) {
        Desc made;
        AEDesc none{typeNull, nullptr};
        AEDesc keyData = key.desc;
        made.status = CreateObjSpecifier(wanted, &none, formName, &keyData, false, &made.desc);
        return made;
    };
    const Desc furl = makeFURL(urlOf(folder_.write("file", "")));
    for (const DescType type : {typeFSRef, typeAlias, typeFSS, typeFileURL, typeChar})
        EXPECT_EQ(object(cFile, furl.to(type)).handled().text(), furl.text());
    const Desc document = object('docu', Desc(typeChar, "name"));
    EXPECT_EQ(document.handled().status, errAECoercionFail);
    const auto handler = reinterpret_cast<AECoercionHandlerUPP>(FURLCoerceDescToFURL);
    AEInstallCoercionHandler(typeObjectSpecifier, typeFileURL, handler, 0, true, false);
    EXPECT_EQ(document.to(typeFileURL).status, errAECoercionFail) << "without end";
    AERemoveCoercionHandler(typeObjectSpecifier, typeFileURL, handler, false);
}

TEST_F(FileURL, NamesByFolderAndName) {
    folder_.write("sub/in", "");
    AEDesc event{typeNull, nullptr};
    AECreateList(nullptr, 0, true, &event);
    URL url;
    EXPECT_EQ(FURLPutParamCFURL(&event, 'url ', urlOf(folder_.path("sub")).get()), noErr);
    EXPECT_EQ(FURLCreateFromAppleEventParam(nullptr, &event, 'url ', url.out()), noErr);
    EXPECT_EQ(makeFURL(url).text(), furlOf("sub").text());
    url.reset();
    AEDisposeDesc(&event);

    NavReplyRecord reply{};
    reply.saveFileName = CFSTR("new/file");
    AECreateList(nullptr, 0, false, &reply.selection);
    const Desc chosen = makeFURL(urlOf(folder_.path())).to(typeAlias);
    AEPutDesc(&reply.selection, 0, &chosen.desc);
    EXPECT_EQ(FURLCreateFromNavReply(nullptr, &reply, url.out()), noErr);
    EXPECT_EQ(makeFURL(url).text(), furlOf("new:file").text());
    AEDisposeDesc(&reply.selection);

    const std::pair<std::string, std::string> specs[] = {{"leaf", "leaf"},
                                                         {"sub:le/af", "sub/le:af"},
                                                         {":sub:deep:", "sub/deep/"},
                                                         {":gone:leaf", ""},
                                                         {":", ""}};
    for (const auto& [name, path] : specs) {
        std::string spec = furlOf("sub").to(typeFSS).text().substr(0, 6);
        spec.append(1, static_cast<char>(name.size())).append(name).resize(sizeof(FSSpec));
        const std::string found = Desc(typeFSS, spec).to(typeFileURL).text();
        EXPECT_EQ(found, path.empty() ? "status -43" : furlOf(path).text()) << name;
    }
}

TEST_F(FileURL, LeaksNothingWhenTheSystemRefuses) {
    const Desc furl = makeFURL(urlOf(folder_.write("file", "")));
    for (const DescType type : {typeFSRef, typeAlias, typeChar, typeFSS}) {
        UInt32 nth = 1;
        do {
            OSAFailOperation(nth++, 0);
            furl.to(type).handled();
        } while (OSAFailedOperations() > 0);
        OSAFailOperation(0, 0);
    }
}

TEST_F(FileURL, MakesFiles) {
    FSRef made{};
    const auto create = [&](const std::string& name, auto function) {
        return function(urlOf(folder_.path(name)).get(), 0, nullptr, &made);
    };
    EXPECT_EQ(create("a:b ü", FURLCreateFileWithCFURL), noErr);
    EXPECT_TRUE(fs::exists(folder_.path("a:b ü")));
    EXPECT_EQ(create("a:b ü", FURLCreateFileWithCFURL), dupFNErr);
    EXPECT_EQ(create("no/where", FURLCreateFileWithCFURL), fnfErr);
    EXPECT_EQ(create("res", FURLCreateResFileWithCFURL), noErr);
    const ResFileRefNum number = FSOpenResFile(&made, fsRdPerm);
    EXPECT_GT(number, 0);
    CloseResFile(number);
}

TEST_F(FileURL, SurvivesAnotherCopyOfItself) {
    const auto handler = [] {
        AECoercionHandlerUPP found = nullptr;
        SInt32 refcon = 0;
        Boolean takesDesc = 0;
        AEGetCoercionHandler(typeFSRef, typeFileURL, &found, &refcon, &takesDesc, false);
        return found;
    };
    const char* const path = getenv("FILEURL_COPY");
    const AECoercionHandlerUPP ours = handler();
    void* const copy = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(copy, nullptr) << dlerror();
    EXPECT_NE(handler(), ours) << "the latest has them";
    dlclose(copy);
    EXPECT_EQ(dlopen(path, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is gone";
    EXPECT_EQ(handler(), nullptr) << "and nothing points into it";
    EXPECT_EQ(furlOf("none").to(typeFSRef).status, fnfErr);
    void* const other = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    EXPECT_EQ(FURLInstallCoercionHandlers(), noErr);
    dlclose(other);
    EXPECT_EQ(handler(), ours) << "only its own are taken away";
}

}  // namespace
}  // namespace osa::test
