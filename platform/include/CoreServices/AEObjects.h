// Object specifiers: records of type 'obj ' that name an object by its class, its container, and a
// key in some form.
#pragma once

#include <CoreServices/AEDataModel.h>

#ifdef __cplusplus
extern "C" {
#endif

// clang-format off
enum { typeObjectSpecifier = 'obj ' };

/// Fields of an object specifier.
enum {
    keyAEDesiredClass   = 'want',   ///< 'type'
    keyAEKeyForm        = 'form',   ///< 'enum'
    keyAEKeyData        = 'seld',
    keyAEContainer      = 'from'    ///< null descriptor: the default container
};

/// Values of the field keyAEKeyForm.
enum {
    formAbsolutePosition    = 'indx',
    formName                = 'name',
    formUniqueID            = 'ID  ',
    formPropertyID          = 'prop',
    formRange               = 'rang',
    formTest                = 'test'
};

/// Classes and fields of text.
enum {
    cFile       = 'file',
    keyAEText   = 'ktxt',
    keyAEStyles = 'ksty'
};

/// Values of typeType that stand for "nothing".
enum {
    cMissingValue   = 'msng',
    cUndefined      = 'undf'
};
// clang-format on

/// Makes an object specifier of copies. With `disposeInputs`, container and key are disposed of,
/// also on failure. A null container stands for the default one.
OSA_PLATFORM_EXPORT OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container,
                                             DescType keyForm, AEDesc* keyData,
                                             Boolean disposeInputs, AEDesc* objSpecifier);

#ifdef __cplusplus
}
#endif
