// Recognising the library's own objects behind the interface.
#ifndef BOUNDARY_RUNTIMETYPE_H
#define BOUNDARY_RUNTIMETYPE_H

#include "QX_BackgroundCorrection.h"

#include "platform/TypeInformation.h"

namespace RunTimeType {

// The object as a `TConcrete`, or null when it is of another class. An object whose class carries no type information
// that this library can read (switched off, or another compiler's) is of another class too: depending on the system,
// looking at it throws.
template <typename TConcrete> TConcrete* Cast(QX_KRLSDK::QX_IBackgroundCorrection* object) noexcept
{
    if (!Platform::MayHaveTypeInformation(object)) {
        return nullptr;
    }
    try {
        return dynamic_cast<TConcrete*>(object);
    } catch (...) {
        return nullptr;
    }
}

} // namespace RunTimeType

#endif
