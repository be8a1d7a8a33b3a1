#include "HostChecks.h"

#include "Check.h"

#include "model/LiteralProcessor.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

using QX_KRLSDK::QX_IBackgroundCorrection;

namespace HostChecks {

namespace {

// Calls a getter twice, with its outputs filled in advance in two ways. What it wrote is then the same, what it left
// alone is still as filled, and everything else came from nowhere. Gives whether it wrote.
template <typename TValue, std::size_t count, typename TGetter>
bool Written(unsigned int& code, TValue (&values)[count], TGetter getter)
{
    TValue other[count];
    std::memset(values, 0x5A, sizeof values);
    std::memset(other, 0xA5, sizeof other);
    code = getter(values);
    FUZZ_CHECK_EQUAL(getter(other), code);
    TValue first[count];
    TValue second[count];
    std::memset(first, 0x5A, sizeof first);
    std::memset(second, 0xA5, sizeof second);
    const bool untouched =
        std::memcmp(values, first, sizeof values) == 0 && std::memcmp(other, second, sizeof other) == 0;
    FUZZ_CHECK(untouched || std::memcmp(values, other, sizeof values) == 0);
    return !untouched;
}

struct TIgnoringCase {
    bool operator()(const std::string& left, const std::string& right) const
    {
        return Literal::Lower(left) < Literal::Lower(right);
    }
};

bool IsOneOf(unsigned int code, std::initializer_list<unsigned int> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

void CheckKeys(QX_IBackgroundCorrection& object, TKind kind)
{
    const unsigned int count = object.GetNumberOfCorrections();
    const char* const active = object.GetActiveCorrectionKey();
    std::set<std::string, TIgnoringCase> unique;
    bool activeIsListed = active == nullptr;
    for (unsigned int i = 0; i < count; ++i) {
        const char* const key = object.GetCorrectionKey(i);
        FUZZ_CHECK(key != nullptr && key[0] != '\0');
        activeIsListed = activeIsListed || key == active;
        if (kind == TKind::kProcessor) {
            FUZZ_CHECK(std::strlen(key) <= QX_KRLSDK::kMaximumKeyLength);
            FUZZ_CHECK(unique.insert(key).second);
        }
    }
    FUZZ_CHECK(object.GetCorrectionKey(count) == nullptr);
    FUZZ_CHECK(object.GetCorrectionKey(0xFFFFFFFFu) == nullptr);
    if (kind == TKind::kProcessor) { // a store keeps keys of its own
        FUZZ_CHECK(activeIsListed);
    } else if (active != nullptr) {
        FUZZ_CHECK(active[0] != '\0' && std::strlen(active) <= QX_KRLSDK::kMaximumKeyLength);
    }
}

void CheckSettings(QX_IBackgroundCorrection& object, TKind kind)
{
    unsigned int code = 0;
    float exposure[2];
    FUZZ_CHECK(Written(code, exposure, [&](float* v) { return object.GetExposureAndIntensity(v, v + 1); }) ==
               (code == 0));
    FUZZ_CHECK(IsOneOf(code, {0, 770}));
    const bool headerOnly = code == 770;
    const bool active = object.GetActiveCorrectionKey() != nullptr;
    const bool written =
        Written(code, exposure, [&](float* v) { return object.GetReferenceExposureAndIntensity(v, v + 1); });
    FUZZ_CHECK_EQUAL(written, active);
    const unsigned int noGroup = kind == TKind::kStore ? 1280 : 0;
    FUZZ_CHECK(IsOneOf(code, {0, noGroup}));

    int region[4];
    FUZZ_CHECK(Written(code, region, [&](int* v) { return object.GetRegion(v, v + 1, v + 2, v + 3); }) == (code == 0));
    FUZZ_CHECK_EQUAL(code, headerOnly ? 770u : 0u);
    if (kind == TKind::kProcessor) {
        FUZZ_CHECK(headerOnly || (region[0] >= 0 && region[1] >= 0 && region[2] >= 1 && region[3] >= 1));
        FUZZ_CHECK(object.GetCorrectionLevel() >= 0 && object.GetCorrectionLevel() <= 100);
    }

    unsigned short statistics[3];
    for (const bool scaled : {false, true}) {
        const bool given = Written(code, statistics, [&](unsigned short* v) {
            return scaled ? object.GetScaledCorrectionStatistics(v, v + 1, v + 2)
                          : object.GetCorrectionStatistics(v, v + 1, v + 2);
        });
        FUZZ_CHECK(IsOneOf(code, {headerOnly ? 770u : 0u, noGroup}));
        FUZZ_CHECK(!given || (active && code == 0));
        FUZZ_CHECK(!given || (statistics[0] <= statistics[2] && statistics[2] <= statistics[1]));
    }
}

std::vector<std::uint16_t> Image(std::size_t count)
{
    std::vector<std::uint16_t> image(count);
    std::uint32_t state = 12345;
    for (std::uint16_t& pixel : image) {
        state = state * 1664525 + 1013904223;
        pixel = static_cast<std::uint16_t>(state >> 16);
    }
    return image;
}

class TComparingDelegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    explicit TComparingDelegate(const std::vector<std::uint16_t>& expectedBackground) : expected(expectedBackground) {}

    unsigned int SubtractInPlace(unsigned short*, const unsigned short* background, int width, int height, bool,
                                 bool) override
    {
        return Compare(background, width, height);
    }
    unsigned int SubtractInto(unsigned short*, const unsigned short*, const unsigned short* background, int width,
                              int height, bool, bool) override
    {
        return Compare(background, width, height);
    }
    unsigned int ProcessInPlace(unsigned short*, int, int) override { return 12; }

private:
    unsigned int Compare(const unsigned short* background, int width, int height)
    {
        FUZZ_CHECK(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) == expected.size());
        FUZZ_CHECK(std::equal(expected.begin(), expected.end(), background));
        return 11;
    }

    const std::vector<std::uint16_t>& expected;
};

// The same pixels, the same background, every way to ask for the difference.
void CheckAgainst(QX_IBackgroundCorrection& object, const std::vector<std::uint16_t>& background, bool active)
{
    const int count = static_cast<int>(background.size());
    const std::vector<std::uint16_t> image = Image(background.size());
    std::vector<std::uint16_t> expected = image;
    Literal::Subtract(expected.data(), image.data(), background.data(), image.size());
    std::vector<std::uint16_t> changed = image;
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(changed.data(), count, nullptr, -7, nullptr, false, true, true), 0u);
    FUZZ_CHECK(changed == expected);
    std::vector<std::uint16_t> output(image.size(), 4711);
    changed = image;
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(changed.data(), count, output.data(), count, nullptr, false, false, false),
                     0u);
    FUZZ_CHECK(changed == image && output == expected);
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(changed.data(), count, changed.data(), count, nullptr, false, false, false),
                     0u);
    FUZZ_CHECK(changed == expected);

    TComparingDelegate delegate(background);
    changed = image;
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(changed.data(), count, nullptr, 0, &delegate, true, true, false),
                     active ? 11u : 12u);
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(changed.data(), count, changed.data(), count, &delegate, true, true, false),
                     active ? 11u : 12u);
    FUZZ_CHECK(changed == image);
}

} // namespace

void CheckState(QX_IBackgroundCorrection& object, TKind kind)
{
    const char* const text = object.GetLastErrorMessage();
    FUZZ_CHECK(text != nullptr || kind == TKind::kStore);
    FUZZ_CHECK(text == nullptr || std::strlen(text) <= 256);
    CheckKeys(object, kind);
    CheckSettings(object, kind);
}

std::optional<std::vector<std::uint16_t>> CheckApplication(QX_IBackgroundCorrection& object)
{
    int region[4] = {0, 0, 0, 0};
    float unused[2];
    unsigned short pixel = 99;
    const unsigned int code = object.GetRegion(&region[0], &region[1], &region[2], &region[3]);
    if (code != 0) {
        FUZZ_CHECK_EQUAL(object.ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false), 770u);
        FUZZ_CHECK(pixel == 99);
        return std::nullopt;
    }
    if (object.GetReferenceExposureAndIntensity(&unused[0], &unused[1]) == 1280) { // a store that passes images through
        unsigned short output = 0;
        const unsigned int result = object.ApplyCorrection(&pixel, 1, &output, 1, nullptr, false, false, false);
        FUZZ_CHECK((result == 0 && output == 99) || (result == 770 && output == 0));
        return std::nullopt;
    }
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(nullptr, 1, nullptr, 0, nullptr, false, false, false), 513u);
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(&pixel, 1, &pixel, 2, nullptr, false, false, false), 516u);
    FUZZ_CHECK_EQUAL(object.ApplyCorrection(&pixel, -1, nullptr, 0, nullptr, false, false, false), 514u);
    const std::int64_t pixels = std::int64_t{region[2]} * region[3];
    if (pixels > kMostPixels) {
        FUZZ_CHECK_EQUAL(object.ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false), 514u);
        return std::nullopt;
    }
    const int count = static_cast<int>(pixels);
    std::vector<std::uint16_t> white(static_cast<std::size_t>(count), 65535);
    const unsigned int result = object.ApplyCorrection(white.data(), count, nullptr, 0, nullptr, false, false, false);
    if (result != 0) {
        FUZZ_CHECK_EQUAL(result, 1024u);
        FUZZ_CHECK(std::count(white.begin(), white.end(), std::uint16_t{65535}) == count);
        return std::nullopt;
    }
    for (std::uint16_t& value : white) {
        value = static_cast<std::uint16_t>(65535 - value);
    }
    const bool active = object.GetActiveCorrectionKey() != nullptr;
    FUZZ_CHECK(active || std::count(white.begin(), white.end(), std::uint16_t{0}) == count);
    CheckAgainst(object, white, active);
    if (active) {
        unsigned short statistics[3] = {};
        FUZZ_CHECK_EQUAL(object.GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 0u);
        FUZZ_CHECK(statistics[0] == *std::min_element(white.begin(), white.end()));
        FUZZ_CHECK(statistics[1] == *std::max_element(white.begin(), white.end()));
    }
    return active ? std::optional<std::vector<std::uint16_t>>(white) : std::nullopt;
}

} // namespace HostChecks
