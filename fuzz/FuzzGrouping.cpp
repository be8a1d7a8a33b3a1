// The bytes are texts, one a line: a path, a base, grouping names separated by ";", values separated by ";", and then
// keys. They go through every helper that the store takes keys and file names apart with.
#include "Check.h"
#include "LimitedMemory.h"

#include "boundary/TMessageBuffer.h"
#include "boundary/TZRException.h"
#include "model/LiteralStore.h"
#include "offline/GroupFiles.h"
#include "offline/GroupNaming.h"
#include "offline/TDirectoryListing.h"
#include "offline/TextHelpers.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>

namespace {

using TTexts = std::vector<std::string>;

constexpr std::size_t kMostKeys = 6;

TTexts Parts(const std::string& text, char separator)
{
    TTexts parts;
    std::string::size_type begin = 0;
    for (;;) {
        const std::string::size_type end = text.find(separator, begin);
        parts.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
        if (end == std::string::npos) {
            return parts;
        }
        begin = end + 1;
    }
}

TTexts WithoutEmpty(TTexts texts)
{
    texts.erase(std::remove(texts.begin(), texts.end(), std::string()), texts.end());
    return texts;
}

bool AnyContains(const TTexts& texts, const char* characters)
{
    return std::any_of(texts.begin(), texts.end(),
                       [=](const std::string& text) { return text.find_first_of(characters) != std::string::npos; });
}

bool AreDistinct(const TTexts& texts)
{
    return std::set<std::string>(texts.begin(), texts.end()).size() == texts.size();
}

void CheckKey(const std::string& key, const TTexts& names, const TTextList& dualNames)
{
    TTextList values;
    const unsigned int result = GroupNaming::ExtractGroupValues(key, dualNames, values);
    FUZZ_CHECK(result == 0 || result == 513);
    FUZZ_CHECK(result == 0 ? values.size() == names.size() : values.size() < names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string expected = Literal::FindValueForName(key, names[i], ',');
        FUZZ_CHECK_EQUAL(GroupNaming::FindValueForName(key, dualNames[i], ",").Narrow(), expected);
        FUZZ_CHECK(i < values.size() ? values[i].Narrow() == expected : i > values.size() || expected.empty());
    }
    for (const TDualString& value : values) {
        FUZZ_CHECK(!value.IsEmpty() && value.Narrow().find(',') == std::string::npos);
    }
}

void CheckBuckets(const TTexts& keys, const TTextList& names)
{
    GroupNaming::TBuckets buckets;
    std::vector<std::pair<TTextList, TTexts>> expected;
    for (const std::string& key : keys) {
        TTextList values;
        const unsigned int result = GroupNaming::ExtractGroupValues(key, names, values);
        FUZZ_CHECK_EQUAL(buckets.BucketKeysByGroup(key, names), result);
        if (result != 0) {
            continue;
        }
        auto bucket = std::find_if(expected.begin(), expected.end(),
                                   [&values](const auto& candidate) { return candidate.first == values; });
        if (bucket == expected.end()) {
            bucket = expected.insert(expected.end(), {values, {}});
        }
        bucket->second.push_back(key);
    }
    FUZZ_CHECK_EQUAL(buckets.All().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        FUZZ_CHECK(buckets.All()[i].values == expected[i].first);
        FUZZ_CHECK(GroupFiles::NarrowTexts(buckets.All()[i].keys) == expected[i].second);
    }
}

// A file name is made of what it is made of, and gives that back when nothing in it looks like a delimiter.
void CheckFileName(const TDualString& dualBase, const TTexts& names, const TTextList& dualNames, const TTexts& values)
{
    const std::string& base = dualBase.Narrow();
    const TTextList dualValues = GroupFiles::DualTexts(values);
    TDualString path("left over");
    const unsigned int result = GroupNaming::BuildGroupFileName(dualBase, dualNames, dualValues, path);
    if (names.size() != values.size()) {
        FUZZ_CHECK(result == 513 && path.IsEmpty());
        return;
    }
    FUZZ_CHECK_EQUAL(result, 0u);
    std::string expected = base;
    for (std::size_t i = 0; i < names.size(); ++i) {
        expected += "_" + names[i] + "_" + values[i];
    }
    FUZZ_CHECK_EQUAL(path.Narrow(), expected);
    if (!AnyContains(values, "_")) {
        FUZZ_CHECK(GroupNaming::IsGroupFileOf(path, dualNames, dualBase));
    }
    if (!AnyContains(values, "_\\") && !AnyContains(names, "_\\") && AreDistinct(names)) {
        TTextList parsed = {"left over"};
        // A base that is left in front, because it is empty, must not look like the first pair.
        FUZZ_CHECK_EQUAL(GroupNaming::ParseGroupValuesFromFileName(path, dualBase, dualNames, parsed), 0u);
        FUZZ_CHECK(parsed == dualValues);
    }
    if (!names.empty()) {
        TDualString found;
        FUZZ_CHECK(GroupNaming::BaseOfGroupFileName(path, dualNames, found));
        const std::string first = "_" + names.front() + "_";
        FUZZ_CHECK_EQUAL(found.Narrow(), expected.substr(0, expected.find(first)));
        FUZZ_CHECK(found.Narrow().size() <= base.size());
    }
}

void CheckForeignFileName(const TDualString& dualPath, const TDualString& dualBase, const TTexts& names,
                          const TTextList& dualNames)
{
    const std::string& path = dualPath.Narrow();
    const std::string& base = dualBase.Narrow();
    FUZZ_CHECK_EQUAL(GroupNaming::IsGroupFileOf(dualPath, dualNames, dualBase),
                     Literal::IsGroupFileOf(path, names, base));
    TTextList values = {"left over"};
    const unsigned int result = GroupNaming::ParseGroupValuesFromFileName(dualPath, dualBase, dualNames, values);
    FUZZ_CHECK(result == 0 ? values.size() == names.size() : result == 513 && values.size() < names.size());
    for (const TDualString& value : values) {
        FUZZ_CHECK(!value.IsEmpty() && value.Narrow().find_first_of("_\\") == std::string::npos);
    }
    for (const std::string& name : names) {
        FUZZ_CHECK_EQUAL(GroupNaming::FindValueForName(dualPath, name, "_").Narrow(),
                         Literal::FindValueForName(path, name, '_'));
    }
    TDualString found("left over");
    if (!names.empty() && GroupNaming::BaseOfGroupFileName(dualPath, dualNames, found)) {
        const std::string first = "_" + names.front() + "_";
        FUZZ_CHECK_EQUAL(path.compare(0, found.Narrow().size() + first.size(), found.Narrow() + first), 0);
    }
}

void CheckText(const std::string& text, const std::string& sought)
{
    const int position = TextHelpers::FindText(text, sought);
    FUZZ_CHECK_EQUAL(position, static_cast<int>(text.find(sought) + 1));
    const int last = TextHelpers::FindLastOf(text, sought);
    FUZZ_CHECK_EQUAL(last, static_cast<int>(text.find_last_of(sought) + 1));
    if (position > 0) {
        const int length = static_cast<int>(sought.size());
        FUZZ_CHECK_EQUAL(TextHelpers::MidText(text, position, length).Narrow(), sought);
    }
    const int size = static_cast<int>(text.size());
    for (const int start : {-1, 0, 1, size, size + 1}) {
        const std::string rest = TextHelpers::MidText(text, start, -1).Narrow();
        FUZZ_CHECK_EQUAL(rest, start < 1 ? std::string() : text.substr(static_cast<std::size_t>(start) - 1));
    }
    bool refused = false;
    try {
        TextHelpers::MidText(text, size + 2, 1);
    } catch (const std::out_of_range&) {
        refused = true;
    }
    FUZZ_CHECK(refused);

    TDualString folder;
    TDualString file;
    const int separator = TextHelpers::SplitPath(text, true, folder);
    FUZZ_CHECK_EQUAL(TextHelpers::SplitPath(text, false, file), separator);
    FUZZ_CHECK_EQUAL((folder + file).Narrow(), text);
    FUZZ_CHECK_EQUAL(folder.Narrow().size(), static_cast<std::size_t>(separator));
    FUZZ_CHECK(file.Narrow().find('\\') == std::string::npos && (folder.IsEmpty() || folder.Narrow().back() == '\\'));
}

void CheckWide(const std::string& text)
{
    TDualString dual(text);
    const std::u16string wide = dual.Wide();
    FUZZ_CHECK_EQUAL(wide.size(), text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        FUZZ_CHECK((wide[i] & 0xFF) == static_cast<unsigned char>(text[i]));
        FUZZ_CHECK(wide[i] < 0x80 || wide[i] >= 0xFF80);
    }
    FUZZ_CHECK_EQUAL(TDualString::FromWide(wide.c_str()).Narrow(), text);

    TWidePath path(wide);
    FUZZ_CHECK(path.ForwardForm().size() == wide.size() && path.BackslashForm().size() == wide.size());
    FUZZ_CHECK(path.ForwardForm().find(u'\\') == std::u16string::npos);
    FUZZ_CHECK(path.BackslashForm().find(u'/') == std::u16string::npos);
    FUZZ_CHECK(TWidePath(path.BackslashForm()).ForwardForm() == path.ForwardForm());
    path.EnsureTrailingSeparator();
    const std::u16string ended = path.ForwardForm();
    FUZZ_CHECK(text.empty() ? ended.empty() : ended.back() == u'/');
    path.EnsureTrailingSeparator();
    FUZZ_CHECK(path.ForwardForm() == ended);
}

void CheckNarrowText(const std::string& text, const std::string& other)
{
    const int order = Platform::CompareIgnoringCase(text.c_str(), other.c_str());
    const int reversed = Platform::CompareIgnoringCase(other.c_str(), text.c_str());
    FUZZ_CHECK((order < 0) == (reversed > 0) && (order == 0) == (reversed == 0));
    FUZZ_CHECK_EQUAL(order == 0, Literal::Lower(text) == Literal::Lower(other));

    TObjectMessageBuffer message;
    message.Format("'%s'", text.c_str());
    FUZZ_CHECK_EQUAL(std::string(message.Text()), ("'" + text + "'").substr(0, 256));
    message.Format("%s", message.Text());
    FUZZ_CHECK_EQUAL(std::string(message.Text()), ("'" + text + "'").substr(0, 256));
    const TZRException error("'%s'", text.c_str());
    FUZZ_CHECK_EQUAL(std::string(error.what()), ("'" + text + "'").substr(0, 512));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const TLimitedMemory limitedMemory;
    std::string text(reinterpret_cast<const char*>(data), size);
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end()); // no text of a host holds one
    TTexts lines = Parts(text, '\n');
    lines.resize(std::max<std::size_t>(lines.size(), 4));
    lines.resize(std::min(lines.size(), 4 + kMostKeys));
    const std::string path = lines[0];
    const std::string base = lines[1];
    const TTexts names = WithoutEmpty(Parts(lines[2], ';'));
    const TTexts values = WithoutEmpty(Parts(lines[3], ';'));
    const TTexts keys(lines.begin() + 4, lines.end());
    const TTextList dualNames = GroupFiles::DualTexts(names);

    CheckText(path, base);
    CheckWide(path);
    CheckNarrowText(path, base);
    CheckForeignFileName(path, base, names, dualNames);
    CheckFileName(base, names, dualNames, values);
    for (const std::string& key : keys) {
        CheckKey(key, names, dualNames);
    }
    CheckBuckets(keys, dualNames);
    return 0;
}
