// Run-time type descriptions as Microsoft's runtime has them: libc++ includes this file for them.
#ifndef QXBC_VCRUNTIME_TYPEINFO_H
#define QXBC_VCRUNTIME_TYPEINFO_H

#include <vcruntime_exception.h>

#pragma clang system_header

// What the compiler lays down for each type begins with this class's table. Comparing and naming need functions of a
// compiled runtime, and nothing here asks for them.
class type_info {
public:
    type_info(const type_info&) = delete;
    type_info& operator=(const type_info&) = delete;
    virtual ~type_info() noexcept;

private:
    friend type_info* MakeTypeInfo();
    type_info() noexcept {}

    void* readableName = nullptr;
    char decoratedName[1] = {};
};

namespace std {

using ::type_info;

class bad_cast : public exception {
public:
    bad_cast() noexcept : exception("bad cast", 1) {}
};

class bad_typeid : public exception {
public:
    bad_typeid() noexcept : exception("bad typeid", 1) {}
};

} // namespace std

#endif
