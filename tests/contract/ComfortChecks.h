// What the sources of the host with the comfort header share.
#ifndef QXBC_TESTS_COMFORT_CHECKS_H
#define QXBC_TESTS_COMFORT_CHECKS_H

#include "Checks.h"
#include "QX_BackgroundCorrection.hpp"

#include <string>
#include <vector>

using TPixels = std::vector<unsigned short>;

// The groups of checks in ComfortImages.cpp and ComfortStore.cpp.
void CheckImageViews();
void CheckImages(const QX_KRLSDK::TBackgroundCorrectionLibrary& library);
void CheckDelegates(const QX_KRLSDK::TBackgroundCorrectionLibrary& library);
void CheckCallables(const QX_KRLSDK::TBackgroundCorrectionLibrary& library);
void CheckStore(const QX_KRLSDK::TBackgroundCorrectionLibrary& library);

// Code and text of the error that `work` throws, or "nothing".
template <class TWork> std::string Refusal(TWork&& work)
{
    try {
        work();
    } catch (const QX_KRLSDK::TBackgroundCorrectionError& error) {
        return Checks::Text(error.Code()) + " " + error.what();
    }
    return "nothing";
}

inline std::string Join(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : " ") + text;
    return joined;
}

inline std::string RegionText(const QX_KRLSDK::TBackgroundCorrection::TRegion& region)
{
    return Join(
        {Checks::Text(region.left), Checks::Text(region.top), Checks::Text(region.width), Checks::Text(region.height)});
}

inline std::string StatisticsText(const QX_KRLSDK::TBackgroundCorrection::TStatistics& statistics)
{
    return Join({Checks::Text(statistics.minimum), Checks::Text(statistics.maximum), Checks::Text(statistics.average)});
}

inline std::string PixelText(const TPixels& pixels)
{
    std::vector<std::string> numbers;
    for (const unsigned short pixel : pixels)
        numbers.push_back(Checks::Text(pixel));
    return Join(numbers);
}

#endif
