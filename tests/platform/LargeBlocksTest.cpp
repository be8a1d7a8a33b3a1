// Advice about large blocks of memory. Where the system shows what it was advised, that is looked at; elsewhere only
// that nothing happens to the memory.
#include "platform/LargeBlocks.h"

#include "data/PixelMemory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace {

constexpr std::size_t kLarge = std::size_t{16} << 20;
constexpr std::size_t kSmall = std::size_t{1} << 20;

// The flags that the system keeps for the memory around an address; empty where it does not tell.
std::string FlagsAt(const void* address)
{
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream areas("/proc/self/smaps");
    bool isInside = false;
    for (std::string line; std::getline(areas, line);) {
        std::istringstream text(line);
        std::uintptr_t begin = 0, end = 0;
        char dash = 0;
        if (text >> std::hex >> begin >> dash >> end && dash == '-') {
            isInside = begin <= wanted && wanted < end;
        } else if (isInside && line.rfind("VmFlags:", 0) == 0) {
            return line + ' ';
        }
    }
    return "";
}

// Whether the system shows of memory what it was advised. Emulators of another processor keep advice to themselves.
bool KeepsAdvice()
{
    bool isShown = false;
#ifdef __linux__
    void* const pages = mmap(nullptr, kLarge, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    isShown = pages != MAP_FAILED && madvise(pages, kLarge, MADV_HUGEPAGE) == 0 &&
              FlagsAt(static_cast<char*>(pages) + kLarge / 2).find(" hg ") != std::string::npos;
    munmap(pages, kLarge);
#endif
    return isShown;
}

std::unique_ptr<unsigned char[]> Filled(std::size_t length)
{
    std::unique_ptr<unsigned char[]> block(new unsigned char[length]);
    for (std::size_t i = 0; i < length; ++i) {
        block[i] = static_cast<unsigned char>(i % 251);
    }
    return block;
}

TEST(LargeBlocks, KeepTheirContents)
{
    const auto block = Filled(kLarge);
    Platform::PreferLargePages(block.get() + 2, kLarge - 4); // at any address
    for (std::size_t i = 0; i < kLarge; ++i) {
        ASSERT_EQ(block[i], i % 251) << i;
    }
}

TEST(LargeBlocks, AreAdvisedWhereTheSystemTells)
{
    if (!KeepsAdvice()) {
        GTEST_SKIP() << "this system has no large pages for the asking, or does not tell";
    }
    const auto block = Filled(kLarge);
    Platform::PreferLargePages(block.get(), kLarge);
    EXPECT_NE(FlagsAt(block.get() + kLarge / 2).find(" hg "), std::string::npos);
    const std::unique_ptr<std::uint16_t[]> pixels(AllocatePixels(kLarge));
    ASSERT_NE(pixels, nullptr);
    EXPECT_NE(FlagsAt(pixels.get() + kLarge / 2).find(" hg "), std::string::npos) << "images are to ask for them";
    const auto small = Filled(kSmall);
    const std::string before = FlagsAt(small.get() + kSmall / 2);
    Platform::PreferLargePages(small.get(), kSmall);
    EXPECT_EQ(FlagsAt(small.get() + kSmall / 2), before);
}

// The system would refuse to be advised about the memory at address 0.
TEST(LargeBlocks, ThatAreNullAreNotAskedFor)
{
    errno = 0;
    Platform::PreferLargePages(nullptr, kLarge);
    EXPECT_EQ(errno, 0);
}

} // namespace
