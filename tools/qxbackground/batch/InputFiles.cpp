#include "batch/InputFiles.h"

#include "base/TToolError.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>
#include <unordered_map>

namespace workbench {

namespace fs = std::filesystem;

namespace {

const char* const kImageEndings[] = {".tif", ".tiff", ".fit", ".fits", ".fts", ".fz", ".png", ".pgm", ".ser"};

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool IsImageName(const std::string& name)
{
    if (name.front() == '.')
        return false;
    std::string ending = fs::path(name).extension().string();
    for (char& character : ending)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return std::find(std::begin(kImageEndings), std::end(kImageEndings), ending) != std::end(kImageEndings);
}

bool IsPattern(const std::string& text)
{
    return text.find_first_of("*?[") != std::string::npos;
}

// Whether `character` is in the set that begins at `at`, behind its bracket; `at` goes behind the closing one. A
// bracket that nothing closes stands for itself.
bool FitsSet(char character, const std::string& pattern, std::size_t& at)
{
    const bool isOthers = at < pattern.size() && (pattern[at] == '!' || pattern[at] == '^');
    const std::size_t begin = at + (isOthers ? 1 : 0);
    const std::size_t end = begin < pattern.size() ? pattern.find(']', begin + 1) : std::string::npos;
    if (end == std::string::npos)
        return character == '[';
    bool found = false;
    for (std::size_t i = begin; i < end; ++i) {
        if (i + 2 < end && pattern[i + 1] == '-') {
            found = found || (pattern[i] <= character && character <= pattern[i + 2]);
            i += 2;
        } else {
            found = found || pattern[i] == character;
        }
    }
    at = end + 1;
    return found != isOthers;
}

bool FitsFrom(const std::string& name, std::size_t at, const std::string& pattern, std::size_t patternAt)
{
    // Only the last star need be tried further: what the ones before it took fits however much it takes.
    std::size_t star = std::string::npos, starTook = 0;
    for (;;) {
        if (patternAt < pattern.size() && pattern[patternAt] == '*') {
            star = ++patternAt;
            starTook = at;
            continue;
        }
        if (at == name.size() && patternAt == pattern.size())
            return true;
        bool fits = false;
        std::size_t next = patternAt;
        if (at < name.size() && patternAt < pattern.size()) {
            const char wanted = pattern[next++];
            fits = wanted == '?' || (wanted == '[' ? FitsSet(name[at], pattern, next) : wanted == name[at]);
        }
        if (fits) {
            ++at;
            patternAt = next;
        } else if (star != std::string::npos && starTook < name.size()) {
            at = ++starTook;
            patternAt = star;
        } else {
            return false;
        }
    }
}

// What lies in a folder; `folder` is empty for the current one. Throws TToolError when it cannot be listed.
std::vector<std::string> NamesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator entries(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error))
        names.push_back(entries->path().filename().string());
    if (error)
        throw TToolError(folder.string(), "cannot be listed: " + error.message());
    std::sort(names.begin(), names.end(), NaturallyBefore);
    return names;
}

bool IsFolder(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

// Adds what fits `rest`, the parts of a pattern from `part` on, below `folder`.
void AddFitting(const fs::path& folder, const std::vector<std::string>& parts, std::size_t part,
                std::vector<std::string>& found)
{
    if (part == parts.size()) {
        if (!IsFolder(folder))
            found.push_back(folder.string());
        return;
    }
    std::error_code ignored;
    if (!IsPattern(parts[part])) {
        if (fs::exists(folder / parts[part], ignored))
            AddFitting(folder / parts[part], parts, part + 1, found);
        return;
    }
    if (!folder.empty() && !IsFolder(folder))
        return;
    for (const std::string& name : NamesIn(folder)) {
        if (Fits(name, parts[part]))
            AddFitting(folder / name, parts, part + 1, found);
    }
}

std::vector<std::string> FilesFitting(const std::string& pattern)
{
    const fs::path path = pattern;
    std::vector<std::string> parts, found;
    for (const fs::path& part : path.relative_path())
        parts.push_back(part.string());
    AddFitting(path.root_path(), parts, 0, found);
    return found;
}

std::vector<std::string> ImagesIn(const std::string& folder)
{
    std::vector<std::string> found;
    for (const std::string& name : NamesIn(folder)) {
        const fs::path path = fs::path(folder) / name;
        if (IsImageName(name) && !IsFolder(path))
            found.push_back(path.string());
    }
    return found;
}

// A pattern and a name beside it give a file twice, whose pixels would count twice.
void RefuseTwice(const std::vector<std::string>& files)
{
    std::error_code error;
    const fs::path here = fs::current_path(error);
    std::unordered_map<std::string, std::string> spelled;
    for (const std::string& file : files) {
        const auto [other, isNew] = spelled.emplace((here / file).lexically_normal().string(), file);
        // The spelling alone may deceive where folders are links.
        if (!isNew && (other->second == file || fs::equivalent(file, other->second, error)))
            throw TToolError(file, "is given twice" +
                                       (other->second == file ? std::string() : " (also as " + other->second + ")") +
                                       "; each file counts once");
    }
}

} // namespace

bool NaturallyBefore(const std::string& one, const std::string& other)
{
    std::size_t i = 0, j = 0;
    while (i < one.size() && j < other.size()) {
        if (!IsDigit(one[i]) || !IsDigit(other[j])) {
            if (one[i] != other[j])
                return static_cast<unsigned char>(one[i]) < static_cast<unsigned char>(other[j]);
            ++i;
            ++j;
            continue;
        }
        while (i < one.size() && one[i] == '0')
            ++i;
        while (j < other.size() && other[j] == '0')
            ++j;
        std::size_t oneEnd = i, otherEnd = j;
        while (oneEnd < one.size() && IsDigit(one[oneEnd]))
            ++oneEnd;
        while (otherEnd < other.size() && IsDigit(other[otherEnd]))
            ++otherEnd;
        if (oneEnd - i != otherEnd - j)
            return oneEnd - i < otherEnd - j;
        const int difference = one.compare(i, oneEnd - i, other, j, otherEnd - j);
        if (difference != 0)
            return difference < 0;
        i = oneEnd;
        j = otherEnd;
    }
    if (one.size() - i != other.size() - j)
        return one.size() - i < other.size() - j;
    return one < other; // 01 and 1
}

bool Fits(const std::string& name, const std::string& pattern)
{
    if (!name.empty() && name.front() == '.' && (pattern.empty() || pattern.front() != '.'))
        return false;
    return FitsFrom(name, 0, pattern, 0);
}

std::vector<std::string> ExpandInputs(const std::vector<std::string>& given)
{
    std::vector<std::string> files;
    for (const std::string& text : given) {
        std::error_code ignored;
        if (IsFolder(text)) {
            const std::vector<std::string> found = ImagesIn(text);
            if (found.empty())
                throw TToolError(text, "is a folder without images (by the endings of their names: .tif, .fits, ...)");
            files.insert(files.end(), found.begin(), found.end());
        } else if (IsPattern(text) && !fs::exists(fs::symlink_status(text, ignored))) {
            const std::vector<std::string> found = FilesFitting(text);
            if (found.empty())
                throw TToolError("'" + text + "': no file fits this pattern");
            files.insert(files.end(), found.begin(), found.end());
        } else {
            files.push_back(text);
        }
    }
    RefuseTwice(files);
    return files;
}

} // namespace workbench
