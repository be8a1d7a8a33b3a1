// The store as it is meant to be used: dark frames of two sessions at several exposures, grouped by both, saved, opened
// again from one of the files, and applied to images.
#include "offline/StoreSupport.h"
#include "support/RandomImages.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr int kWidth = 48;
constexpr int kHeight = 32;

// A camera of which everything is known: a pattern of offsets, a warm corner whose dark signal grows with the exposure,
// some hot pixels, and noise. Sessions differ in temperature, and so in dark signal.
class TSimulatedCamera {
public:
    std::vector<Literal::TImage> DarkFrames(int session, float exposureSeconds, int count)
    {
        std::vector<Literal::TImage> frames(static_cast<std::size_t>(count), {kWidth, kHeight, {}});
        for (Literal::TImage& frame : frames) {
            for (int y = 0; y < kHeight; ++y) {
                for (int x = 0; x < kWidth; ++x) {
                    const float darkSignal = static_cast<float>((x + y) * (session == 1 ? 5 : 9)) * exposureSeconds;
                    const bool isHot = (x * 7 + y * 13) % 101 == 0;
                    frame.pixels.push_back(static_cast<std::uint16_t>(200 + x % 4 + static_cast<int>(darkSignal) +
                                                                      (isHot ? 3000 : 0) + Noise()));
                }
            }
        }
        return frames;
    }

private:
    int Noise() { return static_cast<int>(images.Number(0, 8)); }

    TRandomImages images{20};
};

struct TDark {
    int session;
    const char* exposureText;
    float exposureSeconds;
    std::vector<Literal::TImage> frames;
    std::string Key(const char* suffix = "") const
    {
        return "Session," + std::to_string(session) + ",Exposure," + exposureText + suffix;
    }
};

TEST(StoreCaseTest, TheRightGroupIsFoundAndAppliedAfterReopening)
{
    const TStoreFolder folder;
    folder.MakeFolder("cal");
    TSimulatedCamera camera;
    std::vector<TDark> darks;
    for (const int session : {1, 2}) {
        for (const auto& [text, seconds] :
             {std::pair<const char*, float>{"0.1s", 0.1f}, {"1s", 1.0f}, {"10s", 10.0f}}) {
            darks.push_back({session, text, seconds, camera.DarkFrames(session, seconds, 5)});
        }
    }
    {
        TTestStore store({"Session", "Exposure"});
        for (const TDark& dark : darks) {
            ASSERT_EQ(store.AddFrames(dark.Key(",dark"), dark.frames, dark.exposureSeconds, 100.0f), 0u);
        }
        ASSERT_EQ(store.Save("cal\\night"), 0u);
    }
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"cal", "cal/night_Session_1_Exposure_0.1s", "cal/night_Session_1_Exposure_10s",
                                        "cal/night_Session_1_Exposure_1s", "cal/night_Session_2_Exposure_0.1s",
                                        "cal/night_Session_2_Exposure_10s", "cal/night_Session_2_Exposure_1s"}));

    TTestStore store(std::vector<std::string>{}); // knows nothing but the path of one file
    ASSERT_EQ(store.Load("cal\\night_Session_2_Exposure_1s"), 0u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 6u);
    for (const TDark& dark : darks) {
        ASSERT_EQ(store.Select(dark.Key(",dark")), 0u) << dark.Key();
        store->SetExposureAndIntensity(dark.exposureSeconds, 100.0f);
        const Literal::TImage expected = Literal::Subtract(
            dark.frames[0],
            Literal::Scale(Literal::Correction(dark.frames),
                           Literal::ScaleFactor(dark.exposureSeconds, 100.0f, 1.0f, dark.exposureSeconds, 100.0f)));
        Literal::TImage image = dark.frames[0];
        ASSERT_EQ(
            store->ApplyCorrection(image.pixels.data(), kWidth * kHeight, nullptr, 0, nullptr, false, false, false),
            0u);
        EXPECT_EQ(image.pixels, expected.pixels) << dark.Key();
        // What is left is noise, and the hot pixels that the median took out of the correction.
        const Literal::TStatistics left = Literal::CalculateStatistics(image.pixels);
        EXPECT_LT(left.average, 60) << dark.Key();
        EXPECT_GT(Literal::CalculateStatistics(dark.frames[0].pixels).average, 220);
    }
    EXPECT_EQ(store.Select("Session,3,Exposure,1s,dark"), 513u);
}

TEST(StoreCaseTest, SettingsMadeBeforeOpeningScaleEveryGroup)
{
    const TStoreFolder folder;
    TTestStore store({"Session"});
    store.Add("Session,1,dark", 400, 1.0f, 100.0f);
    store.Add("Session,2,dark", 600, 1.0f, 100.0f);
    ASSERT_EQ(store.Save("night"), 0u);
    TTestStore reopened({"Session"});
    reopened->SetExposureAndIntensity(0.5f, 100.0f); // before anything is loaded
    ASSERT_EQ(reopened.Load("night_Session_1"), 0u);
    reopened.Select("Session,2,dark");
    EXPECT_EQ(reopened.Corrected(), 700);
    reopened.Select("Session,1,dark");
    EXPECT_EQ(reopened.Corrected(), 800);
}

} // namespace
