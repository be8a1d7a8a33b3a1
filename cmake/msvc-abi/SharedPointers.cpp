// The part of std::shared_ptr that its header leaves to a compiled library, for hosts that use the comfort header.
#include <memory>

namespace std {
inline namespace __1 {
__shared_count::~__shared_count() = default;
__shared_weak_count::~__shared_weak_count() = default;

// All owners together hold one weak reference; the counts start at 0, for one.
void __shared_weak_count::__release_weak() noexcept
{
    if (__libcpp_atomic_refcount_decrement(__shared_weak_owners_) == -1)
        __on_zero_shared_weak();
}

const void* __shared_weak_count::__get_deleter(const type_info&) const noexcept
{
    return nullptr;
}
} // namespace __1
} // namespace std
