// What help and the manual page tell of the program as a whole, and an example or more of every verb: all of them in
// one place, because one set of files serves them all, with which a test runs them.
#include "verbs/Verbs.h"

#include <string>
#include <vector>

namespace workbench {

namespace {

struct TVerbGuide {
    std::vector<std::string> verb;
    std::vector<TVerb::TExample> examples;
};

struct TChapter {
    const char* heading;
    std::vector<TVerbGuide> verbs;
};

std::vector<TChapter> Chapters()
{
    return {
        {"Correct images",
         {{{"correct"},
           {{"One image", "qxbackground correct --dark dark.tif --dark-exposure 60 --dark-intensity 100 --exposure 60 "
                          "--intensity 100 light.tif -o corrected.tif"},
            {"A night, each image into a file of its own, hot pixels repaired",
             "qxbackground correct --dark darks/ --dark-exposure 60 --dark-intensity 100 --exposure 60 --intensity 100 "
             "--repair-hot lights/ -o corrected/"},
            {"Dark frames of another exposure; stray light in one of them does no harm",
             "qxbackground correct --dark darks/ --reject sigma --dark-exposure 60 --dark-intensity 100 --bias bias/ "
             "--exposure 120 --intensity 100 'lights/m31*.fits' -o corrected/ --name '{stem}_corrected{ext}'"}}},
          {{"apply"},
           {{"One image", "qxbackground apply night.qxb --key dark60 --exposure 60 --intensity 100 light.tif "
                          "-o corrected.tif"},
            {"A folder of images, by whichever correction fits best",
             "qxbackground apply night.qxb --auto --exposure 60 --intensity 100 lights/ -o corrected/"},
            {"FITS images of several exposures, each by its own header",
             "qxbackground apply night.qxb --auto --intensity 100 fits/ -o corrected/"},
            {"First see what would be done",
             "qxbackground apply night.qxb --auto --exposure 90 --intensity 100 lights/ "
             "-o corrected/ --dry-run"}}}}},
        {"Make calibration files",
         {{{"build"},
           {{"A correction out of a folder of dark frames",
             "qxbackground build new.qxb --key dark60 --exposure 60 --intensity 100 darks/"},
            {"One more, in the same file", "qxbackground build night.qxb --key dark30 --exposure 30 --intensity 100 "
                                           "--reject winsor darks/"}}},
          {{"hotpixels"},
           {{"A list to look at and to edit, for --hot-list", "qxbackground hotpixels darks/ -o hot-pixels.txt"}}}}},
        {"Look at calibration files",
         {{{"list"}, {{"What is in it", "qxbackground list night.qxb"}}},
          {{"show"},
           {{"One correction, as numbers and as a picture",
             "qxbackground show night.qxb --key dark60 --picture dark60.png"}}},
          {{"check"}, {{"Whether all is as it should be", "qxbackground check night.qxb other.qxb"}}},
          {{"diff"}, {{"What two files have in common", "qxbackground diff night.qxb other.qxb"}}},
          {{"report"},
           {{"Whether the calibration is good, as a page", "qxbackground report night.qxb -o report.html"},
            {"The same with its dark frames and an image",
             "qxbackground report night.qxb --dark darks/ --dark-exposure 60 "
             "--against light.tif -o report.html"}}}}},
        {"Change calibration files",
         {{{"import"},
           {{"Corrections of another file", "qxbackground import night.qxb other.qxb"},
            {"What is whole of a damaged file", "qxbackground import rescued.qxb damaged.qxb --salvage"}}},
          {{"rename"}, {{"Another key for a correction", "qxbackground rename night.qxb --key dark60 'dark 60 s'"}}},
          {{"delete"}, {{"A correction", "qxbackground delete night.qxb --key dark60"}}}}},
        {"Images",
         {{{"statistics"}, {{"Of some images", "qxbackground statistics lights/"}}},
          {{"convert"},
           {{"From one format into another, compressed", "qxbackground convert lights/ -o lights.fits --compress"},
            {"Frames without a format", "qxbackground convert frame.raw --raw 6x4 -o frame.tif"}}},
          {{"export"},
           {{"A correction, for other programs", "qxbackground export night.qxb --key dark60 -o dark60.fits"}}},
          {{"simulate"},
           {{"Dark frames and images to try things with", "qxbackground simulate -o images --exposure 1,2"}}}}},
        {"Stores",
         {{{"store"}, {}},
          {{"store", "add"},
           {{"A correction, into the file of its group",
             "qxbackground store add store/cam --group Gain --group Temperature --key Gain,4,Temperature,-8,dark60 "
             "--exposure 60 --intensity 100 darks/"},
            {"FITS frames, whose headers say exposure, gain and temperature",
             "qxbackground store add store/cam --group Gain --group Temperature --key dark30 --intensity 100 "
             "fits/m42_1.fits"}}},
          {{"store", "import"},
           {{"All corrections of another store", "qxbackground store import store/cam_Gain_1_Temperature_-8 "
                                                 "other/cam_Gain_2_Temperature_-8"}}},
          {{"store", "delete"},
           {{"A correction; any file names its store", "qxbackground store delete store/cam_Gain_1_Temperature_-8 "
                                                       "--key Gain,1,Temperature,-8,dark60"}}},
          {{"store", "show"},
           {{"One correction",
             "qxbackground store show store/cam_Gain_1_Temperature_-8 --key Gain,1,Temperature,-8,dark60"}}},
          {{"store", "rename"},
           {{"Another key, and with it another group",
             "qxbackground store rename store/cam_Gain_1_Temperature_-8 Gain,2,Temperature,-8,dark60 --key "
             "Gain,1,Temperature,-8,dark60"}}},
          {{"store", "export"},
           {{"Into one file, for a host that knows no stores",
             "qxbackground store export store/cam --group Gain --group Temperature --where Gain=1 -o gain1.qxb"}}},
          {{"store", "copy"},
           {{"The whole store", "qxbackground store copy store/cam store/copy --group Gain --group Temperature"}}},
          {{"store", "list"}, {{"What is in it", "qxbackground store list store/cam_Gain_1_Temperature_-8"}}},
          {{"store", "apply"},
           {{"FITS images, each by the group that its header asks for",
             "qxbackground store apply store/cam --group Gain --group Temperature --auto --intensity 100 fits/ "
             "-o corrected/"},
            {"Images of one group",
             "qxbackground store apply store/cam_Gain_1_Temperature_-8 --key Gain,1,Temperature,-8,dark60 "
             "--exposure 60 --intensity 100 lights/ -o corrected/"}}}}},
        {"This program",
         {{{"completion"},
           {{"For the bash that runs, or in ~/.bashrc for every one", "source <(qxbackground completion bash)"},
            {"For zsh", "source <(qxbackground completion zsh)"},
            {"For fish", "qxbackground completion fish | source"}}}}},
    };
}

} // namespace

TProgramText ProgramText()
{
    TProgramText text;
    text.name = "qxbackground";
    text.version = "qxbackground " QXBACKGROUND_VERSION;
    text.summary = "background correction of 16-bit camera images";
    text.about = {
        "Subtracts what a camera adds to every image by itself, as dark frames show it. Corrections are made of dark "
        "frames, kept in calibration files under a key, and scaled to the exposure and light intensity of the images.",
        "Images are TIFF, FITS, PNG, PGM, SER and raw files with 16 bits per pixel, told by their content; TIFF, FITS "
        "and PNG are written. Pages are counted from 1. Files appear whole or not at all; nothing is written over "
        "without --overwrite, and nothing at all over an input."};
    text.exitStatus = {
        {"0", "Done."},
        {"1",
         "Some of several files failed, each with its line, and the others are done. With check: a file does not load "
         "whole. With diff: the files differ."},
        {"2", "Refused or failed, with one line on the standard error stream that says why. Of what was to be written, "
              "nothing half done is left."}};
    text.environment = {{"NO_COLOR",
                         "Set to anything: no colours. There are none either where the output is no terminal, or TERM "
                         "is \"dumb\"."},
                        {"TMPDIR", "Folder for the temporary file of a stack that is larger than --stack-memory."}};
    text.files = {
        {".NAME.qxbackground-lock", "Beside a calibration file or store while a command changes it: others wait. One "
                                    "that a killed process left is in nobody's way."},
        {".qxbackground-*", "An unfinished output. Only a process that is ended by force leaves one, on some file "
                            "systems; it may be deleted."}};
    return text;
}

void AddGuide(TVerb& app)
{
    app.AddExample("A camera to try things with", "qxbackground simulate -o images");
    app.AddExample("Correct an image by dark frames",
                   "qxbackground correct --dark darks/ --dark-exposure 60 --dark-intensity 100 "
                   "--exposure 60 --intensity 100 light.tif -o corrected.tif");
    app.AddExample("Keep the correction in a calibration file",
                   "qxbackground build kept.qxb --key dark60 --exposure 60 --intensity 100 darks/");
    app.AddExample("Use it for a night's images",
                   "qxbackground apply night.qxb --key dark60 --exposure 60 --intensity 100 lights/ -o corrected/");
    for (const TChapter& chapter : Chapters()) {
        for (const TVerbGuide& guide : chapter.verbs) {
            TVerb* const verb = app.Find(guide.verb);
            if (verb == nullptr) // help of one verb has no other
                continue;
            if (guide.verb.size() == 1)
                verb->group(chapter.heading);
            for (const TVerb::TExample& example : guide.examples)
                verb->AddExample(example.what, example.command);
        }
    }
}

} // namespace workbench
