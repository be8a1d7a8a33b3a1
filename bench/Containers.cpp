// The list of corrections against what the standard library would offer for it: a hash table of keys with a vector
// beside it. Both hold the same entries, compare and hash keys with the same functions, and are asked in turn.
//   qxbc_containers [COUNT...]     (default 1000 10000 100000)
#include "data/TCorrectionList.h"
#include "data/containers/TextHash.h"
#include "platform/Text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

struct THashIgnoringCase {
    std::size_t operator()(std::string_view key) const noexcept
    {
        return static_cast<std::size_t>(TextHash::OfIgnoringCase(key.data(), seed));
    }
    TextHash::TSeed seed = TextHash::SeedFor(1);
};

struct TEqualIgnoringCase {
    bool operator()(std::string_view left, std::string_view right) const noexcept
    {
        return left == right || Platform::CompareIgnoringCase(left.data(), right.data()) == 0;
    }
};

// Entries by key, and their order beside it. A removal closes the gap in the order, after looking for it there: a
// position that each entry knew would have to be corrected in every entry behind.
class TStandardList {
public:
    void AddEntry(TBackgroundCorrectionEntry&& entry)
    {
        auto owned = std::make_unique<TBackgroundCorrectionEntry>(std::move(entry));
        TBackgroundCorrectionEntry* const added = owned.get();
        if (byKey.emplace(added->Key(), std::move(owned)).second) {
            ordered.push_back(added);
        }
    }
    const TBackgroundCorrectionEntry* FindEntry(const char* key) const
    {
        const auto found = byKey.find(key);
        return found != byKey.end() ? found->second.get() : nullptr;
    }
    int RemoveEntry(const char* key)
    {
        const auto found = byKey.find(key);
        if (found == byKey.end()) {
            return -1;
        }
        ordered.erase(std::find(ordered.begin(), ordered.end(), found->second.get()));
        byKey.erase(found);
        return 0;
    }
    const TBackgroundCorrectionEntry& EntryAt(std::size_t index) const { return *ordered[index]; }
    std::size_t Count() const { return ordered.size(); }

private:
    std::unordered_map<std::string_view, std::unique_ptr<TBackgroundCorrectionEntry>, THashIgnoringCase,
                       TEqualIgnoringCase>
        byKey; // keys point into the entries
    std::vector<TBackgroundCorrectionEntry*> ordered;
};

void Check(bool isRight, const char* what)
{
    if (!isRight) {
        std::fprintf(stderr, "%s went wrong\n", what);
        std::exit(2);
    }
}

std::string Key(std::size_t index)
{
    return "G,1,key," + std::to_string(static_cast<unsigned int>(index) * 2654435761u);
}

using TNanoseconds = std::map<std::string, std::vector<double>>; // per item, of all runs of an operation

template <typename TRun> void Time(TNanoseconds& nanoseconds, const char* operation, std::size_t itemCount, TRun run)
{
    const auto begin = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
    nanoseconds[operation].push_back(taken.count() / static_cast<double>(itemCount));
}

template <typename TList> void Enumerate(const TList& list)
{
    std::size_t characters = 0;
    for (std::size_t index = 0; index < list.Count(); ++index) {
        characters += std::string_view(list.EntryAt(index).Key()).size();
    }
    Check(characters >= list.Count(), "enumerating");
}

template <typename TList> void RunOnce(const std::vector<std::string>& keys, TNanoseconds& nanoseconds)
{
    std::vector<std::string> shuffled = keys;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
    const std::size_t count = keys.size();
    const std::size_t kept = count / 2; // deleting all but these leaves gaps among them
    TList list;
    Time(nanoseconds, "add", count, [&] {
        for (const std::string& key : keys) {
            TBackgroundCorrectionEntry entry;
            entry.BuildFromPixels(key.c_str(), nullptr, 1, 1, 1.0f, 100.0f);
            list.AddEntry(std::move(entry));
        }
    });
    Time(nanoseconds, "find by key", count, [&] {
        for (const std::string& key : shuffled) {
            Check(list.FindEntry(key.c_str()) != nullptr, "finding");
        }
    });
    Time(nanoseconds, "enumerate by index", count, [&] { Enumerate(list); });
    Time(nanoseconds, "delete by key, at random", count - kept, [&] {
        for (std::size_t i = kept; i < count; ++i) {
            Check(list.RemoveEntry(shuffled[i].c_str()) == 0, "deleting");
        }
    });
    Check(list.Count() == kept, "counting");
    Time(nanoseconds, "enumerate by index, half deleted", std::max<std::size_t>(kept, 1), [&] { Enumerate(list); });
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Compare(std::size_t count)
{
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < count; ++i) {
        keys.push_back(Key(i));
    }
    TNanoseconds own;
    TNanoseconds standard;
    const int repeats = count <= 1000 ? 51 : count <= 10000 ? 9 : 3;
    for (int repeat = 0; repeat < repeats; ++repeat) {
        RunOnce<TCorrectionList>(keys, own);
        RunOnce<TStandardList>(keys, standard);
    }
    for (const auto& operation : own) {
        const double ownTime = Median(operation.second);
        const double standardTime = Median(standard.at(operation.first));
        std::printf("%8zu  %-34s %10.0f %10.0f %8.2f\n", count, operation.first.c_str(), ownTime, standardTime,
                    standardTime / ownTime);
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::size_t> counts;
    for (int i = 1; i < argc; ++i) {
        counts.push_back(static_cast<std::size_t>(std::max(1, std::atoi(argv[i]))));
    }
    if (counts.empty()) {
        counts = {1000, 10000, 100000};
    }
    std::printf("%8s  %-34s %10s %10s %8s\n", "entries", "ns per entry", "own", "standard", "ratio");
    for (const std::size_t count : counts) {
        Compare(count);
    }
    return 0;
}
