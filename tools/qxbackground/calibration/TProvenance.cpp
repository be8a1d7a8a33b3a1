#include "calibration/TProvenance.h"

#include "base/TFileLock.h"
#include "base/TReplacedFile.h"
#include "base/TSha256.h"
#include "base/TToolError.h"
#include "base/TextFile.h"
#include "calibration/Keys.h"
#include "calibration/ProvenanceJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace workbench {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kLongestRecord = std::uintmax_t{256} << 20;

// What tells entries apart.
std::string Identity(const std::string& key, const std::string& group)
{
    return TextInJson(group) + '\n' + RecordedKey(key);
}

std::string PixelsSha256(const std::string& file, const TStoredCorrection& correction,
                         const TProvenanceEntry::TLook& look = {})
{
    std::ifstream stream;
    stream.rdbuf()->pubsetbuf(nullptr, 0);
    stream.open(fs::path(file), std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(correction.pixelOffset));
    TSha256 sha256;
    std::uint64_t left = std::uint64_t{2} * correction.width * correction.height;
    std::vector<unsigned char> piece(static_cast<std::size_t>(std::min<std::uint64_t>(left, 1 << 18)));
    while (left > 0) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, piece.size()));
        if (!stream.read(reinterpret_cast<char*>(piece.data()), static_cast<std::streamsize>(count)))
            throw TToolError(file, "the pixels of '" + correction.key + "' cannot be read");
        sha256.Add(piece.data(), count);
        if (look)
            look(piece.data(), count);
        left -= count;
    }
    return sha256.Hex();
}

bool IsSame(float one, float other)
{
    return one == other || (std::isnan(one) && std::isnan(other));
}

fs::path FolderOf(const std::string& path)
{
    std::error_code error;
    const fs::path folder = fs::absolute(fs::path(path), error).parent_path();
    fs::path canonical = fs::weakly_canonical(folder, error);
    return error ? folder : canonical;
}

} // namespace

std::string RecordedKey(const std::string& key)
{
    return FoldedKey(TextInJson(key));
}

void TProvenanceEntry::Describe(const std::string& file, const TStoredCorrection& correction, const TLook& look)
{
    key = correction.key;
    width = correction.width;
    height = correction.height;
    exposureSeconds = correction.exposureSeconds;
    lightIntensityPercent = correction.lightIntensityPercent;
    pixelsSha256 = PixelsSha256(file, correction, look);
}

std::string TProvenanceEntry::DifferenceTo(const std::string& file, const TStoredCorrection& correction) const
{
    if (width != correction.width || height != correction.height)
        return fmt::format("its size is {} x {} pixels, recorded is {} x {}", correction.width, correction.height,
                           width, height);
    if (!IsSame(exposureSeconds, correction.exposureSeconds))
        return fmt::format("its exposure is {} s, recorded is {} s", correction.exposureSeconds, exposureSeconds);
    if (!IsSame(lightIntensityPercent, correction.lightIntensityPercent))
        return fmt::format("its intensity is {} %, recorded is {} %", correction.lightIntensityPercent,
                           lightIntensityPercent);
    if (pixelsSha256 != PixelsSha256(file, correction))
        return "its pixels are not those that were recorded";
    return {};
}

TProvenance::TProvenance(const std::string& file) : path(file)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status))
        return;
    if (!fs::is_regular_file(status))
        throw TToolError(path, "is no file, and cannot be read as what corrections were built from");
    if (fs::file_size(path, error) > kLongestRecord || error)
        throw TToolError(path, "is too large for a record of what corrections were built from");
    std::ifstream stream(fs::path(path), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream)
        throw TToolError(path, "cannot be read");
    entries = ParseProvenance(path, text);
    Count();
    exists = true;
    before = Text();
}

void TProvenance::Count()
{
    places.clear();
    for (std::size_t place = 0; place < entries.size(); ++place)
        places.emplace(Identity(entries[place].key, entries[place].group), place);
}

template <class TWhich> void TProvenance::RemoveThose(TWhich&& which)
{
    entries.erase(std::remove_if(entries.begin(), entries.end(), which), entries.end());
    Count();
}

const TProvenanceEntry* TProvenance::Find(const std::string& key, const std::string& group) const
{
    const auto found = places.find(Identity(key, group));
    return found == places.end() ? nullptr : &entries[found->second];
}

void TProvenance::Put(const TProvenanceEntry& entry)
{
    const auto [found, isNew] = places.emplace(Identity(entry.key, entry.group), entries.size());
    if (isNew)
        entries.push_back(entry);
    else
        entries[found->second] = entry;
}

void TProvenance::Remove(const std::string& key, const std::string& group)
{
    const std::string removed = Identity(key, group);
    RemoveThose([&](const TProvenanceEntry& entry) { return Identity(entry.key, entry.group) == removed; });
}

void TProvenance::Clear()
{
    RemoveThose([](const TProvenanceEntry&) { return true; });
}

void TProvenance::Keep(const std::vector<TStoredCorrection>& corrections, const std::string& group)
{
    std::unordered_set<std::string> kept;
    for (const TStoredCorrection& correction : corrections)
        kept.insert(Identity(correction.key, group));
    RemoveThose([&, name = TextInJson(group)](const TProvenanceEntry& entry) {
        return entry.group == name && kept.count(Identity(entry.key, entry.group)) == 0;
    });
}

std::string TProvenance::Text() const
{
    return ProvenanceText(entries);
}

void TProvenance::Write() const
{
    const std::string text = Text();
    if (exists ? text == before : entries.empty())
        return;
    // Whoever changes the calibration file holds its lock already; with this one a killed process leaves no file of a
    // name that nobody else would use, and remove.
    const TFileLock lock(LockFileOf(TargetOf(path)), path);
    WriteText(path, text, exists ? TExisting::Replaced : TExisting::Refused);
}

std::string TProvenance::NameOf(const std::string& file) const
{
    const fs::path given = file;
    std::error_code ignored;
    if (given.has_root_directory()) // Windows calls only those absolute that say their drive, too
        return fs::absolute(given, ignored).generic_string();
    const fs::path relative = (FolderOf(file) / given.filename()).lexically_relative(FolderOf(path));
    return (relative.empty() ? fs::absolute(given, ignored) : relative).generic_string();
}

std::string TProvenance::PathOf(const std::string& name) const
{
    const fs::path given = name;
    return (given.is_absolute() ? given : fs::path(path).parent_path() / given).string();
}

TProvenanceEntry TProvenance::Moved(TProvenanceEntry entry, const TProvenance& from) const
{
    const auto move = [&](std::string& name) { name = NameOf(from.PathOf(name)); };
    if (!entry.importedFrom.empty())
        move(entry.importedFrom);
    if (entry.built) {
        for (TFrameRecord::TFile& file : entry.built->darks.files)
            move(file.name);
        if (entry.built->bias) {
            for (TFrameRecord::TFile& file : entry.built->bias->files)
                move(file.name);
        }
    }
    return entry;
}

std::optional<TProvenanceEntry> KnownProvenance(const TCalibrationPlace& place, const TStoredCorrection& correction)
{
    try {
        const std::string group = place.GroupOf(correction.key);
        const TProvenance provenance(place.ProvenanceFile());
        const TProvenanceEntry* const entry = provenance.Find(correction.key, group);
        if (entry != nullptr && entry->DifferenceTo(place.FileOf(group), correction).empty())
            return *entry;
    } catch (const TToolError&) {
        // "check" says what is wrong with it
    }
    return std::nullopt;
}

} // namespace workbench
