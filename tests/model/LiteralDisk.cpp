#include "model/LiteralDisk.h"

#include <algorithm>
#include <cctype>

namespace {

std::string ForwardSlashes(std::string text)
{
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::string ParentOf(const std::string& below)
{
    const std::size_t slash = below.find_last_of('/');
    return slash == std::string::npos ? std::string() : below.substr(0, slash);
}

std::string NameOf(const std::string& below)
{
    const std::size_t slash = below.find_last_of('/');
    return slash == std::string::npos ? below : below.substr(slash + 1);
}

bool IsNullDevice(const std::string& path)
{
    return ForwardSlashes(path) == kNullDevice;
}

bool IsSpelledFromARoot(const std::string& path)
{
    return path[0] == '/' || (path.size() > 1 && path[1] == ':');
}

} // namespace

bool TLiteralDisk::TNameOrder::operator()(const std::string& left, const std::string& right) const
{
    if (!kBackslashSystem) {
        return left < right;
    }
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) < std::tolower(static_cast<unsigned char>(b));
    });
}

TLiteralDisk::TLiteralDisk(const std::string& root) : rootWithSlash(ForwardSlashes(root) + "/") {}

std::optional<std::string> TLiteralDisk::Resolve(const std::string& path) const
{
    if (path.empty()) {
        return std::nullopt;
    }
    std::string below = ForwardSlashes(path);
    if (below.compare(0, rootWithSlash.size(), rootWithSlash) == 0) {
        below.erase(0, rootWithSlash.size());
    } else if (IsSpelledFromARoot(below)) {
        return std::nullopt;
    }
    if (!below.empty() && below.back() == '/' && IsFolder(below.substr(0, below.size() - 1))) {
        below.pop_back();
    }
    if (NameOf(below) == "." && IsFolder(ParentOf(below))) {
        below = ParentOf(below);
    } else if (NameOf(below) == ".." && IsFolder(ParentOf(below))) {
        below = below == ".." ? ".." : ParentOf(ParentOf(below));
    }
    return below;
}

bool TLiteralDisk::IsFolder(const std::string& below) const
{
    const auto node = nodes.find(below);
    return below.empty() || below == ".." || (node != nodes.end() && !node->second.has_value());
}

bool TLiteralDisk::Exists(const std::string& path) const
{
    const auto below = Resolve(path);
    return IsNullDevice(path) || (below.has_value() && (IsFolder(*below) || nodes.count(*below) != 0));
}

std::optional<Literal::TBytes> TLiteralDisk::Read(const std::string& path) const
{
    if (IsNullDevice(path)) {
        return Literal::TBytes();
    }
    const auto below = Resolve(path);
    const auto node = below.has_value() ? nodes.find(*below) : nodes.end();
    return node != nodes.end() ? node->second : std::nullopt;
}

bool TLiteralDisk::Write(const std::string& path, const Literal::TBytes& bytes)
{
    if (IsNullDevice(path)) {
        return true;
    }
    const auto below = Resolve(path);
    constexpr std::size_t kLongestName = 255;
    if (!below.has_value() || IsFolder(*below) || !IsFolder(ParentOf(*below)) || NameOf(*below).empty() ||
        NameOf(*below).size() > kLongestName) {
        return false;
    }
    nodes[*below] = bytes;
    return true;
}

bool TLiteralDisk::Remove(const std::string& path)
{
    const auto below = Resolve(path);
    return below.has_value() && !IsFolder(*below) && nodes.erase(*below) != 0;
}

Literal::TOpened TLiteralDisk::Open(const std::optional<std::string>& path) const
{
    Literal::TOpened opened;
    opened.path = path.value_or("(null)");
    opened.bytes = path.has_value() ? Read(*path) : std::nullopt;
    opened.mostAttempts = mostAttempts;
    return opened;
}

std::vector<std::string> TLiteralDisk::List(const std::string& folder) const
{
    const auto below = folder.empty() ? std::optional<std::string>("") : Resolve(folder);
    if (!below.has_value() || !IsFolder(*below)) {
        return {};
    }
    std::vector<std::string> names = {".", ".."};
    for (const auto& [path, node] : nodes) {
        if (!TNameOrder()(ParentOf(path), *below) && !TNameOrder()(*below, ParentOf(path))) {
            names.push_back(NameOf(path));
        }
    }
    if (order) {
        order(*below, names);
    }
    return names;
}
