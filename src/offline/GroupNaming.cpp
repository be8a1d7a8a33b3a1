#include "offline/GroupNaming.h"

#include "QX_BackgroundCorrection.h"

#include "offline/TextHelpers.h"

using QX_KRLSDK::kFirstArgumentInvalid;
using QX_KRLSDK::kSuccess;

namespace GroupNaming {

namespace {

// The token that begins at or behind `offset`, which moves behind it. Empty at the end.
std::string NextToken(const std::string& text, const char* delimiters, std::string::size_type& offset)
{
    const std::string::size_type begin = text.find_first_not_of(delimiters, offset);
    if (begin == std::string::npos) {
        offset = text.size();
        return std::string();
    }
    const std::string::size_type end = text.find_first_of(delimiters, begin);
    offset = end == std::string::npos ? text.size() : end;
    return text.substr(begin, offset - begin);
}

// Appends the value of each name in `list`; 513 at the first that has none.
unsigned int FindValues(const TDualString& list, const TTextList& names, const char* delimiters, TTextList& values)
{
    for (const TDualString& name : names) {
        const TDualString value = FindValueForName(list, name, delimiters);
        if (value.IsEmpty()) {
            return kFirstArgumentInvalid;
        }
        values.push_back(value);
    }
    return kSuccess;
}

} // namespace

TDualString FindValueForName(const TDualString& list, const TDualString& name, const char* delimiters)
{
    const std::string& text = list.Narrow();
    std::string::size_type offset = 0;
    for (;;) {
        const std::string pairName = NextToken(text, delimiters, offset);
        if (pairName.empty()) {
            return TDualString();
        }
        const std::string pairValue = NextToken(text, delimiters, offset);
        if (pairName == name.Narrow()) {
            return TDualString(pairValue);
        }
    }
}

unsigned int ExtractGroupValues(const TDualString& key, const TTextList& names, TTextList& values)
{
    return FindValues(key, names, ",", values);
}

unsigned int BuildGroupFileName(const TDualString& base, const TTextList& names, const TTextList& values,
                                TDualString& path)
{
    path = TDualString();
    if (values.size() != names.size()) {
        return kFirstArgumentInvalid;
    }
    std::string text = base.Narrow();
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += "_" + names[i].Narrow() + "_" + values[i].Narrow();
    }
    path = TDualString(text);
    return kSuccess;
}

unsigned int ParseGroupValuesFromFileName(const TDualString& path, const TDualString& base, const TTextList& names,
                                          TTextList& values)
{
    values.clear();
    std::string rest = path.Narrow();
    const int position = base.IsEmpty() ? 0 : TextHelpers::FindText(path, base);
    if (position > 0) {
        rest.erase(0, static_cast<std::string::size_type>(position) - 1 + base.Narrow().size());
    }
    TDualString fileName;
    TextHelpers::SplitPath(TDualString(rest), false, fileName);
    return FindValues(fileName, names, "_", values);
}

bool IsGroupFileOf(const TDualString& candidate, const TTextList& names, const TDualString& base)
{
    if (candidate == base) {
        return true;
    }
    std::string rest = candidate.Narrow();
    if (rest.compare(0, base.Narrow().size(), base.Narrow()) != 0) {
        return false;
    }
    rest.erase(0, base.Narrow().size());
    for (const TDualString& name : names) {
        const std::string::size_type underscore = rest.find('_');
        if (underscore == std::string::npos) {
            return false;
        }
        rest.erase(0, underscore + 1);
        const std::string start = name.Narrow() + "_";
        if (rest.compare(0, start.size(), start) != 0) {
            return false;
        }
        rest.erase(0, start.size());
    }
    return rest.find('_') == std::string::npos;
}

bool BaseOfGroupFileName(const TDualString& path, const TTextList& names, TDualString& base)
{
    const std::string::size_type offset = path.Narrow().find("_" + names.front().Narrow() + "_");
    if (offset == std::string::npos) {
        return false;
    }
    base = TDualString(path.Narrow().substr(0, offset));
    return true;
}

unsigned int TBuckets::BucketKeysByGroup(const TDualString& key, const TTextList& names)
{
    TTextList values;
    const unsigned int result = ExtractGroupValues(key, names, values);
    if (result != kSuccess) {
        return result;
    }
    std::string joined;
    for (const TDualString& value : values) {
        joined += value.Narrow() + ",";
    }
    const auto inserted = bucketOfValues.emplace(joined, buckets.size());
    if (inserted.second) {
        buckets.push_back({values, {}});
    }
    buckets[inserted.first->second].keys.push_back(key);
    return kSuccess;
}

} // namespace GroupNaming
