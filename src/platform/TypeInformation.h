// Whether it is safe to ask for an object's dynamic type.
#ifndef PLATFORM_TYPEINFORMATION_H
#define PLATFORM_TYPEINFORMATION_H

namespace Platform {

// False when a polymorphic object certainly carries no type information.
bool MayHaveTypeInformation(const void* object) noexcept;

} // namespace Platform

#endif
