#include "verbs/CorrectionRun.h"

#include "base/JsonText.h"
#include "base/TProgress.h"
#include "base/Wording.h"
#include "images/Contrast.h"
#include "images/TImageReader.h"
#include "images/TImageWriter.h"
#include "images/TPicture.h"
#include "images/TSeriesStatistics.h"
#include "images/TSignificantBits.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

TBackgroundCorrection::TRegion ParseRegion(const std::string& text)
{
    TBackgroundCorrection::TRegion region;
    int used = 0;
    const int count =
        std::sscanf(text.c_str(), "%9d,%9d,%9d,%9d%n", &region.left, &region.top, &region.width, &region.height, &used);
    if (count != 4 || static_cast<std::size_t>(used) != text.size())
        throw TToolError("--region: '" + text + "' is not left,top,width,height");
    return region;
}

void Configure(TBackgroundCorrection& object, const TCorrectOptions& options)
{
    Call("--exposure", [&] {
        object.SetExposureAndIntensity(static_cast<float>(options.conditions.exposureSeconds),
                                       static_cast<float>(options.conditions.lightIntensityPercent));
    });
    Call("--level", [&] { object.SetLevel(options.levelPercent); });
    if (!options.region.empty())
        Call("--region", [&] { object.SetRegion(ParseRegion(options.region)); });
}

// Looks at every page's header before any work: wrong sizes are told at once, and the number of pages is known.
std::uint64_t CountPages(const TCorrectOptions& options, const TSize& wanted, TImageFormat& firstFormat)
{
    std::uint64_t pages = 0;
    for (const std::string& input : options.inputs) {
        const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
        for (; reader->NextPage(); ++pages) {
            if (pages == 0)
                firstFormat = reader->Format();
            if (reader->Size() != wanted)
                throw TToolError(input, reader->Page(),
                                 "is " + reader->Size().Text() + " pixels, the correction's region is " +
                                     wanted.Text());
            ThrowIfInterrupted();
        }
    }
    return pages;
}

struct TRun {
    std::uint64_t pages = 0;
    TImageFormat format = TImageFormat::Tiff; // of the first input
    TSeriesStatistics before, background, after;
    TSignificantBits bits;
    TImage firstBefore, firstAfter, scaledBackground;
};

void CorrectPages(TBackgroundCorrection& object, const TCorrectOptions& options, const TSize& size, TRun& run)
{
    const std::unique_ptr<TImageWriter> writer =
        CreateImage(options.output, options.outputAs.FormatFor(options.output, run.format), options.outputAs,
                    run.pages * size.Pixels() * 2, ExistingFor(options.overwrite));
    TProgress progress("Correcting", run.pages);
    const auto length = static_cast<int>(size.Pixels());
    TImage image;
    bool first = true;
    for (const std::string& input : options.inputs) {
        const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
        while (reader->NextPage()) {
            if (reader->Size() != size)
                throw TToolError(input, reader->Page(), "changed while it was being read");
            reader->Read(image);
            const TPageMetadata metadata = reader->Metadata();
            if (!options.noStatistics) {
                run.before.Add(image);
                run.bits.Add(image, metadata);
            }
            if (first && !options.picture.empty())
                run.firstBefore = image;
            Call(input + ": page " + std::to_string(reader->Page()),
                 [&] { object.Apply(image.pixels.data(), length); });
            if (!options.noStatistics)
                run.after.Add(image);
            if (first && !options.picture.empty())
                run.firstAfter = image;
            first = false;
            writer->Write(image, metadata);
            progress.Step();
        }
    }
    writer->Close();
}

} // namespace

TImage ScaledBackground(TBackgroundCorrection& object)
{
    const TBackgroundCorrection::TRegion region = object.Region();
    TImage image;
    image.size = {region.width, region.height};
    image.pixels.assign(image.size.Pixels(), 65535);
    object.Apply(image.pixels.data(), static_cast<int>(image.pixels.size()));
    for (std::uint16_t& pixel : image.pixels)
        pixel = static_cast<std::uint16_t>(65535 - pixel);
    return image;
}

void CorrectImages(TBackgroundCorrection& object, const TCorrectOptions& options, const std::string& what)
{
    Configure(object, options);
    TRun run;
    Call(what, [&] { run.scaledBackground = ScaledBackground(object); });
    const TSize size = run.scaledBackground.size;
    run.background.Add(run.scaledBackground);
    run.pages = CountPages(options, size, run.format);
    CorrectPages(object, options, size, run);

    std::vector<std::string> legend;
    if (!options.picture.empty())
        WritePng(options.picture, SideBySide({&run.firstBefore, &run.scaledBackground, &run.firstAfter}, legend),
                 ExistingFor(options.overwrite));

    if (options.json) {
        nlohmann::json report{{"output", options.output}, {"pages", run.pages}};
        if (!options.noStatistics) {
            report["before"] = run.before.Json();
            report["background"] = run.background.Json();
            report["after"] = run.after.Json();
            report["bits"] = {{"used", run.bits.Used()}, {"alwaysZeroBelow", run.bits.LeftAlignedBy()}};
        }
        std::cout << JsonText(report);
        return;
    }
    std::cout << "Corrected " << Counted(run.pages, "page") << " of " << size.Text() << " pixels ("
              << options.conditions.Text() << ", level " << options.levelPercent << " %) with " << what << ": "
              << options.output << '\n';
    if (!run.bits.Text().empty())
        std::cout << "The images: " << run.bits.Text() << '\n';
    if (!options.noStatistics)
        std::cout << StatisticsTable({"before", "background", "after"}, {&run.before, &run.background, &run.after});
    if (!options.picture.empty()) {
        std::cout << "Picture of the first page: " << options.picture << '\n';
        const char* const names[] = {"left, before:      ", "middle, background:", "right, after:      "};
        for (std::size_t panel = 0; panel < legend.size(); ++panel)
            std::cout << "  " << names[panel] << ' ' << legend[panel] << " ADU\n";
    }
}

} // namespace workbench
