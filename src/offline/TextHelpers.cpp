#include "offline/TextHelpers.h"

namespace TextHelpers {

namespace {
int PositionOf(std::string::size_type offset)
{
    return offset == std::string::npos ? 0 : static_cast<int>(offset) + 1;
}
} // namespace

int FindText(const TDualString& text, const TDualString& sought)
{
    return PositionOf(text.Narrow().find(sought.Narrow()));
}

int FindLastOf(const TDualString& text, const TDualString& set)
{
    return PositionOf(text.Narrow().find_last_of(set.Narrow()));
}

TDualString MidText(const TDualString& text, int start, int length)
{
    if (start < 1) {
        return TDualString();
    }
    return TDualString(text.Narrow().substr(static_cast<std::string::size_type>(start) - 1,
                                            static_cast<std::string::size_type>(length)));
}

int SplitPath(const TDualString& path, bool wantFolder, TDualString& part)
{
    const int position = FindLastOf(path, "\\");
    const std::string::size_type length = static_cast<std::string::size_type>(position);
    part = TDualString(wantFolder ? path.Narrow().substr(0, length) : path.Narrow().substr(length));
    return position;
}

} // namespace TextHelpers
