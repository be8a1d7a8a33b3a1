#include "offline/GroupFiles.h"

#include "offline/GroupNaming.h"
#include "offline/TDirectoryListing.h"
#include "offline/TextHelpers.h"

namespace GroupFiles {

void ListGroupFiles(const TTextList& names, const TDualString& base, TTextList& paths)
{
    TDualString folder;
    TextHelpers::SplitPath(base, true, folder);
    TDirectoryListing listing;
    listing.folder = TWidePath(folder.Wide());
    ListDirectory(listing);
    for (const std::u16string& name : listing.names) {
        const TDualString candidate = TDualString(folder.Narrow()) + TDualString::FromWide(name.c_str());
        if (GroupNaming::IsGroupFileOf(candidate, names, base)) {
            paths.push_back(candidate);
        }
    }
    FreeDirectoryListing(listing);
}

std::vector<std::string> NarrowTexts(const TTextList& texts)
{
    std::vector<std::string> narrow;
    narrow.reserve(texts.size());
    for (const TDualString& text : texts) {
        narrow.push_back(text.Narrow());
    }
    return narrow;
}

TTextList DualTexts(const std::vector<std::string>& texts)
{
    return TTextList(texts.begin(), texts.end());
}

} // namespace GroupFiles
