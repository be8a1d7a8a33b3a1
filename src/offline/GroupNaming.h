// How the keys of corrections and the names of files tell groups. Text only: no file is touched here.
//
// A key is a comma-separated list of pairs, Name1,Value1,Name2,Value2 and so on. A group file is named after the base,
// then "_", name, "_", value for each grouping name, in the order of the names.
#ifndef OFFLINE_GROUPNAMING_H
#define OFFLINE_GROUPNAMING_H

#include "offline/TDualString.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace GroupNaming {

// The value behind `name` in a list of pairs. Runs of delimiters count as one; the first pair whose name equals `name`
// exactly decides; empty when there is none, or no value behind it.
TDualString FindValueForName(const TDualString& list, const TDualString& name, const char* delimiters);

// Appends to `values` the value of each name that a key gives, in the order of the names. 513 (no text) at the first
// name without a value.
unsigned int ExtractGroupValues(const TDualString& key, const TTextList& names, TTextList& values);

// Makes the file name of a group. 513 (no text) and an empty path unless there is one value for each name.
unsigned int BuildGroupFileName(const TDualString& base, const TTextList& names, const TTextList& values,
                                TDualString& path);

// Reads the values back out of a file name. 513 (no text) at the first name without a value: names and values that
// contain "_" or "," cannot be read back.
unsigned int ParseGroupValuesFromFileName(const TDualString& path, const TDualString& base, const TTextList& names,
                                          TTextList& values);

// Whether a path is the base itself, or the base followed by one pair for each name, in order, with no "_" in a value.
// Accepted on purpose: anything between the base and the first "_" (the base C:\cal\s claims C:\cal\store_A_1), and
// empty values.
bool IsGroupFileOf(const TDualString& candidate, const TTextList& names, const TDualString& base);

// The base that a group file's name carries: what stands before the first "_" + first name + "_". False when that does
// not occur. An occurrence in the folder part counts as well, on purpose.
bool BaseOfGroupFileName(const TDualString& path, const TTextList& names, TDualString& base);

// Keys sorted by their group's values, both in the order in which they first appear.
class TBuckets {
public:
    struct TBucket {
        TTextList values;
        TTextList keys;
    };

    // Appends a key to the bucket of its group. 513 (no text) when the key lacks a value.
    unsigned int BucketKeysByGroup(const TDualString& key, const TTextList& names);

    const std::vector<TBucket>& All() const noexcept { return buckets; }

private:
    std::vector<TBucket> buckets;
    std::map<std::string, std::size_t> bucketOfValues; // values joined by commas, which no value contains
};

} // namespace GroupNaming

#endif
