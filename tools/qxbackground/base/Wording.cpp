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

std::string Printable(std::string text)
{
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 32 || byte == 127)
            character = '?';
    }
    return text;
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
