// Compares the library with the literal algorithms, with OpenCV, and with what the memory allows.
//   qxbc_compare [--once] [--rounds N] [--json FILE] [--size N] [--operation TEXT]
// --size and --operation (part of a row's name) leave the other rows out.
// The library is called through its exports, lock and checks included; only averaging and median, which have no
// operation of their own, are called as kernels.
#include "QX_BackgroundCorrection.h"

#include "compare/Files.h"
#include "compare/Measure.h"
#include "compare/Rivals.h"
#include "kernels/Kernels.h"
#include "model/LiteralArithmetic.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

using namespace QX_KRLSDK;

namespace {

constexpr std::size_t kFrameCount = 10;

struct TReleaseObject {
    void operator()(QX_IBackgroundCorrection* object) const { DeleteBackgroundCorrection(object); }
};

// Non-zero pixels that differ: memory that was never written would be one shared page.
std::vector<std::uint16_t> Noise(std::size_t count, std::uint32_t seed, std::uint32_t span)
{
    std::vector<std::uint16_t> pixels(count);
    std::uint32_t state = seed * 2654435761u + 1;
    for (std::uint16_t& pixel : pixels) {
        state = state * 1664525u + 1013904223u;
        pixel = static_cast<std::uint16_t>(100 + (state >> 16) % span);
    }
    return pixels;
}

void Check(unsigned int code)
{
    if (code != kSuccess) {
        std::fprintf(stderr, "an operation returned %u\n", code);
        std::exit(2);
    }
}

// The images of one size, and the library with a correction of that size active.
class TBench {
public:
    explicit TBench(int imageSize)
        : size(imageSize), count(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)),
          image(Noise(count, 1, 60000)), output(Noise(count, 2, 60000)), background(Noise(count, 3, 3000)),
          openCv(size, size), object(CreateBackgroundCorrection())
    {
        for (std::uint32_t frame = 0; frame < kFrameCount; ++frame) {
            stack.push_back(Noise(count, 10 + frame, 3000));
        }
        for (std::vector<std::uint16_t>& frame : stack) {
            frames.push_back(frame.data());
        }
        const unsigned short* one[] = {background.data()};
        Check(object->AddCorrection("dark", one, 1, size, size, 1.0f, 100.0f));
        Check(object->SetActiveCorrection("dark"));
    }

    std::vector<std::vector<TRival>> Rows(std::vector<std::string>& names);

private:
    void Apply(std::uint16_t* target)
    {
        const int length = static_cast<int>(count);
        Check(object->ApplyCorrection(image.data(), length, target, length, nullptr, false, false, false));
    }
    void ChangeSetting()
    {
        exposure = exposure > 1.25f ? 0.75f : 1.3f; // factors on both sides of 1 in turn
        Check(object->SetExposureAndIntensity(exposure, 100.0f));
    }

    int size;
    std::size_t count;
    std::vector<std::uint16_t> image;
    std::vector<std::uint16_t> output;
    std::vector<std::uint16_t> background;
    std::vector<std::vector<std::uint16_t>> stack;
    std::vector<std::uint16_t*> frames;
    TOpenCvRival openCv;
    std::unique_ptr<QX_IBackgroundCorrection, TReleaseObject> object;
    float exposure = 1.0f;
    volatile std::uint64_t sink = 0;
};

std::vector<std::vector<TRival>> TBench::Rows(std::vector<std::string>& names)
{
    std::uint16_t* const a = image.data();
    std::uint16_t* const o = output.data();
    std::uint16_t* const b = background.data();
    const std::size_t n = count;
    const std::size_t side = static_cast<std::size_t>(size);
    std::vector<std::vector<TRival>> rows;

    names.push_back("apply in place");
    rows.push_back({{"library", [this] { Apply(nullptr); }},
                    {"literal", [=] { Literal::Subtract(a, a, b, n); }},
                    {"opencv", [=] { openCv.Subtract(a, a, b); }},
                    {"limit", [=] { Limits::ReadTwoWriteFirst(a, b, n); }}});
    names.push_back("apply into output");
    rows.push_back({{"library", [=] { Apply(o); }},
                    {"literal", [=] { Literal::Subtract(o, a, b, n); }},
                    {"opencv", [=] { openCv.Subtract(o, a, b); }},
                    {"limit", [=] { Limits::ReadTwoWriteThird(o, a, b, n); }}});
    names.push_back("setting change");
    rows.push_back({{"library", [this] { ChangeSetting(); }},
                    {"literal",
                     [=] {
                         const std::unique_ptr<std::uint16_t[]> scaled(new std::uint16_t[n]);
                         exposure = exposure > 1.25f ? 0.75f : 1.3f;
                         Literal::CopyAndScale(scaled.get(), b, n, exposure);
                     }},
                    {"opencv",
                     [=] {
                         exposure = exposure > 1.25f ? 0.75f : 1.3f;
                         openCv.Scale(o, b, static_cast<double>(exposure));
                     }},
                    {"limit", [=] { Limits::Copy(o, b, n); }}});
    names.push_back("average of 10");
    const auto scratch = std::make_shared<std::vector<float>>(Kernels::AverageScratchLength(n));
    rows.push_back({{"library", [=] { Kernels::Average(o, frames.data(), kFrameCount, n, scratch->data()); }},
                    {"literal", [=] { Literal::Average(o, frames.data(), kFrameCount, n); }},
                    {"opencv", [=] { openCv.Average(o, frames.data(), kFrameCount); }},
                    {"limit", [=] { sink = Limits::ReadFrames(frames.data(), kFrameCount, n); }}});
    names.push_back("median");
    const auto lines = std::make_shared<std::vector<std::uint16_t>>(Kernels::MedianScratchLength(side));
    rows.push_back({{"library", [=] { Kernels::Median3x3(a, side, side, lines->data()); }},
                    {"literal", [=] { Literal::Median(a, side, side); }},
                    {"opencv", [=] { openCv.Median(o, a); }},
                    {"limit", [=] { Limits::ReadWriteInPlace(a, n); }}});
    names.push_back("add correction");
    rows.push_back({{"library",
                     [=] {
                         Check(object->AddCorrection("new", const_cast<const unsigned short**>(frames.data()),
                                                     kFrameCount, size, size, 1.0f, 100.0f));
                         Check(object->DeleteCorrection("new"));
                     }},
                    {"literal",
                     [=] {
                         Literal::Average(o, frames.data(), kFrameCount, n);
                         Literal::Median(o, side, side);
                     }},
                    {"opencv",
                     [=] {
                         openCv.Average(a, frames.data(), kFrameCount);
                         openCv.Median(o, a);
                     }},
                    {"limit", [=] { sink = Limits::ReadFrames(frames.data(), kFrameCount, n); }}});
    names.push_back("statistics");
    rows.push_back({{"library",
                     [=] {
                         std::uint16_t least = 0, greatest = 0, mean = 0;
                         Check(object->GetScaledCorrectionStatistics(&least, &greatest, &mean));
                         sink = mean;
                     }},
                    {"literal",
                     [=] {
                         std::uint16_t least = 0, greatest = 0;
                         sink = static_cast<std::uint64_t>(Literal::Statistics(b, n, least, greatest)) + greatest;
                     }},
                    {"opencv", [=] { sink = static_cast<std::uint64_t>(openCv.Statistics(b)); }},
                    {"limit", [=] { sink = Limits::ReadFrames(&b, 1, n); }}});
    return rows;
}

double Median(const std::vector<TTiming>& timings, const char* rival)
{
    for (const TTiming& timing : timings) {
        if (timing.rival == rival) {
            return timing.medianSeconds;
        }
    }
    return 0.0;
}

void Print(nlohmann::json& report, const std::string& operation, int size, const std::vector<TTiming>& timings)
{
    const double library = Median(timings, "library");
    const TTiming& own = timings.front();
    std::printf("%-20s %5d  %11.3f us [%.3f - %.3f]", operation.c_str(), size, library * 1e6, own.leastSeconds * 1e6,
                own.greatestSeconds * 1e6);
    nlohmann::json entry = {{"operation", operation}, {"size", size}};
    for (const TTiming& timing : timings) {
        entry["seconds"][timing.rival] = {timing.medianSeconds, timing.leastSeconds, timing.greatestSeconds};
        if (timing.rival != "library") {
            entry["ratio"][timing.rival] = timing.medianSeconds / library;
            std::printf("  %s %6.2f", timing.rival.c_str(), timing.medianSeconds / library);
        }
    }
    std::printf("\n");
    std::fflush(stdout);
    report["rows"].push_back(entry);
}

} // namespace

int main(int argc, char** argv)
{
    int rounds = 15;
    int onlySize = 0;
    std::string jsonPath;
    std::string onlyOperation;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--once") == 0) {
            rounds = 1;
        } else if (std::strcmp(argv[i], "--rounds") == 0 && i + 1 < argc) {
            rounds = std::max(1, std::atoi(argv[++i]));
        } else if (std::strcmp(argv[i], "--json") == 0 && i + 1 < argc) {
            jsonPath = argv[++i];
        } else if (std::strcmp(argv[i], "--size") == 0 && i + 1 < argc) {
            onlySize = std::atoi(argv[++i]);
        } else if (std::strcmp(argv[i], "--operation") == 0 && i + 1 < argc) {
            onlyOperation = argv[++i];
        } else {
            std::fprintf(stderr,
                         "usage: qxbc_compare [--once] [--rounds N] [--json FILE] [--size N] [--operation TEXT]\n");
            return 2;
        }
    }
    nlohmann::json report = {{"rounds", rounds}, {"compiler", __VERSION__}};
    std::printf(
        "operation             size      median      [spread]       ratio of each rival's time to the library's\n");
    const std::vector<int> sizes = rounds > 1 ? std::vector<int>{64, 512, 2048, 4096} : std::vector<int>{64, 100};
    for (const int size : sizes) {
        if (onlySize != 0 && size != onlySize) {
            continue;
        }
        TBench bench(size);
        std::vector<std::string> names;
        const std::vector<std::vector<TRival>> rows = bench.Rows(names);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            if (names[row].find(onlyOperation) != std::string::npos) {
                Print(report, names[row], size, Measure(rows[row], rounds));
            }
        }
    }
    const int corrections = rounds > 1 ? 100 : 2;
    for (const int size : rounds > 1 ? std::vector<int>{512, 2048} : std::vector<int>{16}) {
        if (!onlyOperation.empty() || (onlySize != 0 && size != onlySize)) {
            continue;
        }
        for (const auto& [operation, timings] : MeasureFiles(corrections, size, rounds > 1 ? 5 : 1)) {
            Print(report, operation, size, timings);
        }
    }
    if (!jsonPath.empty()) {
        std::ofstream(jsonPath) << report.dump(1) << '\n';
    }
    return 0;
}
