#ifndef QXBACKGROUND_BASE_LARGEMEMORY_H
#define QXBACKGROUND_BASE_LARGEMEMORY_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace workbench {

// Tells the system that memory nobody has touched yet is going to be used as a whole, so that it may come in large
// pages: the thousands of faults on small ones cost as much as reading an image.
void ExpectWholeUse(void* begin, std::size_t bytes);

// Resizes a vector of pixels or sums whose old values need not be kept.
template <class T> void ResizeLarge(std::vector<T>& values, std::size_t count)
{
    if (count > values.capacity()) {
        values = std::vector<T>();
        values.reserve(count);
        ExpectWholeUse(values.data(), count * sizeof(T));
    }
    values.resize(count);
}

struct TFreed {
    void operator()(void* memory) const { std::free(memory); }
};

// So many zeros, which the system has ready: a vector would write each of them again.
template <class T> std::unique_ptr<T[], TFreed> LargeZeros(std::size_t count)
{
    std::unique_ptr<T[], TFreed> zeros(static_cast<T*>(std::calloc(std::max<std::size_t>(count, 1), sizeof(T))));
    if (!zeros)
        throw std::bad_alloc();
    ExpectWholeUse(zeros.get(), count * sizeof(T));
    return zeros;
}

} // namespace workbench

#endif
