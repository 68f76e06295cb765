// SAliasHandle: giving the record back.
#include "Libraries/MacToolboxLib/TBUtilities/SAliasHandle.h"

#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"

SAliasHandle::~SAliasHandle() {
    DisposeAHandle(reinterpret_cast<Handle>(Release()));
}

void SAliasHandle::DisposeAliasHandle() {
    DisposeAHandle(reinterpret_cast<Handle>(Release()));
}
