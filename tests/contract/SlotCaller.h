// Calls the operations of an object either by name, as source code does, or by their position in its table of virtual
// functions, as the compiled code of a host does.
#ifndef QXBC_TESTS_SLOT_CALLER_H
#define QXBC_TESTS_SLOT_CALLER_H

#include "HostPlatform.h"

#include <cstddef>

enum class TCallBy { Name, Position };

constexpr std::size_t kSlotCount = 23;

class TSlotCaller {
public:
    TSlotCaller(QX_KRLSDK::QX_IBackgroundCorrection* calledObject, TCallBy callBy) : object(calledObject), by(callBy) {}

    QX_KRLSDK::QX_IBackgroundCorrection* Object() const { return object; }

    // Calls `slot`, which is `operation` by name.
    template <class TResult, class... TParameter, class... TArgument>
    TResult Call(std::size_t slot, TResult (QX_KRLSDK::QX_IBackgroundCorrection::*operation)(TParameter...),
                 TArgument... arguments)
    {
        ++calls[slot];
        if (by == TCallBy::Name)
            return (object->*operation)(arguments...);
        // Both ABIs pass the object like a first argument.
        using TByPosition = TResult (*)(QX_KRLSDK::QX_IBackgroundCorrection*, TParameter...);
        return reinterpret_cast<TByPosition>(
            HostPlatform::Table(object)[HostPlatform::kIndexOfFirstOperation + slot - 1])(object, arguments...);
    }

    unsigned int CallsOf(std::size_t slot) const { return calls[slot]; }

private:
    QX_KRLSDK::QX_IBackgroundCorrection* object;
    TCallBy by;
    unsigned int calls[kSlotCount] = {};
};

#endif
