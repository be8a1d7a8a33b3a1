#include "surroundings/SurroundingsWorkload.h"

#include "file/FileBytes.h"
#include "support/RandomImages.h"

using QX_KRLSDK::QX_IBackgroundCorrection;

namespace Surroundings {

namespace {

// Numbers as integers: the lines must not depend on what they are to show.
class TDay {
public:
    void Note(const char* what, long long number) { lines.push_back(std::string(what) + " " + std::to_string(number)); }
    void Note(const char* what, const std::string& text) { lines.push_back(std::string(what) + " " + text); }
    void NoteFile(const std::string& path)
    {
        std::string text = "file";
        for (const unsigned char byte : FileBytes::ReadFile(path)) {
            text += " " + std::to_string(byte);
        }
        lines.push_back(text);
    }

    std::vector<std::string> lines;
};

void Add(TDay& day, QX_IBackgroundCorrection& object, const std::string& key, int frameCount, TRandomImages& images,
         float exposure)
{
    const std::vector<Literal::TImage> frames = images.Stack(frameCount, 9, 7);
    std::vector<const unsigned short*> pointers;
    for (const Literal::TImage& frame : frames) {
        pointers.push_back(frame.pixels.data());
    }
    day.Note("add", object.AddCorrection(key.c_str(), pointers.data(), frameCount, 9, 7, exposure, 73.0f));
}

void Use(TDay& day, QX_IBackgroundCorrection& object, const std::string& key)
{
    day.Note("activate", object.SetActiveCorrection(key.c_str()));
    for (int percent = 0; percent <= 100; percent += 7) {
        day.Note("level", object.SetCorrectionLevel(percent));
        day.Note("reads back", object.GetCorrectionLevel());
        day.Note("exposure", object.SetExposureAndIntensity(0.3f, 61.0f));
        day.Note("region", object.SetRegion(1, 2, 7, 5));
        std::vector<unsigned short> image(35, 65535);
        day.Note("apply", object.ApplyCorrection(image.data(), 35, nullptr, 0, nullptr, false, false, false));
        for (const unsigned short pixel : image) {
            day.Note("pixel", pixel);
        }
        unsigned short statistics[3] = {};
        day.Note("statistics", object.GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]));
        day.Note("average", statistics[2]);
        day.Note("scaled", object.GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]));
        day.Note("average", statistics[2]);
    }
}

void Fail(TDay& day, QX_IBackgroundCorrection& object)
{
    const auto text = [&] {
        const char* const message = object.GetLastErrorMessage();
        day.Note("text", message != nullptr ? message : "(null)");
    };
    const unsigned short pixel = 1;
    const unsigned short* frame = &pixel;
    day.Note("zero product", object.AddCorrection("A,1", &frame, 1, 1, 1, 1.25e-30f, 1.25e-30f));
    text();
    day.Note("region", object.SetRegion(-1234567, 0, 1, 1));
    text();
    day.Note("key", object.SetActiveCorrection("A,1,nobody"));
    text();
    day.Note("letter case", object.SetActiveCorrection("\xC4"));
    text();
}

} // namespace

TObject MakeProcessor()
{
    return TObject(CreateBackgroundCorrection());
}

TObject MakeStore(const std::vector<std::string>& groupingNames)
{
    std::vector<std::string> copies = groupingNames;
    std::vector<char*> names;
    for (std::string& name : copies) {
        names.push_back(name.data());
    }
    return TObject(CreateBackgroundCorrectionOffline(names.data(), static_cast<int>(names.size())));
}

unsigned int AddFlat(QX_IBackgroundCorrection& object, const std::string& key, std::uint16_t value)
{
    const std::vector<unsigned short> frame(12, value);
    const unsigned short* const frames[] = {frame.data()};
    return object.AddCorrection(key.c_str(), const_cast<const unsigned short**>(frames), 1, 4, 3, 1.0f, 1.0f);
}

int FlatBackground(QX_IBackgroundCorrection& object)
{
    std::vector<unsigned short> image(12, 65535);
    const unsigned int code = object.ApplyCorrection(image.data(), 12, nullptr, 0, nullptr, false, false, false);
    return code == 0 ? 65535 - image.front() : -1;
}

std::vector<std::string> Workload(const std::string& folder)
{
    TDay day;
    TRandomImages images(4711);
    const TObject processor = MakeProcessor();
    Add(day, *processor, "three", 3, images, 0.7f);
    Add(day, *processor, "many", 301, images, 0.7f); // sums beyond 2^24: the order and the rounding show
    Use(day, *processor, "three");
    Use(day, *processor, "many");
    Add(day, *processor, "\xE4", 1, images, 0.1f); // a letter in some places, and then another case of the next
    Add(day, *processor, "\xC4", 1, images, 0.1f);
    Fail(day, *processor);
    day.Note("save", processor->SaveFile((folder + "/live").c_str()));
    day.NoteFile(folder + "/live");
    day.Note("load", processor->LoadFile((folder + "/live").c_str()));
    Use(day, *processor, "many");

    const TObject store = MakeStore({"A"});
    Add(day, *store, "A,1", 5, images, 0.7f);
    Add(day, *store, "A,2", 2, images, 0.7f);
    day.Note("save", store->SaveFile((folder + "/store").c_str()));
    day.NoteFile(folder + "/store_A_1");
    day.NoteFile(folder + "/store_A_2");
    Use(day, *store, "A,1");
    Fail(day, *store);
    return day.lines;
}

} // namespace Surroundings
