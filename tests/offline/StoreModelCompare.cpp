// What a host sees of the library's objects and of the model's.
#include "offline/StoreModelWorld.h"

#include <sstream>

using FileBytes::TBytes;

namespace {

// What a host sees of a store, as text: the same lines for both.
struct TState {
    std::ostringstream lines;

    template <typename TValue> void Line(const char* what, const TValue& value)
    {
        lines << what << ": " << value << '\n';
    }
    void Line(const char* what, unsigned int result, const std::vector<double>& values)
    {
        lines << what << ": " << result;
        for (const double value : values) {
            lines << ' ' << value;
        }
        lines << '\n';
    }
};

// Every NaN is itself.
std::vector<double> BitsOf(float exposure, float intensity)
{
    return {static_cast<double>(Literal::Bits(exposure)), static_cast<double>(Literal::Bits(intensity))};
}

std::string RealState(TTestStore& store, unsigned int bits)
{
    TState state;
    state.Line("text", store.Text());
    state.Line("count", store->GetNumberOfCorrections());
    for (const std::string& key : store.Keys()) {
        state.Line("key", key);
    }
    state.Line("key behind the last", store->GetCorrectionKey(store->GetNumberOfCorrections()) == nullptr);
    state.Line("active", store.ActiveKey());
    state.Line("level", store->GetCorrectionLevel());
    float exposure = 99.0f;
    float intensity = 99.0f;
    unsigned int result = store->GetExposureAndIntensity(&exposure, &intensity);
    state.Line("exposure", result, BitsOf(exposure, intensity));
    int region[4] = {99, 99, 99, 99};
    result = store->GetRegion(&region[0], &region[1], &region[2], &region[3]);
    state.Line("region", result, std::vector<double>(region, region + 4));
    if ((bits & 1) != 0) {
        exposure = intensity = 99.0f;
        result = store->GetReferenceExposureAndIntensity(&exposure, &intensity);
        state.Line("reference", result, BitsOf(exposure, intensity));
        unsigned short statistics[3] = {99, 99, 99};
        result = store->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]);
        state.Line("statistics", result, std::vector<double>(statistics, statistics + 3));
        statistics[0] = statistics[1] = statistics[2] = 99;
        result = store->GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]);
        state.Line("scaled", result, std::vector<double>(statistics, statistics + 3));
        state.Line("text then", store.Text());
    }
    if ((bits & 2) != 0) {
        state.Line("message", store.InnerText());
        state.Line("message again", store.InnerText());
    }
    return state.lines.str();
}

std::vector<double> Values(const Literal::TStatistics& statistics)
{
    return {double(statistics.minimum), double(statistics.maximum), double(statistics.average)};
}

std::string ModelState(Literal::TStore& store, unsigned int bits)
{
    TState state;
    state.Line("text", store.message);
    state.Line("count", store.keys.size());
    for (const std::string& key : store.keys) {
        state.Line("key", key);
    }
    state.Line("key behind the last", !store.GetCorrectionKey(store.keys.size()).has_value());
    state.Line("active", store.GetActiveCorrectionKey().value_or("(null)"));
    state.Line("level", store.level);
    float exposure = 99.0f;
    float intensity = 99.0f;
    unsigned int result = store.GetExposureAndIntensity(exposure, intensity);
    state.Line("exposure", result, BitsOf(exposure, intensity));
    std::vector<int> region(4, 99);
    result = store.GetRegion(region);
    state.Line("region", result, std::vector<double>(region.begin(), region.end()));
    if ((bits & 1) != 0) {
        exposure = intensity = 99.0f;
        result = store.GetReferenceExposureAndIntensity(exposure, intensity);
        state.Line("reference", result, BitsOf(exposure, intensity));
        Literal::TStatistics statistics{99, 99, 99};
        result = store.GetCorrectionStatistics(statistics);
        state.Line("statistics", result, Values(statistics));
        statistics = {99, 99, 99};
        result = store.GetScaledCorrectionStatistics(statistics);
        state.Line("scaled", result, Values(statistics));
        state.Line("text then", store.message);
    }
    if ((bits & 2) != 0) {
        state.Line("message", store.GetLastErrorMessage().value_or("(null)"));
        state.Line("message again", store.GetLastErrorMessage().value_or("(null)"));
    }
    return state.lines.str();
}

} // namespace

std::string Differing(const std::string& what, const std::string& real, const std::string& model)
{
    return real == model ? std::string()
                         : what + " differs.\nThe library gives\n" + real + "\nand the model\n" + model + "\n";
}

std::string TStoreModelWorld::CompareState(int store, unsigned int bits)
{
    const std::size_t i = static_cast<std::size_t>(store);
    const std::string real = RealState(*stores[i], bits);
    const std::string model = ModelState(*models[i], bits);
    return Differing("State of store " + std::to_string(store), real, model);
}

std::string TStoreModelWorld::CompareDisk() const
{
    std::map<std::string, TBytes> expected;
    for (const auto& [path, node] : disk.nodes) {
        expected[path] = node.value_or(TBytes());
    }
    const std::map<std::string, TBytes> actual = folder.Files();
    if (actual == expected) {
        return std::string();
    }
    std::string difference;
    for (const auto& [path, bytes] : expected) {
        const auto found = actual.find(path);
        difference += found == actual.end()    ? path + " is missing\n"
                      : found->second == bytes ? std::string()
                                               : path + ": " + FileBytes::Difference(found->second, bytes) + "\n";
    }
    for (const auto& file : actual) {
        difference += expected.count(file.first) == 0 ? file.first + " should not be there\n" : std::string();
    }
    return "Files differ:\n" + difference;
}
