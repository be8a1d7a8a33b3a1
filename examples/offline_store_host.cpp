// A host that keeps dark frames of several gains and temperatures in an offline store: one file for each combination,
// of which only the one in use is in memory. It makes a store, saves it, and opens it as it would on the next day.
// Files are written into the current folder: night_Gain_1_Temperature_-20 and night_Gain_4_Temperature_-20.
#include "QX_BackgroundCorrection.hpp"

#include <cstdio>
#include <string>
#include <vector>

using namespace QX_KRLSDK;

namespace {

constexpr char kStore[] = "night"; // what the names of the files begin with

// A key has a value for each name that tells the files apart. What else it says (here the exposure) tells the
// corrections within a file apart.
std::string Key(int gain, int temperature, const char* exposure)
{
    return "Gain," + std::to_string(gain) + ",Temperature," + std::to_string(temperature) + ",Exposure," + exposure;
}

void MakeStore(const TBackgroundCorrectionLibrary& library)
{
    TBackgroundCorrection store = library.MakeStore({"Gain", "Temperature"});
    const std::vector<unsigned short> dim(16 * 16, 100), bright(16 * 16, 400);
    store.Add(Key(1, -20, "0.1"), {{dim, 16, 16}}, 0.1f, 100.0f);
    store.Add(Key(1, -20, "1"), {{dim, 16, 16}}, 1.0f, 100.0f);
    store.Add(Key(4, -20, "1"), {{bright, 16, 16}}, 1.0f, 100.0f);
    store.Save(kStore); // until here nothing was written, and without it all of it would be lost
}

} // namespace

int main(int argumentCount, char** arguments)
try {
    const TBackgroundCorrectionLibrary library(argumentCount > 1 ? arguments[1]
                                                                 : TBackgroundCorrectionLibrary::DefaultName());
    MakeStore(library);

    TBackgroundCorrection store = library.MakeStore({"Gain", "Temperature"});
    store.Load(kStore); // the keys of all files, and no pixels yet
    std::printf("%u corrections\n", store.Count());
    // Settings may come first; they hold for every file that is read. They are those of the images: without them the
    // background would be divided by the dark frames' exposure times intensity.
    store.SetExposureAndIntensity(0.5f, 100.0f);

    for (const int gain : {1, 4}) {
        store.SetActive(Key(gain, -20, "1")); // reads that gain's file, when it is another one than before
        std::vector<unsigned short> image(16 * 16, 1000);
        store.Apply({image, 16, 16});
        std::printf("gain %d: 1000 became %d\n", gain, int{image[0]});
    }

    // New dark frames. The file is written when another group is needed, or by saving the store under its own name;
    // only saving tells when it fails.
    const std::vector<unsigned short> newer(16 * 16, 420);
    store.Add(Key(4, -20, "2"), {{newer, 16, 16}}, 2.0f, 100.0f);
    store.Save(kStore);

    try {
        store.SetActive("Gain,4"); // no temperature
    } catch (const TBackgroundCorrectionError& error) {
        std::printf("refused with code %u\n", error.Code());
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "offline_store_host: %s\n", error.what());
    return 1;
}
