#include "base/Wording.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace workbench {

namespace {

char Lower(char character)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

// How many letters were typed wrong, left out, added, or swapped with their neighbour.
std::size_t Distance(const std::string& one, const std::string& other)
{
    std::vector<std::size_t> beforeLast, last(other.size() + 1), current(other.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= one.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const bool equal = Lower(one[i - 1]) == Lower(other[j - 1]);
            current[j] = std::min({last[j] + 1, current[j - 1] + 1, last[j - 1] + (equal ? 0 : 1)});
            if (i > 1 && j > 1 && Lower(one[i - 1]) == Lower(other[j - 2]) && Lower(one[i - 2]) == Lower(other[j - 1]))
                current[j] = std::min(current[j], beforeLast[j - 2] + 1);
        }
        beforeLast = last;
        last = current;
    }
    return last[other.size()];
}

// "stats" and "statistics", "--output-file" and "--output".
bool SharedBeginning(const std::string& word, const std::string& name)
{
    const std::size_t enough = name.compare(0, 2, "--") == 0 ? 6 : 4;
    return word.size() >= enough && word.compare(0, enough, name, 0, enough) == 0;
}

} // namespace

std::string Counted(std::uint64_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

namespace {

// How many bytes of a control character begin at `at`, in ASCII or in UTF-8 (U+0080 to U+009F); mostly none.
std::size_t ControlBytes(const std::string& text, std::size_t at)
{
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 32 || byte == 127)
        return 1;
    const unsigned next = at + 1 < text.size() ? static_cast<unsigned char>(text[at + 1]) : 0u;
    return byte == 0xc2 && next >= 0x80 && next < 0xa0 ? 2 : 0;
}

} // namespace

std::string Printable(std::string text)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (const std::size_t bytes = ControlBytes(text, at); bytes > 0)
            text.replace(at, bytes, "?");
    }
    return text;
}

bool HasControlCharacter(const std::string& text)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (ControlBytes(text, at) > 0)
            return true;
    }
    return false;
}

std::string WithoutSlips(const std::string& text)
{
    // The blanks that are not ASCII's, in UTF-8: no-break space, those of U+2000 to U+200B, the narrow and the wide
    // one.
    static const std::string kOtherBlanks[] = {"\u00a0", "\u2000", "\u2001", "\u2002", "\u2003",
                                               "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
                                               "\u2009", "\u200a", "\u200b", "\u202f", "\u3000"};
    std::string loose;
    for (std::size_t at = 0; at < text.size();) {
        const auto* const blank =
            std::find_if(std::begin(kOtherBlanks), std::end(kOtherBlanks),
                         [&](const std::string& known) { return text.compare(at, known.size(), known) == 0; });
        if (blank != std::end(kOtherBlanks)) {
            at += blank->size();
            continue;
        }
        if (text[at] != ' ' && text[at] != '\t')
            loose += Lower(text[at]);
        ++at;
    }
    return loose;
}

std::string Nearest(const std::string& word, const std::vector<std::string>& names)
{
    std::string nearest;
    std::size_t least = std::string::npos;
    for (const std::string& name : names) {
        // A beginning counts as one slip, however much of the name is missing.
        const bool begins = word.size() >= 2 && name.compare(0, word.size(), word) == 0;
        const std::size_t distance =
            begins ? 1
                   : std::min(Distance(word, name), SharedBeginning(word, name) ? std::size_t{2} : std::string::npos);
        const std::size_t allowed = std::max<std::size_t>(SharedBeginning(word, name) ? 2 : 1, name.size() / 3);
        if (distance <= allowed && distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}

} // namespace workbench
