// What moves corrections between the literal processor and other objects or files.
#include "model/LiteralProcessor.h"
#include "model/LiteralWriter.h"

namespace Literal {

namespace {

const char kHeaderOnly[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";

} // namespace

unsigned int TProcessor::ImportCorrections(const TImportSource& source, bool overwrite)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (source.store != nullptr) {
        return Fail(513, "The supplied import source is not the correct type.");
    }
    if (source.processor == nullptr) {
        return Fail(513, "Supplied import source is NULL.");
    }
    const std::vector<std::shared_ptr<TEntry>> sourceEntries = source.processor->entries;
    for (const auto& entry : sourceEntries) {
        const auto own = Find(entry->key);
        if (own == nullptr) {
            entries.push_back(std::make_shared<TEntry>(*entry));
        } else if (overwrite) {
            own->pixels.clear(); // first: an entry that is replaced by itself loses them
            *own = TEntry(*entry);
        }
    }
    modified = true;
    return 0;
}

unsigned int TProcessor::LoadUngroupedFile(const TOpened& file, bool enterHeaderOnly)
{
    headerOnly = enterHeaderOnly;
    TReader reader(*this, file);
    std::uint32_t version = 1;
    const unsigned int opened = reader.Open(version);
    return opened == 0 ? reader.Corrections() : opened;
}

unsigned int TProcessor::LoadGroupedFile(const TOpened& file, TTexts& names, std::uint32_t& version,
                                         bool enterHeaderOnly)
{
    version = 2;
    names.clear();
    headerOnly = enterHeaderOnly;
    TReader reader(*this, file);
    const unsigned int opened = reader.Open(version);
    if (opened == 772 && version == 1) {
        return reader.Corrections();
    }
    if (opened != 0) {
        return opened;
    }
    const unsigned int named = reader.GroupingNames(names);
    return named == 0 ? reader.Corrections() : named;
}

unsigned int TProcessor::SaveFile(TLiteralDisk& disk, const std::optional<std::string>& path)
{
    return Save(disk, path, std::nullopt);
}

unsigned int TProcessor::SaveGroupedFile(TLiteralDisk& disk, const std::string& path, const TTexts& names)
{
    return Save(disk, path, names);
}

unsigned int TProcessor::Save(TLiteralDisk& disk, const std::optional<std::string>& path,
                              const std::optional<TTexts>& groupingNames)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    TBytes bytes;
    const bool whole = Written(*this, groupingNames, bytes);
    if (!path.has_value() || !disk.Write(*path, bytes)) {
        return Fail(769, "Could not create file - '" + path.value_or("(null)") + "'");
    }
    if (!whole) {
        fileMessage = "Couldn't read Data from calibration file."; // the reader's words
        return kMinusOne;
    }
    return 0;
}

unsigned int TProcessor::AddEntryCopy(const TEntry& entry)
{
    if (Find(entry.key) != nullptr) {
        return Fail(1024, "Couldn't create new background entry - '" +
                              ("Supplied Key is not unique - '" + entry.key + "'").substr(0, 512) + "'");
    }
    entries.push_back(std::make_shared<TEntry>(entry));
    modified = true;
    return 0;
}

} // namespace Literal
