#include "compare/Files.h"

#include "QX_BackgroundCorrection.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace QX_KRLSDK;

namespace {

constexpr char kSaved[] = "qxbc_compare_saved.bin";
constexpr char kPlain[] = "qxbc_compare_plain.bin";

void Check(bool good, const char* what)
{
    if (!good) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(2);
    }
}

} // namespace

std::vector<std::pair<std::string, std::vector<TTiming>>> MeasureFiles(int corrections, int size, int rounds)
{
    const std::size_t count = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
    const std::size_t bytes = count * 2;
    std::vector<std::uint16_t> frame(count);
    QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
    for (int i = 0; i < corrections; ++i) {
        for (std::size_t p = 0; p < count; ++p) {
            frame[p] = static_cast<std::uint16_t>(100 + (p * 7 + static_cast<std::size_t>(i)) % 1000);
        }
        const unsigned short* frames[] = {frame.data()};
        Check(object->AddCorrection(("key" + std::to_string(i)).c_str(), frames, 1, size, size, 1.0f, 100.0f) == 0,
              "AddCorrection");
    }
    // As many separate blocks as the corrections have, so that both read the same memory.
    std::vector<std::unique_ptr<std::uint16_t[]>> blocks;
    for (int i = 0; i < corrections; ++i) {
        blocks.emplace_back(new std::uint16_t[count]);
        std::copy(frame.begin(), frame.end(), blocks.back().get());
    }
    std::vector<std::pair<std::string, std::vector<TTiming>>> results;
    results.emplace_back("save", Measure({{"library", [=] { Check(object->SaveFile(kSaved) == 0, "SaveFile"); }, 1},
                                          {"limit",
                                           [&] {
                                               std::FILE* const file = std::fopen(kPlain, "wb");
                                               Check(file != nullptr, "fopen");
                                               for (const auto& block : blocks) {
                                                   Check(std::fwrite(block.get(), 1, bytes, file) == bytes, "fwrite");
                                               }
                                               Check(std::fclose(file) == 0, "fclose");
                                           },
                                           1}},
                                         rounds));
    blocks.clear();
    Check(object->ClearCorrections() == 0, "ClearCorrections");
    results.emplace_back("load", Measure({{"library",
                                           [=] {
                                               Check(object->LoadFile(kSaved) == 0, "LoadFile");
                                               object->ClearCorrections();
                                           },
                                           1},
                                          {"limit",
                                           [&] {
                                               std::vector<std::unique_ptr<std::uint16_t[]>> read;
                                               std::FILE* const file = std::fopen(kPlain, "rb");
                                               Check(file != nullptr, "fopen");
                                               for (int i = 0; i < corrections; ++i) {
                                                   read.emplace_back(new std::uint16_t[count]);
                                                   Check(std::fread(read.back().get(), 1, bytes, file) == bytes,
                                                         "fread");
                                               }
                                               std::fclose(file);
                                           },
                                           1}},
                                         rounds));
    results.emplace_back("list, per file", Measure({{"library",
                                                     [=] {
                                                         Check(object->LoadFileHeaderOnly(kSaved) == 0,
                                                               "LoadFileHeaderOnly");
                                                         object->ClearCorrections();
                                                     },
                                                     1}},
                                                   rounds * 3));
    DeleteBackgroundCorrection(object);
    std::remove(kSaved);
    std::remove(kPlain);
    return results;
}
