// Random sequences of operations on the library's store and on the literal model of it.
//
// QXBC_STORE_SEQUENCES and QXBC_STORE_SEED choose how many and which. A failing sequence is made as short as dropping
// operations makes it, and printed.
#include "offline/StoreModelWorld.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <random>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsInstrumented = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kIsInstrumented = true;
#else
constexpr bool kIsInstrumented = false;
#endif
#else
constexpr bool kIsInstrumented = false;
#endif

constexpr int kSequences = kBackslashSystem ? 150 : kIsInstrumented ? 300 : 2000;
constexpr std::size_t kOperations = 25;
constexpr char kMemoryFolder[] = "/dev/shm";
// File names of such bytes are another matter where names have a code page.
constexpr const char* kHighBytes = kBackslashSystem ? "7" : "\xE4\xC3\xA4";

int FromEnvironment(const char* name, int otherwise)
{
    const char* const text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

class TSequenceMaker {
public:
    TSequenceMaker(unsigned int seed, const std::string& rootPath) : random(seed), root(rootPath) {}

    TSequence Make()
    {
        static const std::vector<std::vector<std::string>> kNames = {{"A", "B"},
                                                                     {"A", "B"},
                                                                     {"A", "B"},
                                                                     {"A", "B"},
                                                                     {"A"},
                                                                     {"A"},
                                                                     {},
                                                                     {"B", "A"},
                                                                     {"A", "A"},
                                                                     {"A_B"},
                                                                     {"ANameOfMoreThan16Characters", "B"}};
        TSequence sequence;
        names = Pick(kNames);
        sequence.groupingNames = {names, Chance(80) ? names : Pick(kNames)};
        while (sequence.operations.size() < kOperations) {
            sequence.operations.push_back(Operation());
        }
        if (Chance(50)) { // begins with a store on disk
            Put(sequence.operations[0], TKind::kAdd, Key());
            Put(sequence.operations[1], TKind::kAdd, Key());
            Put(sequence.operations[2], TKind::kSave, "cal\\s");
            if (Chance(25)) {
                Put(sequence.operations[3], TKind::kLoadHeaderOnly, "cal\\s");
                Put(sequence.operations[4], TKind::kSelectHandedOut, "");
            }
        }
        if (Chance(15)) { // has a correction whose size is odd, outside header-only mode
            const std::size_t at = 5 + static_cast<std::size_t>(Number(15));
            Put(sequence.operations[at], TKind::kWriteOddSizes, "odd");
            sequence.operations[at].numbers = {0, 0, Number(kOddSizeCount), 0, 0, 0};
            Put(sequence.operations[at + 1], TKind::kLoadLiveHeaderOnly, "odd");
            Put(sequence.operations[at + 2], TKind::kImport, "");
            sequence.operations[at + 2].numbers = {2, Number(2), 0, 0, 0, 0};
            Put(sequence.operations[at + 3], TKind::kSelect, "A,1,B,1,odd");
        }
        return sequence;
    }

private:
    static void Put(TOperation& operation, TKind kind, const std::string& text)
    {
        operation = TOperation();
        operation.kind = kind;
        operation.text = text;
        operation.bits = 3;
        operation.numbers[1] = 40;
    }

    int Number(int count) { return static_cast<int>(random() % static_cast<unsigned int>(count)); }
    bool Chance(int percent) { return Number(100) < percent; }
    template <typename TValue> const TValue& Pick(const std::vector<TValue>& values)
    {
        return values[static_cast<std::size_t>(Number(static_cast<int>(values.size())))];
    }
    std::string Text(const std::vector<std::string>& texts) { return Pick(texts); }

    std::string Value()
    {
        const int which = Number(100);
        return which < 45   ? "1"
               : which < 80 ? "2"
               : which < 90 ? "x"
               : which < 95 ? "X"
               : which < 97 ? "1_2"
               : which < 98 ? kHighBytes
                            : std::string(300, 'v');
    }

    // Of a correction: mostly one that it can be made with.
    int Factor() { return Chance(5) ? Number(kFactorCount) : Number(3); }

    std::string Key()
    {
        if (Chance(1)) {
            return "";
        }
        std::vector<std::string> pairs;
        for (const std::string& name : names) {
            pairs.push_back(name + "," + (Chance(2) ? "" : Value()));
        }
        if (Chance(20) && pairs.size() > 1) {
            std::swap(pairs.front(), pairs.back());
        }
        if (Chance(4) && !pairs.empty()) {
            pairs.pop_back();
        }
        std::string key;
        for (const std::string& pair : pairs) {
            key += (key.empty() ? "" : ",") + pair;
        }
        if (Chance(60)) {
            // The last three differ in case where bytes are letters of Latin 1. Behind an empty value they become a
            // value themselves, and part of a file name.
            key += (Chance(5) ? ",," : ",") +
                   Text({"dark", "dark", "Dark", "n,3", "flat", kBackslashSystem ? "grau" : "gr\xFC\xDF",
                         kBackslashSystem ? "GRAU" : "GR\xDC\xDF", kBackslashSystem ? "grAU" : "gr\xDC\xDF"});
        }
        if (Chance(3)) {
            key += "," + std::string(515, 'k') + Text({"1", "2"});
        }
        return key;
    }

    std::string Path()
    {
        if (!kBackslashSystem && Chance(1)) {
            return kNullDevice;
        }
        std::string path =
            Text({"", "", "cal\\", "cal\\", "cal/", "cal\\", root + "\\cal\\", root + "/", "f_A_x\\", "gone\\"});
        path += Text({"s", "s", "s", "s", "st", "store", "s.dat", "old", "q", ""});
        if (Chance(35)) {
            for (const std::string& name : names) {
                path += "_" + name + "_" + Text({"1", "2", "x", "7"});
            }
        }
        return path;
    }

    // Below the root, for operations on the disk.
    std::string FileName()
    {
        std::string path = Text({"", "cal/", "cal/", "f_A_x/"}) + Text({"s", "s", "st", "old", "q"});
        if (Chance(60)) {
            for (const std::string& name : names) {
                path += "_" + name + "_" + Text({"1", "2", "x", "7", ""});
            }
        }
        return path;
    }

    TOperation Operation()
    {
        TOperation operation;
        operation.store = Chance(75) ? 0 : 1;
        operation.bits = static_cast<unsigned int>(Number(4));
        std::array<int, 6>& n = operation.numbers;
        const auto as = [&operation](TKind kind) { operation.kind = kind; };
        const auto frames = [&n, this] {
            n = {Number(4), 10 + Number(300), Chance(20) ? 1 : 0, Factor(), Factor(), 0};
            if (Chance(3)) {
                n[3] = n[4] = kTinyFactor;
            }
        };
        const int which = Number(200);
        if (which < 46) {
            as(TKind::kAdd);
            operation.text = Key();
            frames();
        } else if (which < 70) {
            as(TKind::kSelect);
            operation.text = Key();
        } else if (which < 73) {
            as(TKind::kSelectNothing);
        } else if (which < 81) {
            as(TKind::kSelectHandedOut);
            n[0] = Number(5);
        } else if (which < 89) {
            as(TKind::kDelete);
            operation.text = Key();
        } else if (which < 92) {
            as(TKind::kDeleteHandedOut);
            n[0] = Number(4);
        } else if (which < 93) {
            as(TKind::kClear);
        } else if (which < 97) {
            as(TKind::kSetLevel);
            n[0] = Pick(std::vector<int>{29, 50, 100, 0, -1, -5, 250});
        } else if (which < 100) {
            as(TKind::kSetExposure);
            n[0] = Chance(20) ? Number(kFactorCount) : Number(kCommonFactorCount);
            n[1] = Chance(20) ? Number(kFactorCount) : Number(kCommonFactorCount);
        } else if (which < 104) {
            as(TKind::kSetRegion);
            n = {
                Number(3) - (Chance(10) ? 2 : 0), Number(2), 1 + Number(3) - (Chance(10) ? 3 : 0), 1 + Number(2), 0, 0};
        } else if (which < 118) {
            as(TKind::kApply);
            n[0] = Pick(std::vector<int>{1, 2, 4, 6, 6, 0, -1});
            n[1] = Chance(50) ? -2 : Chance(80) ? n[0] : 1; // -2: no output
            n[2] = Chance(70) ? 0 : Number(64);
        } else if (which < 130) {
            as(TKind::kImport);
            n[0] = Number(3);
            n[1] = Number(2);
        } else if (which < 150) {
            as(TKind::kSave);
            operation.text = Path();
        } else if (which < 151) {
            as(TKind::kSaveHandedOut);
            n[0] = Number(3);
        } else if (which < 164) {
            as(TKind::kLoad);
            operation.text = Path();
        } else if (which < 165) {
            as(TKind::kLoadHandedOut);
            n[0] = Number(3);
        } else if (which < 171) {
            as(TKind::kLoadHeaderOnly);
            operation.text = Path();
        } else if (which < 173) {
            as(TKind::kMessage);
            operation.bits |= 2;
        } else if (which < 174) {
            as(TKind::kMakeAnew);
        } else if (which < 182) {
            as(TKind::kAddLive);
            operation.text = Key();
            frames();
        } else if (which < 183) {
            as(TKind::kDeleteLive);
            operation.text = Key();
        } else if (which < 185) {
            as(Chance(70) ? TKind::kLoadLiveHeaderOnly : TKind::kLoadLive);
            operation.text = FileName();
        } else {
            static const std::vector<TKind> kDisk = {
                TKind::kWriteUngrouped, TKind::kWriteForeign, TKind::kTruncate,   TKind::kWriteOddSizes,
                TKind::kWriteOddSizes,  TKind::kSpoilVersion, TKind::kCopyFile,   TKind::kCopyFile,
                TKind::kRemoveFile,     TKind::kMakeFolder,   TKind::kHideFolder, TKind::kShowFolder,
                TKind::kShowFolder};
            as(Pick(kDisk));
            operation.text = FileName();
            n = {Number(20), Number(2), Number(kOddSizeCount), Factor(), Factor(), 0};
            if (operation.kind == TKind::kWriteOddSizes) {
                n[1] = Number(3);
            }
            if (operation.kind == TKind::kTruncate) {
                n[1] = Pick(std::vector<int>{1, 2, 3, 10, 30, 100, 600, 700});
            } else if (operation.kind == TKind::kSpoilVersion) {
                n[1] = Pick(std::vector<int>{26, 26, 5});
            }
        }
        return operation;
    }

    std::mt19937 random;
    std::string root;
    std::vector<std::string> names;
};

// A locale in which bytes above 127 are letters with a lower and an upper case, where the system has one.
class TEightBitLocale {
public:
    explicit TEightBitLocale(bool wanted) : before(std::setlocale(LC_ALL, nullptr))
    {
        if (wanted) {
            std::setlocale(LC_ALL, "de_DE.ISO-8859-1");
        }
    }
    ~TEightBitLocale() { std::setlocale(LC_ALL, before.c_str()); }
    TEightBitLocale(const TEightBitLocale&) = delete;
    TEightBitLocale& operator=(const TEightBitLocale&) = delete;

private:
    std::string before;
};

// Leaves out whatever is not needed for a difference.
TSequence Shrunk(TStoreModelWorld& world, TSequence sequence)
{
    for (std::size_t step = sequence.operations.size(); step > 0; step /= 2) {
        for (std::size_t i = 0; i < sequence.operations.size();) {
            TSequence shorter = sequence;
            const auto begin = shorter.operations.begin() + static_cast<std::ptrdiff_t>(i);
            const std::size_t count = std::min(step, shorter.operations.size() - i);
            shorter.operations.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
            std::size_t failedAt = 0;
            if (!world.Run(shorter, failedAt).empty()) {
                sequence = shorter;
            } else {
                i += step;
            }
        }
    }
    return sequence;
}

std::string Report(TStoreModelWorld& world, const TSequence& sequence)
{
    const TSequence shortest = Shrunk(world, sequence);
    std::size_t failedAt = 0;
    const std::string difference = world.Run(shortest, failedAt);
    std::string text;
    for (const auto& names : shortest.groupingNames) {
        text += "Store with grouping names";
        for (const std::string& name : names) {
            text += " " + name;
        }
        text += "\n";
    }
    for (const TOperation& operation : shortest.operations) {
        text += "  " + Describe(operation) + "\n";
    }
    return text + difference;
}

TEST(StoreModelTest, RandomSequencesGiveWhatTheModelGives)
{
    const int count = FromEnvironment("QXBC_STORE_SEQUENCES", kSequences);
    const unsigned int seed = static_cast<unsigned int>(FromEnvironment("QXBC_STORE_SEED", 1));
    std::cout << "seed " << seed << ", " << count << " sequences of " << kOperations << " operations\n";
    // A disk waits for most of the time that a file system in memory saves; TMPDIR chooses otherwise.
    const bool useMemory = std::getenv("TMPDIR") == nullptr && std::filesystem::is_directory(kMemoryFolder);
    TStoreModelWorld world(useMemory ? kMemoryFolder : "");
    const std::string root = std::filesystem::current_path().string();
    for (int i = 0; i < count; ++i) {
        const unsigned int ownSeed = seed + static_cast<unsigned int>(i);
        const TSequence sequence = TSequenceMaker(ownSeed, root).Make();
        std::size_t failedAt = 0;
        const TEightBitLocale locale(i % 2 == 1);
        if (!world.Run(sequence, failedAt).empty()) {
            FAIL() << "QXBC_STORE_SEED=" << ownSeed << " QXBC_STORE_SEQUENCES=1 shows it:\n" << Report(world, sequence);
        }
    }
    std::cout << world.CutShort() << " sequences ended early because the order of a folder was uncertain\n";
    EXPECT_LE(world.CutShort(), count / 20 + 1);
    if (count < 2000) {
        return;
    }
    // The sequences are worth something only if they get everywhere.
    for (const char* const expected : {"Add 0",
                                       "Add 513",
                                       "Add 518",
                                       "Add 770",
                                       "Add 769",
                                       "Add 4294967295",
                                       "Select 0",
                                       "Select 513",
                                       "Select 769",
                                       "Select 772",
                                       "Select 4294967295",
                                       "SelectHandedOut 0",
                                       "Delete 0",
                                       "Delete 513",
                                       "Delete 770",
                                       "SetLevel 770",
                                       "SetRegion 515",
                                       "Apply 0",
                                       "Apply 77",
                                       "Apply 513",
                                       "Apply 514",
                                       "Apply 516",
                                       "Apply 770",
                                       "Import 0",
                                       "Import 513",
                                       "Import 770",
                                       "Import 1024",
                                       "Save 0",
                                       "Save 513",
                                       "Save 768",
                                       "Save 769",
                                       "Save 770",
                                       "Save 772",
                                       "Save 4294967295",
                                       "Load 0",
                                       "Load 768",
                                       "Load 769",
                                       "Load 771",
                                       "Load 772",
                                       "Load 4294967295",
                                       "LoadHeaderOnly 0",
                                       "LoadHeaderOnly 771",
                                       "LoadHandedOut 771",
                                       "a reference that is no number",
                                       "The input left [ 0 ] is out of range.",
                                       "The input top [ 0 ] is out of range.",
                                       "Error allocating correction memory.",
                                       "Could not add background correction - 'Reference exposure and light intensity "
                                       "product is zero [ 0.000000 ] * [ 0.000000 ].'"}) {
        EXPECT_EQ(world.Seen().count(expected), 1u) << expected << " never came up";
    }
}

} // namespace
