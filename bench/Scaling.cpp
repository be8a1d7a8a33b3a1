// Time per correction of every operation on the list, for a small and a large number of tiny corrections: what grows
// with the number costs more per correction in the large list.
//   qxbc_scaling [SMALL LARGE]     (default 1000 100000)
#include "QX_BackgroundCorrection.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace QX_KRLSDK;

namespace {

struct TRelease {
    void operator()(QX_IBackgroundCorrection* object) const { DeleteBackgroundCorrection(object); }
};
using TObject = std::unique_ptr<QX_IBackgroundCorrection, TRelease>;

constexpr char kFile[] = "qxbc_scaling.bin";

void Check(unsigned int code, const char* what)
{
    if (code != kSuccess) {
        std::fprintf(stderr, "%s returned %u\n", what, code);
        std::exit(2);
    }
}

std::string Key(unsigned int index)
{
    return "G,1,key," + std::to_string(index * 2654435761u);
}

void Fill(QX_IBackgroundCorrection& object, unsigned int count)
{
    const unsigned short pixel = 7;
    const unsigned short* frames[] = {&pixel};
    for (unsigned int i = 0; i < count; ++i) {
        Check(object.AddCorrection(Key(i).c_str(), frames, 1, 1, 1, 1.0f, 100.0f), "AddCorrection");
    }
}

void Enumerate(QX_IBackgroundCorrection& object)
{
    const unsigned int count = object.GetNumberOfCorrections();
    std::size_t characters = 0;
    for (unsigned int i = 0; i < count; ++i) {
        characters += std::string(object.GetCorrectionKey(i)).size();
    }
    Check(characters > 0 ? kSuccess : kOperationFailed, "enumerating the keys");
}

class TScaling {
public:
    void Run(unsigned int count);
    void Report(unsigned int small, unsigned int large) const;

private:
    void Time(const std::string& operation, unsigned int count, const std::function<void()>& run)
    {
        const auto begin = std::chrono::steady_clock::now();
        run();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        secondsPerItem[operation][count].push_back(seconds / count);
    }
    void Implementation(const std::string& name, unsigned int count, const std::function<TObject()>& make);

    double Median(const std::string& operation, unsigned int count) const
    {
        std::vector<double> seconds = secondsPerItem.at(operation).at(count);
        std::sort(seconds.begin(), seconds.end());
        return seconds[seconds.size() / 2];
    }

    std::map<std::string, std::map<unsigned int, std::vector<double>>> secondsPerItem; // of all runs
};

void TScaling::Implementation(const std::string& name, unsigned int count, const std::function<TObject()>& make)
{
    TObject object = make();
    Time(name + " add", count, [&] { Fill(*object, count); });
    Time(name + " enumerate keys", count, [&] { Enumerate(*object); });
    Time(name + " find by key", count, [&] {
        for (unsigned int i = 0; i < count; ++i) {
            Check(object->SetActiveCorrection(Key(i).c_str()), "SetActiveCorrection");
        }
        Check(object->SetActiveCorrection(nullptr), "SetActiveCorrection");
    });
    {
        TObject target = make();
        Time(name + " import N into none", count,
             [&] { Check(target->ImportCorrections(object.get(), false), "ImportCorrections"); });
        Time(name + " import N into N", count,
             [&] { Check(target->ImportCorrections(object.get(), true), "ImportCorrections"); });
    }
    Time(name + " delete by key", count, [&] {
        for (unsigned int i = 0; i < count; ++i) {
            Check(object->DeleteCorrection(Key(i * 7 % count).c_str()), "DeleteCorrection");
        }
    });
    Fill(*object, count);
    Time(name + " delete at the front", count, [&] {
        while (object->GetNumberOfCorrections() > 0) {
            Check(object->DeleteCorrection(object->GetCorrectionKey(0)), "DeleteCorrection");
        }
    });
}

void TScaling::Run(unsigned int count)
{
    Implementation("processor", count, [] { return TObject(CreateBackgroundCorrection()); });
    Implementation("store", count, [] {
        std::string name = "G";
        char* names[] = {name.data()};
        return TObject(CreateBackgroundCorrectionOffline(names, 1));
    });
    const TObject object(CreateBackgroundCorrection());
    Fill(*object, count);
    Time("processor save", count, [&] { Check(object->SaveFile(kFile), "SaveFile"); });
    Time("processor load", count, [&] { Check(object->LoadFile(kFile), "LoadFile"); });
    Time("processor load header only", count, [&] { Check(object->LoadFileHeaderOnly(kFile), "LoadFileHeaderOnly"); });
    std::remove(kFile);
}

void TScaling::Report(unsigned int small, unsigned int large) const
{
    std::printf("%-32s %14s %14s %7s\n", "ns per correction", std::to_string(small).c_str(),
                std::to_string(large).c_str(), "ratio");
    for (const auto& timed : secondsPerItem) {
        const std::string& operation = timed.first;
        const double few = Median(operation, small);
        const double many = Median(operation, large);
        std::printf("%-32s %14.0f %14.0f %7.2f\n", operation.c_str(), few * 1e9, many * 1e9, many / few);
    }
}

} // namespace

int main(int argc, char** argv)
{
    const unsigned int small = argc > 2 ? static_cast<unsigned int>(std::atoi(argv[1])) : 1000;
    const unsigned int large = argc > 2 ? static_cast<unsigned int>(std::atoi(argv[2])) : 100000;
    TScaling scaling;
    for (int repeat = 0; repeat < 5; ++repeat) {
        scaling.Run(small);
    }
    for (int repeat = 0; repeat < 3; ++repeat) {
        scaling.Run(large);
    }
    scaling.Report(small, large);
    return 0;
}
