#include "file/LiteralLoad.h"

Literal::TProcessor LiteralProcessorWith(const std::vector<TStoredCorrection>& corrections)
{
    Literal::TProcessor processor;
    for (const TStoredCorrection& correction : corrections) {
        processor.entries.push_back(std::make_shared<Literal::TEntry>(
            Literal::TEntry{correction.key, FromBits(correction.exposureBits), FromBits(correction.intensityBits),
                            correction.width, correction.height, correction.pixels}));
    }
    return processor;
}

std::optional<TLoadOutcome> LoadLiterally(const FileBytes::TBytes& bytes, const std::string& path, TLoadKind kind,
                                          const TLoadOutcome& before, const Literal::TReadFaults& faults,
                                          std::int64_t mostAttempts)
{
    Literal::TProcessor processor = LiteralProcessorWith(before.corrections);
    processor.message = before.mainText;
    processor.fileMessage = before.fileText;
    if (before.active) {
        processor.active = processor.entries.front();
    }

    TLoadOutcome after;
    after.groupingNames = before.groupingNames;
    after.structureVersion = before.structureVersion;
    const Literal::TOpened file = {path, bytes, faults, mostAttempts};
    try {
        after.result =
            kind.grouped ? processor.LoadGroupedFile(file, after.groupingNames, after.structureVersion, kind.headerOnly)
            : kind.headerOnly ? processor.LoadFileHeaderOnly(file)
                              : processor.LoadFile(file);
    } catch (const Literal::TUndecided&) {
        return std::nullopt;
    }
    after.mainText = processor.message;
    after.fileText = processor.fileMessage;
    after.headerOnly = processor.headerOnly;
    after.active = processor.active != nullptr;
    for (const auto& entry : processor.entries) {
        after.corrections.push_back({entry->key, entry->width, entry->height, BitsOf(entry->exposure),
                                     BitsOf(entry->intensity), entry->pixels});
    }
    return after;
}
