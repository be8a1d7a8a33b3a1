// The table of virtual functions of type_info, to which every run-time type description of this ABI points. Built
// without RTTI: a description of type_info itself would need the table that is being made here.
#include <vcruntime_typeinfo.h>

type_info::~type_info() noexcept {}

// Never called. The compiler lays the table down where an object is made, and only there.
type_info* MakeTypeInfo()
{
    return new type_info;
}
