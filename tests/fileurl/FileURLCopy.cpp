// A module that uses file URL descriptors, and so brings the library with it.
#include "fileurl/FileURL.h"

extern "C" OSStatus UseFileURLs(CFURLRef url, AEDesc* desc) {
    return FURLCreateDescFromCFURL(url, desc);
}
