#include "OperationWorld.h"

#include "Check.h"
#include "HostChecks.h"
#include "MemoryFiles.h"

#include "file/ProcessorDriver.h"

using HostChecks::TKind;

TOperationWorld::TOperationWorld(const std::uint8_t* data, std::size_t size) : input(data, size)
{
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
    for (std::size_t i = 0; i < kObjects; ++i) {
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
    return FromBits(choice < kCount ? kBits[choice] : input.Number());
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
        Model(i) = TProcessorModel();
        return;
    }
    char names[3][20] = {"A", "B", ""};
    char* pointers[3] = {names[0], names[1], names[2]};
    const unsigned int choice = input.Below(8);
    const int count = choice < 3 ? 2 : choice < 5 ? 1 : static_cast<int>(choice) - 5;
    objects[i] = CreateBackgroundCorrectionOffline(choice == 7 ? nullptr : pointers, choice == 6 ? 3 : count);
    storeKeys[i].clear();
}

void TOperationWorld::Operate(bool mayDelegate)
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
        if (!IsStore(i)) {
            Model(i).ClearCorrections();
        }
        storeKeys[i].clear();
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
    Compare(i);
}

void TOperationWorld::CheckResult(std::size_t i, unsigned int code, unsigned int modelCode,
                                  const TCodes& storeCodes) const
{
    if (IsStore(i)) {
        if (storeCodes.count(code) == 0) {
            Fuzz::Fail(__FILE__, __LINE__, "a store gave " + std::to_string(code));
        }
    } else {
        FUZZ_CHECK_EQUAL(code, modelCode);
    }
}

std::vector<std::string> TOperationWorld::Keys(std::size_t i)
{
    std::vector<std::string> keys;
    for (unsigned int position = 0; position < objects[i]->GetNumberOfCorrections(); ++position) {
        keys.push_back(objects[i]->GetCorrectionKey(position));
    }
    return keys;
}

void TOperationWorld::Compare(std::size_t i)
{
    HostChecks::CheckState(*objects[i], IsStore(i) ? TKind::kStore : TKind::kProcessor);
    if (IsStore(i)) {
        FUZZ_CHECK(Keys(i) == storeKeys[i]);
        return;
    }
    const TProcessorModel& model = Model(i);
    QX_IBackgroundCorrection& object = *objects[i];
    FUZZ_CHECK(ProcessorDriver::Corrections(Processor(i)) == model.corrections);
    const char* const key = object.GetActiveCorrectionKey();
    FUZZ_CHECK_EQUAL(std::string(key != nullptr ? key : "(null)"),
                     model.active ? model.corrections[*model.active].key : "(null)");
    FUZZ_CHECK_EQUAL(object.GetCorrectionLevel(), model.Level());
    float exposure = 0.0f;
    float intensity = 0.0f;
    int region[4] = {};
    FUZZ_CHECK_EQUAL(object.GetExposureAndIntensity(&exposure, &intensity), model.headerOnly ? 770u : 0u);
    FUZZ_CHECK_EQUAL(object.GetRegion(&region[0], &region[1], &region[2], &region[3]), model.headerOnly ? 770u : 0u);
    if (!model.headerOnly) {
        FUZZ_CHECK(BitsOf(exposure) == BitsOf(model.exposure) && BitsOf(intensity) == BitsOf(model.intensity));
        FUZZ_CHECK(region[0] == model.left && region[1] == model.top && region[2] == model.width &&
                   region[3] == model.height);
    }
}

void TOperationWorld::CompareBackground(std::size_t i)
{
    const auto background = HostChecks::CheckApplication(*objects[i]);
    if (IsStore(i)) {
        return;
    }
    const TProcessorModel& model = Model(i);
    const bool isGiven = !model.headerOnly && model.active && model.PixelCount() <= HostChecks::kMostPixels &&
                         model.background && model.background->size() == static_cast<std::size_t>(model.PixelCount());
    FUZZ_CHECK_EQUAL(background.has_value(), isGiven);
    FUZZ_CHECK(!isGiven || *background == *model.background);
}
