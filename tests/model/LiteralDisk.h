// A disk in memory for the literal model of the store: what fopen, access, remove and the listing of a folder do with
// path texts, and nothing of the library.
#ifndef TESTS_MODEL_LITERALDISK_H
#define TESTS_MODEL_LITERALDISK_H

#include "model/LiteralReader.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Whether this system's own separator is the backslash.
constexpr bool kBackslashSystem = std::filesystem::path::preferred_separator == static_cast<wchar_t>('\\');

// There always, though in no listing: holds no bytes and keeps none.
constexpr const char* kNullDevice = kBackslashSystem ? "NUL" : "/dev/null";

class TLiteralDisk {
public:
    // A file's bytes, or nothing for a folder.
    using TNode = std::optional<Literal::TBytes>;
    // Systems with backslashes take names that differ in letter case for one.
    struct TNameOrder {
        bool operator()(const std::string& left, const std::string& right) const;
    };
    // Nodes by their path below the root, with forward slashes. The root is "" and not among them.
    using TNodes = std::map<std::string, TNode, TNameOrder>;

    // `root` is the folder that relative paths begin at, spelled as this system does.
    explicit TLiteralDisk(const std::string& root);

    TNodes nodes;

    // Puts the names in a folder (a path below the root), "." and ".." among them, in the order of the system.
    std::function<void(const std::string& folder, std::vector<std::string>& names)> order;

    // How long the literal reader may take over a file that is opened here.
    std::int64_t mostAttempts = Literal::kMostAttempts;

    bool Exists(const std::string& path) const;
    std::optional<Literal::TBytes> Read(const std::string& path) const; // fopen "rb"; nothing when that fails
    bool Write(const std::string& path, const Literal::TBytes& bytes);  // fopen "wb"; false when that fails
    bool Remove(const std::string& path);                               // never a folder; whether something has gone
    // For the reader; nothing stands for a null pointer.
    Literal::TOpened Open(const std::optional<std::string>& path) const;
    std::vector<std::string> List(const std::string& folder) const;

    // The path below the root that a text names, whether it exists or not; nothing for the empty text and for places
    // outside the root.
    std::optional<std::string> Resolve(const std::string& path) const;

private:
    bool IsFolder(const std::string& below) const;

    std::string rootWithSlash;
};

#endif
