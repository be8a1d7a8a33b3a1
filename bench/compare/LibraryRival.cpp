#include "compare/LibraryRival.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace QX_KRLSDK;

namespace {

void Check(unsigned int code)
{
    if (code != kSuccess) {
        std::fprintf(stderr, "an operation returned %u\n", code);
        std::exit(2);
    }
}

} // namespace

void TLibraryRival::TRelease::operator()(QX_IBackgroundCorrection* object) const
{
    DeleteBackgroundCorrection(object);
}

TLibraryRival::TLibraryRival(int imageWidth, int imageHeight, const std::uint16_t* background)
    : width(imageWidth), height(imageHeight), length(width * height), object(CreateBackgroundCorrection())
{
    const unsigned short* frames[] = {background};
    Check(object->AddCorrection("dark", frames, 1, width, height, 1.0f, 100.0f));
    Check(object->SetExposureAndIntensity(1.0f, 100.0f));
    Check(object->SetActiveCorrection("dark"));
}

void TLibraryRival::SetRegion(int left, int top, int newWidth, int newHeight)
{
    Check(object->SetRegion(left, top, newWidth, newHeight));
    length = newWidth * newHeight;
}

void TLibraryRival::Apply(std::uint16_t* image, std::uint16_t* output) const
{
    Check(object->ApplyCorrection(image, length, output, length, nullptr, false, false, false));
}

void TLibraryRival::ChangeSetting()
{
    exposure = exposure > 1.25f ? 0.75f : 1.3f;
    Check(object->SetExposureAndIntensity(exposure, 100.0f));
}

void TLibraryRival::AddCorrection(std::uint16_t* const* frames, int frameCount) const
{
    std::vector<const unsigned short*> pointers(frames, frames + frameCount);
    Check(object->AddCorrection("new", pointers.data(), frameCount, width, height, 1.0f, 100.0f));
    Check(object->DeleteCorrection("new"));
}

std::uint16_t TLibraryRival::Statistics() const
{
    std::uint16_t least = 0, greatest = 0, mean = 0;
    Check(object->GetScaledCorrectionStatistics(&least, &greatest, &mean));
    return mean;
}
