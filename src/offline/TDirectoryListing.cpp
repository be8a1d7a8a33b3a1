#include "offline/TDirectoryListing.h"

#include "platform/FolderSearch.h"

#include <algorithm>
#include <cstddef>

TWidePath::TWidePath(const std::u16string& path) : forward(path), backslash(path)
{
    std::replace(forward.begin(), forward.end(), u'\\', u'/');
    std::replace(backslash.begin(), backslash.end(), u'/', u'\\');
}

void TWidePath::EnsureTrailingSeparator()
{
    if (!forward.empty() && forward.back() != u'/') {
        *this = *this + u"/";
    }
}

void ListDirectory(TDirectoryListing& listing)
{
    TWidePath folder = listing.folder;
    folder.EnsureTrailingSeparator();
    const std::u16string specification = (folder + u"*").BackslashForm();

    int count = 0;
    for (Platform::TFolderSearch search(specification); search.HasName(); search.Next()) {
        ++count;
    }
    listing.names.clear();
    listing.count = count;
    if (count == 0) {
        return;
    }
    listing.names.reserve(static_cast<std::size_t>(count));
    for (Platform::TFolderSearch search(specification); search.HasName(); search.Next()) {
        listing.names.emplace_back(search.Name());
    }
    listing.count = static_cast<int>(listing.names.size());
}

void FreeDirectoryListing(TDirectoryListing& listing)
{
    listing = TDirectoryListing();
}
