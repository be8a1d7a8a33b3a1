// The comfort header's offline store.
#include "ComfortChecks.h"

#include <cstdio>

using Checks::Equal;
using Checks::Text;
using Checks::That;
using namespace QX_KRLSDK;

void CheckStore(const TBackgroundCorrectionLibrary& library)
{
    Equal(Refusal([&] { library.MakeStore({}); }), "514 A store wants at least one grouping name.",
          "a store of nothing");
    Equal(Refusal([&] { library.MakeStore({"Gain", ""}); }), "513 A grouping name of the store is empty.",
          "a store with an empty name");

    TBackgroundCorrection store = library.MakeStore({"Gain"});
    const TPixels dark(6, 40);
    Equal(Text(store.Level()), "-1", "level of a store at first");
    store.Add("Gain,1", {{dark, 3, 2}}, 1, 100);
    store.Add("Gain,2", {{dark, 2, 3}}, 1, 100);
    store.Save("comfort-store");
    Equal(Refusal([&] { store.Reference(); }), "1280 No group is loaded.", "a text that the store kept to itself");
    Equal(Refusal([&] { store.SetActive("Gain"); }), "513 The first argument was refused.", "a key without a value");

    TBackgroundCorrection reader = library.MakeStore({"Gain"});
    reader.Load("comfort-store");
    Equal(Text(reader.Count()), "2", "number of corrections of all groups");
    reader.SetExposureAndIntensity(2, 100);
    reader.SetActive("Gain,2");
    That(reader.ActiveKey() == "Gain,2", "active key of a store");
    TPixels image(6, 100);
    reader.Apply({image, 2, 3});
    Equal(PixelText(image), "20 20 20 20 20 20", "an image through a store");
    That(std::remove("comfort-store_Gain_1") == 0 && std::remove("comfort-store_Gain_2") == 0,
         "one file for each group");
}
