#include "OperationWorld.h"

#include "Check.h"
#include "HostChecks.h"
#include "LimitedMemory.h"
#include "MemoryFiles.h"

#include <cstring>

using HostChecks::TKind;

namespace {

constexpr std::int64_t kMostAttempts = 1000;

std::string TextOf(const char* text)
{
    return text != nullptr ? text : "(null)";
}

std::string TextOf(const Literal::TKey& text)
{
    return text.value_or("(null)");
}

} // namespace

TOperationWorld::TOperationWorld(const std::uint8_t* data, std::size_t size)
    : input(data, size), disk(MemoryFiles::Disk())
{
    disk.mostAttempts = kMostAttempts;
    Literal::mostBackgroundPixels = TLimitedMemory::kLargestBlock / sizeof(std::uint16_t);
    for (std::size_t i = 0; i < kObjects; ++i) {
        Make(i);
    }
}

TOperationWorld::~TOperationWorld()
{
    for (QX_IBackgroundCorrection* object : objects) {
        FUZZ_CHECK_EQUAL(DeleteBackgroundCorrection(object), 0u);
    }
}

void TOperationWorld::Run()
{
    for (int i = 0; i < kMostOperations && !input.IsEmpty(); ++i) {
        Operate(true);
    }
    for (std::size_t i = 0; i < kObjects && !undecided; ++i) {
        Compare(i);
        CompareBackground(i);
    }
    FUZZ_CHECK_EQUAL(MemoryFiles::OpenStreams(), 0u);
}

std::string TOperationWorld::Key()
{
    static const std::string kKeys[] = {"A,1,B,2", "a,1,b,2", "A,1,B,3",   "B,2,A,1", "A,2,B,1,x", "A,1",
                                        "dark",    "DARK",    "A,1,B,2,y", "A,3",     "",          "A_1,B\\"};
    constexpr unsigned int kCount = sizeof kKeys / sizeof *kKeys;
    const unsigned int choice = input.Below(kCount + 4);
    if (choice < kCount) {
        return kKeys[choice];
    }
    return choice == kCount       ? std::string(512, 'k')
           : choice == kCount + 1 ? std::string(512, 'k') + "l"
           : choice == kCount + 2 ? "A,1,B,2," + std::string(520, 'z')
                                  : std::string(input.Text().c_str());
}

std::string TOperationWorld::Path()
{
    static const std::string kPaths[] = {"d\\s", "d/s", "d\\s_A_1_B_2", "d\\s_A_1", "d\\t", "t", "t_A_2", "gone\\x",
                                         "",     "d",   "d\\f",         "s_A_1_B_2"};
    constexpr unsigned int kCount = sizeof kPaths / sizeof *kPaths;
    const unsigned int choice = input.Below(kCount + 1);
    return choice < kCount ? kPaths[choice] : std::string(input.Text().c_str());
}

float TOperationWorld::Float()
{
    constexpr std::uint32_t kBits[] = {0x3F800000, 0x3F000000, 0x42C80000, 0xBF800000, 0x00000000, 0x80000000,
                                       0x7FC00000, 0x7F800000, 0xFF800000, 0x00000001, 0x1E3CE508, 0x7149F2CA};
    constexpr unsigned int kCount = sizeof kBits / sizeof *kBits;
    const unsigned int choice = input.Below(kCount + 2);
    return Literal::FromBits(choice < kCount ? kBits[choice] : input.Number());
}

int TOperationWorld::Small()
{
    const unsigned int choice = input.Below(16);
    return choice < 12 ? static_cast<int>(choice) - 2 : choice < 14 ? 100 : static_cast<int>(input.Number());
}

void TOperationWorld::Make(std::size_t i)
{
    FUZZ_CHECK_EQUAL(DeleteBackgroundCorrection(objects[i]), 0u);
    if (!IsStore(i)) {
        objects[i] = CreateBackgroundCorrection();
        processors[i] = Literal::TProcessor();
        return;
    }
    char names[3][20] = {"A", "B", ""};
    char* pointers[3] = {names[0], names[1], names[2]};
    const unsigned int choice = input.Below(8);
    const int count = choice == 6 ? 3 : choice < 3 ? 2 : choice < 5 ? 1 : static_cast<int>(choice) - 5;
    objects[i] = CreateBackgroundCorrectionOffline(choice == 7 ? nullptr : pointers, count);
    stores[i - kProcessors] = std::make_unique<Literal::TStore>(disk);
    Store(i).SetGroupingParameters(
        choice == 7 ? std::nullopt : std::make_optional<Literal::TTexts>({names[0], names[1], names[2]}), count);
}

void TOperationWorld::Operate(bool mayDelegate)
{
    try {
        if (!undecided) {
            OperateDecided(mayDelegate);
        }
    } catch (const Literal::TUndecided&) {
        undecided = true;
    }
}

void TOperationWorld::OperateDecided(bool mayDelegate)
{
    const unsigned int operation = input.Below(16);
    const std::size_t i = input.Below(kObjects);
    switch (operation) {
    case 0:
    case 1:
        Add(i);
        break;
    case 2:
    case 3:
        SetActive(i);
        break;
    case 4:
        Delete(i);
        break;
    case 5:
        SetLevel(i);
        break;
    case 6:
        SetExposure(i);
        break;
    case 7:
        SetRegion(i);
        break;
    case 8:
        Apply(i, mayDelegate);
        break;
    case 9:
        Import(i);
        break;
    case 10:
        Load(i, true);
        break;
    case 11:
        Load(i, false);
        break;
    case 12:
        Save(i);
        break;
    case 13:
        FUZZ_CHECK_EQUAL(objects[i]->ClearCorrections(), 0u);
        WithModel(i, [](auto& model) { return model.ClearCorrections(); });
        break;
    case 14:
        ChangeFiles();
        break;
    default:
        if (mayDelegate && input.Flag()) { // within a call of the object, destroying it would be the host's error
            Make(i);
        } else {
            CompareBackground(i);
        }
        break;
    }
    if (!undecided) { // within the call of a delegate
        Compare(i);
    }
}

void TOperationWorld::Compare(std::size_t i)
{
    CompareTexts(i);
    HostChecks::CheckState(*objects[i], IsStore(i) ? TKind::kStore : TKind::kProcessor);
    WithModel(i, [&](auto& model) { CompareGetters(*objects[i], model); });
    TakeTexts(i);
    FUZZ_CHECK(MemoryFiles::Disk().nodes == disk.nodes);
}

template <typename TModel> void TOperationWorld::CompareGetters(QX_IBackgroundCorrection& object, TModel& model)
{
    FUZZ_CHECK_EQUAL(object.GetNumberOfCorrections(), model.GetNumberOfCorrections());
    for (unsigned int position = 0; position < model.GetNumberOfCorrections(); ++position) {
        FUZZ_CHECK_EQUAL(TextOf(object.GetCorrectionKey(position)), TextOf(model.GetCorrectionKey(position)));
    }
    FUZZ_CHECK_EQUAL(TextOf(object.GetActiveCorrectionKey()), TextOf(model.GetActiveCorrectionKey()));
    FUZZ_CHECK_EQUAL(object.GetCorrectionLevel(), model.GetCorrectionLevel());
    float given[2] = {99.0f, 99.0f};
    float expected[2] = {99.0f, 99.0f};
    FUZZ_CHECK_EQUAL(object.GetExposureAndIntensity(&given[0], &given[1]),
                     model.GetExposureAndIntensity(expected[0], expected[1]));
    FUZZ_CHECK(std::memcmp(given, expected, sizeof given) == 0); // every NaN is itself
    FUZZ_CHECK_EQUAL(object.GetReferenceExposureAndIntensity(&given[0], &given[1]),
                     model.GetReferenceExposureAndIntensity(expected[0], expected[1]));
    FUZZ_CHECK(std::memcmp(given, expected, sizeof given) == 0);
    std::vector<int> region(4, 99);
    std::vector<int> expectedRegion(4, 99);
    FUZZ_CHECK_EQUAL(object.GetRegion(&region[0], &region[1], &region[2], &region[3]), model.GetRegion(expectedRegion));
    FUZZ_CHECK(region == expectedRegion);
    for (const bool scaled : {false, true}) {
        unsigned short values[3] = {99, 99, 99};
        Literal::TStatistics statistics = {99, 99, 99};
        const unsigned int code = scaled ? object.GetScaledCorrectionStatistics(&values[0], &values[1], &values[2])
                                         : object.GetCorrectionStatistics(&values[0], &values[1], &values[2]);
        FUZZ_CHECK_EQUAL(code, scaled ? model.GetScaledCorrectionStatistics(statistics)
                                      : model.GetCorrectionStatistics(statistics));
        FUZZ_CHECK(values[0] == statistics.minimum && values[1] == statistics.maximum &&
                   values[2] == statistics.average);
    }
}

// A store's own text goes with the first call, and the second gives that of its group.
void TOperationWorld::CompareTexts(std::size_t i)
{
    for (int call = 0; call < 2; ++call) {
        FUZZ_CHECK_EQUAL(TextOf(objects[i]->GetLastErrorMessage()),
                         TextOf(WithModel(i, [](auto& model) { return model.GetLastErrorMessage(); })));
    }
}

void TOperationWorld::TakeTexts(std::size_t i)
{
    objects[i]->GetLastErrorMessage();
    const char* const text = objects[i]->GetLastErrorMessage();
    FUZZ_CHECK_EQUAL(text != nullptr, Processor(i) != nullptr);
    if (IsStore(i)) {
        Store(i).message.clear();
    }
    if (text != nullptr) {
        Processor(i)->message = text;
    }
}

void TOperationWorld::CompareBackground(std::size_t i)
{
    const auto background = HostChecks::CheckApplication(*objects[i]);
    const Literal::TProcessor* const processor = Processor(i);
    const bool isGiven =
        processor != nullptr && !processor->headerOnly && processor->active != nullptr && processor->scaled &&
        std::int64_t{processor->width} * processor->height == static_cast<std::int64_t>(processor->scaled->size()) &&
        processor->scaled->size() <= static_cast<std::size_t>(HostChecks::kMostPixels);
    FUZZ_CHECK_EQUAL(background.has_value(), isGiven);
    FUZZ_CHECK(!isGiven || *background == *processor->scaled);
    TakeTexts(i);
}
