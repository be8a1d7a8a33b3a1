#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <thread>

namespace ThreadHost {

namespace {

using TCodes = std::set<unsigned int>;

// Whatever loading and switching to a group may give.
const TCodes kFileCodes = {0, 513, 768, 769, 770, 771, 772, 1024, 4294967294u, 4294967295u};

void ExpectCode(const char* operation, unsigned int code, const TCodes& codes)
{
    EXPECT_TRUE(codes.count(code) != 0) << operation << " gave " << code;
}

} // namespace

void RunTogether(int count, const std::function<void(int)>& work)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&ready, &work, count, number] {
            ++ready;
            while (ready.load() < count) {
                std::this_thread::yield();
            }
            work(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TObject::TObject() : object(CreateBackgroundCorrection()) {}

TObject::TObject(const std::vector<std::string>& grouping) : object(nullptr)
{
    std::vector<std::string> copies = grouping;
    std::vector<char*> names;
    for (std::string& name : copies) {
        names.push_back(name.data());
    }
    object = CreateBackgroundCorrectionOffline(names.data(), static_cast<int>(names.size()));
}

TObject::~TObject()
{
    EXPECT_EQ(DeleteBackgroundCorrection(object), 0u);
}

unsigned int AddFlat(QX_IBackgroundCorrection& object, const std::string& key, std::uint16_t value)
{
    const std::vector<std::uint16_t> frame(kPixels, value);
    const unsigned short* frames[3] = {frame.data(), frame.data(), frame.data()};
    return object.AddCorrection(key.c_str(), frames, 3, kSide, kSide, 1.0f, 100.0f);
}

unsigned int ApplyToFlat(QX_IBackgroundCorrection& object, std::uint16_t value, unsigned int way)
{
    std::vector<std::uint16_t> image(kPixels, value);
    std::vector<std::uint16_t> output(kPixels, value);
    unsigned short* const target = way == 0 ? nullptr : way == 1 ? output.data() : image.data();
    const unsigned int code =
        object.ApplyCorrection(image.data(), kPixels, target, kPixels, nullptr, false, false, false);
    for (const std::vector<std::uint16_t>* pixels : {&image, &output}) {
        EXPECT_EQ(std::count(pixels->begin(), pixels->end(), pixels->front()), kPixels)
            << "two backgrounds in one image";
    }
    return code;
}

std::string TMixer::Key()
{
    static const char* const kKeys[] = {"A,1,B,1", "a,1,b,1", "A,1,B,1,x", "A,1,B,2", "A,2,B,1", "A,1", "dark", ""};
    return kKeys[Below(sizeof kKeys / sizeof *kKeys)];
}

void TMixer::Do(int operations)
{
    for (int i = 0; i < operations; ++i) {
        One();
    }
}

void TMixer::One()
{
    float numbers[2];
    int region[4];
    unsigned short statistics[3];
    switch (Below(26)) {
    case 0:
    case 1:
    case 2:
        ExpectCode("AddCorrection", AddFlat(object, Key(), static_cast<std::uint16_t>(100 * (1 + Below(4)))),
                   kFileCodes);
        break;
    case 3:
    case 4:
        ExpectCode("SetActiveCorrection", object.SetActiveCorrection(Key().c_str()), kFileCodes);
        break;
    case 5:
        ExpectCode("SetActiveCorrection", object.SetActiveCorrection(nullptr), {0});
        break;
    case 6:
        object.GetActiveCorrectionKey();
        break;
    case 7:
        object.GetCorrectionKey(Below(5));
        break;
    case 8:
        EXPECT_LT(object.GetNumberOfCorrections(), 1000u);
        break;
    case 9:
        if (Below(4) == 0) {
            ExpectCode("ClearCorrections", object.ClearCorrections(), {0});
        }
        break;
    case 10:
        ExpectCode("DeleteCorrection", object.DeleteCorrection(Key().c_str()), kFileCodes);
        break;
    case 11:
        ExpectCode("SetCorrectionLevel", object.SetCorrectionLevel(static_cast<int>(50 * Below(3))), {0, 770});
        break;
    case 12: {
        const int level = object.GetCorrectionLevel();
        EXPECT_TRUE(level == -1 || level == 0 || level == 50 || level == 100) << level;
        break;
    }
    case 13:
        ExpectCode("SetExposureAndIntensity", object.SetExposureAndIntensity(static_cast<float>(1 + Below(3)), 100.0f),
                   {0, 770});
        break;
    case 14:
        ExpectCode("GetExposureAndIntensity", object.GetExposureAndIntensity(&numbers[0], &numbers[1]), {0, 770});
        break;
    case 15:
        ExpectCode("GetReferenceExposureAndIntensity",
                   object.GetReferenceExposureAndIntensity(&numbers[0], &numbers[1]), {0, 1280});
        break;
    case 16:
        ExpectCode("GetCorrectionStatistics",
                   object.GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), {0, 770, 1280});
        break;
    case 17:
        ExpectCode("GetScaledCorrectionStatistics",
                   object.GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]),
                   {0, 770, 1280});
        break;
    case 18:
    case 19:
        ExpectCode("ApplyCorrection", ApplyToFlat(object, 1000, Below(3)), {0, 514, 770, 1024});
        break;
    case 20:
        ExpectCode("SetRegion", object.SetRegion(0, 0, Below(2) == 0 ? kSide : kSide - 1, kSide),
                   {0, 513, 514, 515, 516, 770});
        break;
    case 21:
        ExpectCode("GetRegion", object.GetRegion(&region[0], &region[1], &region[2], &region[3]), {0, 770});
        break;
    case 22:
        if (!sources.empty()) {
            QX_IBackgroundCorrection* const source = sources[Below(static_cast<unsigned int>(sources.size()))];
            ExpectCode("ImportCorrections", object.ImportCorrections(source, Below(2) == 0), kFileCodes);
        }
        break;
    case 23:
        ExpectCode("LoadFile", Below(3) == 0 ? object.LoadFileHeaderOnly(File()) : object.LoadFile(File()), kFileCodes);
        break;
    case 24:
        ExpectCode("SaveFile", object.SaveFile(File()), kFileCodes);
        break;
    default:
        object.GetLastErrorMessage();
        break;
    }
}

} // namespace ThreadHost
