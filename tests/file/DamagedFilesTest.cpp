// Damaged files: the library's readers against the literal one, over whole families of damage.
#include "file/LiteralLoad.h"
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <random>

using FileBytes::TBytes;

namespace {

// Every byte, and every case; where opening a file takes long, the build asks for less.
constexpr unsigned int kStep = QXBC_DAMAGE_STEP;

// Loads files with the library and with the model, from several states before.
class DamagedFiles : public testing::Test {
protected:
    enum class TBefore { Full, HeaderOnly, AfterDamage };

    DamagedFiles()
    {
        FileBytes::WriteFile(intactPath, SampleFiles::OneCorrection().bytes);
        // Ends inside the second record of its only correction.
        FileBytes::WriteFile(shortPath, FileBytes::Join({SampleFiles::Beginning(1), FileBytes::Zeros(3)}));
    }

    std::unique_ptr<TBackgroundCorrectionProcessorUINT16> Prepare(TBefore before)
    {
        auto processor = std::make_unique<TBackgroundCorrectionProcessorUINT16>();
        if (before == TBefore::AfterDamage) {
            processor->LoadFile(shortPath.c_str());
        }
        if (before == TBefore::HeaderOnly) {
            processor->LoadFileHeaderOnly(intactPath.c_str());
        } else {
            ProcessorDriver::Store(*processor, {{"before", 1, 1, 0x3F800000, 0x3F800000, {7}}});
        }
        processor->SetActiveCorrection(processor->GetCorrectionKey(0));
        processor->SetActiveCorrection("nobody");
        return processor;
    }

    // One file on every load. False when the model could not decide; a difference is a failure of the test.
    bool CompareOnEveryLoad(const TBytes& bytes, const std::string& damage)
    {
        FileBytes::WriteFile(path, bytes);
        bool decided = true;
        for (const TLoadKind kind : kEveryLoad) {
            const TBefore before = static_cast<TBefore>(comparisons++ % 3);
            const auto processor = Prepare(before);
            const auto model = LoadLiterally(bytes, path, kind, StateBefore(before));
            if (!model) {
                decided = false;
                continue;
            }
            const TLoadOutcome actual = ProcessorDriver::Load(*processor, path.c_str(), kind);
            if (!(actual == *model)) {
                ADD_FAILURE() << damage << ", " << Describe(kind) << ", state before " << static_cast<int>(before)
                              << "\n library: " << Describe(actual) << "\n model: " << Describe(*model);
            }
            ++results[actual.result];
            ProcessorDriver::UseEverything(*processor);
        }
        return decided;
    }

    template <typename TChange> void ChangeEveryByte(TChange change)
    {
        for (const TSampleFile& sample : {SampleFiles::TwoCorrections(), SampleFiles::Grouped()}) {
            for (std::size_t offset = 0; offset < sample.bytes.size() && !HasFailure(); offset += kStep) {
                TBytes bytes = sample.bytes;
                bytes[offset] = static_cast<unsigned char>(change(bytes[offset]));
                EXPECT_TRUE(CompareOnEveryLoad(bytes, sample.name + (", offset " + std::to_string(offset))));
            }
        }
        EXPECT_GT(comparisons, 2u * 4 * 1200 / kStep);
    }

    static void Damage(TBytes& bytes, std::mt19937& random)
    {
        const std::size_t offset = bytes.empty() ? 0 : random() % bytes.size();
        const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
        const std::size_t length = std::min<std::size_t>(1 + random() % 64, bytes.size() - offset);
        const auto end = at + static_cast<std::ptrdiff_t>(length);
        switch (random() % 6) {
        case 0: // a few bytes
            for (auto byte = at; byte != end; ++byte) {
                if (random() % 8 == 0) {
                    *byte = static_cast<unsigned char>(random() & 0xFF);
                }
            }
            break;
        case 1: // a whole number, of the kind that matters
        case 2:
            if (bytes.size() >= 4) {
                PutInterestingNumber(bytes, random);
            }
            break;
        case 3: // lost bytes
            bytes.erase(at, end);
            break;
        case 4: { // doubled bytes
            const TBytes doubled(at, end);
            bytes.insert(at, doubled.begin(), doubled.end());
            break;
        }
        default: // cut
            bytes.resize(offset);
        }
    }

    static void PutInterestingNumber(TBytes& bytes, std::mt19937& random)
    {
        const std::uint32_t size = static_cast<std::uint32_t>(bytes.size());
        const std::uint32_t numbers[] = {0,          1,          2,          3,     4,     12,    16,
                                         26,         30,         46,         61,    62,    63,    68,
                                         size,       size - 12,  size + 1,   65535, 65536, 65537, 0x7FFFFFFF,
                                         0x80000000, 0x80000001, 0xFFFFFFFF, 1000,  40000};
        const std::uint32_t number = random() % 4 == 0 ? static_cast<std::uint32_t>(random() % size)
                                                       : numbers[random() % (sizeof numbers / sizeof *numbers)];
        // Half of them where a number of an intact file stands: all of the records' are at 2 modulo 4 or nearby.
        std::size_t offset = random() % (bytes.size() - 3);
        if (random() % 2 == 0) {
            offset = std::min(bytes.size() - 4, offset / 4 * 4 + 2);
        }
        FileBytes::PutNumber(bytes, offset, number);
    }

    // Written down, not asked of the library.
    TLoadOutcome StateBefore(TBefore before) const
    {
        TLoadOutcome state;
        state.mainText = "Background correction key not found - 'nobody'";
        state.active = true;
        if (before == TBefore::HeaderOnly) {
            state.headerOnly = true;
            state.corrections = SampleFiles::OneCorrection().corrections;
            state.corrections[0].pixels.clear();
        } else {
            state.corrections = {{"before", 1, 1, 0x3F800000, 0x3F800000, {7}}};
        }
        if (before == TBefore::AfterDamage) {
            state.fileText = "Couldn't read Entry ID from calibration file.";
        }
        return state;
    }

    TTemporaryFolder folder;
    std::string path = folder.File("damaged.qxb");
    std::string intactPath = folder.File("intact.qxb");
    std::string shortPath = folder.File("short.qxb");
    unsigned int comparisons = 0;
    unsigned int undecided = 0;
    std::map<std::uint32_t, unsigned int> results; // how often each one came
};

TEST_F(DamagedFiles, StartFromTheStatesThatTheModelIsTold)
{
    for (const TBefore before : {TBefore::Full, TBefore::HeaderOnly, TBefore::AfterDamage}) {
        const auto processor = Prepare(before);
        EXPECT_TRUE(ProcessorDriver::State(*processor) == StateBefore(before))
            << Describe(ProcessorDriver::State(*Prepare(before)));
    }
}

TEST_F(DamagedFiles, CutAtEveryOffset)
{
    for (const TSampleFile& sample : {SampleFiles::TwoCorrections(), SampleFiles::Grouped()}) {
        for (std::size_t length = 0; length <= sample.bytes.size(); length += kStep) {
            const TBytes bytes(sample.bytes.begin(), sample.bytes.begin() + static_cast<std::ptrdiff_t>(length));
            ASSERT_TRUE(CompareOnEveryLoad(bytes, sample.name + (" cut to " + std::to_string(length))));
            if (HasFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(comparisons, 2u * 4 * 1200 / kStep);
}

TEST_F(DamagedFiles, EveryByteChangedTo00)
{
    ChangeEveryByte([](unsigned char) { return 0x00u; });
}

TEST_F(DamagedFiles, EveryByteChangedToFF)
{
    ChangeEveryByte([](unsigned char) { return 0xFFu; });
}

TEST_F(DamagedFiles, EveryByteIncremented)
{
    ChangeEveryByte([](unsigned char byte) { return byte + 1u; });
}

std::mt19937 SeededGenerator()
{
    const char* const wanted = std::getenv("QX_TEST_SEED");
    const unsigned long seed = wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : 20'240;
    std::cout << "QX_TEST_SEED=" << seed << '\n';
    return std::mt19937(static_cast<std::mt19937::result_type>(seed));
}

// Damage of the kinds that happen and of the kinds that hurt most. QX_TEST_SEED chooses another run.
TEST_F(DamagedFiles, DamagedAtRandom)
{
    std::mt19937 random = SeededGenerator();
    const std::vector<TSampleFile> samples = SampleFiles::All();
    const unsigned int cases = 5000 / kStep;
    for (unsigned int i = 0; i < cases && !HasFailure(); ++i) {
        TBytes bytes = samples[random() % samples.size()].bytes;
        for (unsigned long damages = 1 + random() % 4; damages > 0; --damages) {
            Damage(bytes, random);
        }
        undecided += CompareOnEveryLoad(bytes, "case " + std::to_string(i)) ? 0u : 1u;
    }
    EXPECT_LT(undecided, cases / 50) << "the model has to decide nearly always";
    for (const std::uint32_t result : {0u, 769u, 772u, 1024u, 4294967295u, 4294967294u}) {
        EXPECT_GT(results[result], 10u / kStep) << "hardly any damage led to result " << result;
    }
}

// Nothing but openings of corrections that send the reader elsewhere: tails, circles, ways out of the file.
TEST_F(DamagedFiles, WithRecordsThatLeadAnywhere)
{
    std::mt19937 random = SeededGenerator();
    for (unsigned int i = 0; i < 1500 / kStep && !HasFailure(); ++i) {
        TBytes bytes = SampleFiles::Beginning(static_cast<std::uint32_t>(random() % (random() % 2 == 0 ? 12 : 3000)));
        const std::size_t start = bytes.size();
        const std::size_t records = 1 + random() % (random() % 2 == 0 ? 4 : 60);
        const bool mayLeave = random() % 3 == 0;
        for (std::size_t record = 0; record < records; ++record) {
            const std::size_t target = random() % (mayLeave ? records + 1 : records);
            const bool opensCorrection = random() % 40 == 0;
            bytes = FileBytes::Join({bytes, FileBytes::Number(opensCorrection ? 62 : 60), FileBytes::Number(1),
                                     FileBytes::Number(static_cast<std::uint32_t>(start + 12 * target))});
        }
        if (random() % 4 == 0) { // and sometimes a whole correction to come upon
            bytes =
                FileBytes::Join({bytes, SampleFiles::Correction("found", 1, 1, 1.0f, 1.0f, FileBytes::Hex("0102"))});
        }
        EXPECT_TRUE(CompareOnEveryLoad(bytes, "case " + std::to_string(i)));
    }
    EXPECT_GT(results[4294967294u], 1000u / kStep);
    EXPECT_GT(results[4294967295u], 100u / kStep);
}

} // namespace
