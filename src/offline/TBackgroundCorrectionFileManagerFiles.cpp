// Opening and saving a store.
#include "offline/TBackgroundCorrectionFileManager.h"

#include "boundary/Messages.h"
#include "file/CalibrationFormat.h"
#include "offline/GroupFiles.h"
#include "offline/GroupNaming.h"
#include "platform/PathText.h"
#include "platform/RawFile.h"

#include <cstddef>
#include <map>
#include <utility>

using namespace QX_KRLSDK;
using CalibrationFormat::kUngroupedVersion;

namespace {

// The path that a host named, in the store's own spelling.
TDualString StorePath(const char* fileName)
{
    std::string path(fileName);
    Platform::UseBackslashes(path);
    return TDualString(path);
}

} // namespace

// Finds out which store a file belongs to, from the grouping names it records and from its own name. 771 when there is
// no such file: `path` is then a base name itself. A file of structure version 1 belongs to no other: 0, without names.
unsigned int TBackgroundCorrectionFileManager::DeriveBaseFileName(const TDualString& path, TTextList& names,
                                                                  TDualString& base, std::uint32_t& structureVersion)
{
    if (!Platform::PathExists(path.Text())) {
        base = path;
        structureVersion = 0;
        return kFileNotFound;
    }
    TProcessor scratch;
    std::vector<std::string> recordedNames;
    const unsigned int result = scratch.LoadGroupedFileHeaderOnly(path.Text(), recordedNames, structureVersion);
    if (result != kSuccess && result != kStructureVersionWrong) {
        return result;
    }
    names = GroupFiles::DualTexts(recordedNames);
    if (names.empty()) {
        base = path;
        return result;
    }
    if (!GroupNaming::BaseOfGroupFileName(path, names, base)) {
        return Fail(kFileNameInvalid, Messages::kIncorrectFileName);
    }
    return result;
}

// Removes every group file of the store that a file belongs to. That a single file cannot be removed is no failure.
unsigned int TBackgroundCorrectionFileManager::RemoveStoreFiles(const TDualString& path)
{
    TTextList names;
    TDualString base;
    std::uint32_t structureVersion = 0;
    const unsigned int result = DeriveBaseFileName(path, names, base, structureVersion);
    if (result == kFileNotFound) {
        return kSuccess;
    }
    if (result == kSuccess) {
        TTextList paths;
        GroupFiles::ListGroupFiles(names, base, paths);
        for (const TDualString& listed : paths) {
            Platform::RemoveFile(listed.Text());
        }
    }
    return result;
}

void TBackgroundCorrectionFileManager::CollectCorrectionKeys(TProcessor& processor, TKeyRegister& collected)
{
    const unsigned int count = processor.GetNumberOfCorrections();
    for (unsigned int index = 0; index < count; ++index) {
        collected.Append(processor.GetCorrectionKey(index));
    }
}

unsigned int TBackgroundCorrectionFileManager::LoadFileHeaderOnly(const char* fileName)
{
    const TGuard guard(lock.Get());
    if (fileName == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputFileNameNull);
    }
    const TDualString path = StorePath(fileName);
    TTextList names;
    TDualString base;
    std::uint32_t structureVersion = 0;
    const unsigned int derived = DeriveBaseFileName(path, names, base, structureVersion);
    TTextList paths;
    if (derived == kFileNotFound) {
        GroupFiles::ListGroupFiles(groupingNames, base, paths);
        if (paths.empty()) {
            return derived;
        }
        names = groupingNames;
    } else if (derived != kSuccess) {
        return derived;
    } else if (structureVersion == kUngroupedVersion) {
        paths.push_back(path);
    } else {
        GroupFiles::ListGroupFiles(names, base, paths);
    }

    auto scratch = std::make_unique<TProcessor>();
    auto foundKeys = std::make_unique<TKeyRegister>();
    for (const TDualString& listed : paths) {
        std::vector<std::string> recordedNames;
        std::uint32_t version = 0;
        const unsigned int result = scratch->LoadGroupedFileHeaderOnly(listed.Text(), recordedNames, version);
        if (result != kSuccess) {
            return result;
        }
        CollectCorrectionKeys(*scratch, *foundKeys);
    }

    // Nothing can fail from here on.
    ClearCorrections();
    if (structureVersion == kUngroupedVersion) {
        currentGroup.processor = std::move(scratch);
    } else {
        groupingNames = std::move(names);
        baseFileName = std::move(base);
    }
    keys = std::move(foundKeys);
    headerOnly = true;
    return kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::LoadFile(const char* fileName)
{
    const TGuard guard(lock.Get());
    if (fileName == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputFileNameNull);
    }
    const TDualString path = StorePath(fileName); // a copy: the name may be one of the keys that go
    const unsigned int result = LoadFileHeaderOnly(path.Text());
    if (result != kSuccess) {
        return result;
    }
    headerOnly = false;
    SetActiveCorrection(nullptr);
    if (currentGroup.processor == nullptr) {
        return kSuccess; // the group files are read when their keys are used
    }
    std::vector<std::string> recordedNames;
    std::uint32_t structureVersion = 0;
    return currentGroup.processor->LoadGroupedFileFull(path.Text(), recordedNames, structureVersion);
}

unsigned int TBackgroundCorrectionFileManager::SaveFile(const char* fileName)
{
    const TGuard guard(lock.Get());
    if (fileName == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputFileNameNull);
    }
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    const TDualString path = StorePath(fileName);
    unsigned int result = kSuccess;
    if (!baseFileName.IsEmpty()) {
        result = currentGroup.processor != nullptr ? WriteLoadedGroup() : kSuccess;
        if (result != kSuccess || GroupNaming::IsGroupFileOf(path, groupingNames, baseFileName)) {
            return result;
        }
    }
    TDualString targetBase;
    result = ReplaceTarget(path, targetBase);
    if (result != kSuccess) {
        return result;
    }
    if (!baseFileName.IsEmpty()) {
        return CopyGroups(targetBase);
    }
    if (currentGroup.processor == nullptr) {
        return kSuccess;
    }
    GroupNaming::TBuckets buckets;
    for (std::size_t index = 0; index < keys->Count() && result == kSuccess; ++index) {
        result = buckets.BucketKeysByGroup(keys->At(index).Text(), groupingNames);
    }
    if (result != kSuccess) {
        return result;
    }
    result = SplitIntoGroups(targetBase, buckets);
    LoadFile(path.Text()); // reopens the store from what was written; the result is that of writing
    return result;
}

// Writes the loaded group of a named store to its file.
unsigned int TBackgroundCorrectionFileManager::WriteLoadedGroup()
{
    TDualString path;
    const unsigned int result = GroupNaming::BuildGroupFileName(baseFileName, groupingNames, currentGroupValues, path);
    if (result != kSuccess) {
        return result;
    }
    return currentGroup.processor->SaveGroupedFile(path.Text(), GroupFiles::NarrowTexts(groupingNames));
}

// Removes files that would be taken for part of the saved store: the store of a file that has the target's name, and
// the group files of the target's base.
unsigned int TBackgroundCorrectionFileManager::ReplaceTarget(const TDualString& path, TDualString& targetBase)
{
    TTextList names;
    std::uint32_t structureVersion = 0;
    unsigned int result = DeriveBaseFileName(path, names, targetBase, structureVersion);
    if (result == kSuccess) {
        result = RemoveStoreFiles(path);
    }
    if (result != kSuccess && result != kFileNotFound) {
        return result;
    }
    TTextList paths;
    GroupFiles::ListGroupFiles(groupingNames, targetBase, paths);
    for (const TDualString& listed : paths) {
        result = RemoveStoreFiles(listed);
        if (result != kSuccess) {
            return result;
        }
    }
    return kSuccess;
}

// For each bucket the positions of the corrections that its group retains, in their order.
//
// What belongs to a group is every correction whose stored key is spelled like one of the group's keys; a key falls
// into one group only, so one walk over the loaded corrections sorts them all. That gives the files that copying
// everything for each group and deleting the rest of it would: a key that the store knows but no correction is stored
// under (it was cut at 512 characters, or deleted in another letter case) makes a group without it, and a correction
// under no known key goes into no file.
std::vector<std::vector<std::size_t>>
TBackgroundCorrectionFileManager::RetainOnlyKeys(TProcessor& processor, const GroupNaming::TBuckets& buckets)
{
    std::map<std::string, std::size_t> groupOfKey;
    for (std::size_t group = 0; group < buckets.All().size(); ++group) {
        for (const TDualString& key : buckets.All()[group].keys) {
            groupOfKey.emplace(key.Narrow(), group);
        }
    }
    std::vector<std::vector<std::size_t>> positions(buckets.All().size());
    const unsigned int count = processor.GetNumberOfCorrections();
    for (unsigned int index = 0; index < count; ++index) {
        const auto found = groupOfKey.find(processor.GetCorrectionKey(index));
        if (found != groupOfKey.end()) {
            positions[found->second].push_back(index);
        }
    }
    return positions;
}

// Writes the corrections of an unnamed store, each to the file of its group.
unsigned int TBackgroundCorrectionFileManager::SplitIntoGroups(const TDualString& targetBase,
                                                               const GroupNaming::TBuckets& buckets)
{
    const std::vector<std::vector<std::size_t>> positions = RetainOnlyKeys(*currentGroup.processor, buckets);
    const std::vector<std::string> names = GroupFiles::NarrowTexts(groupingNames);
    unsigned int result = kSuccess;
    for (std::size_t group = 0; group < positions.size() && result == kSuccess; ++group) {
        TDualString path;
        result = GroupNaming::BuildGroupFileName(targetBase, groupingNames, buckets.All()[group].values, path);
        if (result == kSuccess) {
            result = currentGroup.processor->SaveGroupedFileOf(path.Text(), names, positions[group]);
        }
    }
    return result;
}

// Copies every group file of a named store to another base, one file in memory at a time. The store stays on its own.
unsigned int TBackgroundCorrectionFileManager::CopyGroups(const TDualString& targetBase)
{
    TTextList paths;
    GroupFiles::ListGroupFiles(groupingNames, baseFileName, paths);
    const std::vector<std::string> names = GroupFiles::NarrowTexts(groupingNames);
    TProcessor scratch;
    unsigned int result = kSuccess;
    for (std::size_t i = 0; i < paths.size() && result == kSuccess; ++i) {
        std::vector<std::string> recordedNames;
        std::uint32_t structureVersion = 0;
        result = scratch.LoadGroupedFileFull(paths[i].Text(), recordedNames, structureVersion);
        TTextList values;
        if (result == kSuccess) {
            result = GroupNaming::ParseGroupValuesFromFileName(paths[i], baseFileName, groupingNames, values);
        }
        TDualString target;
        if (result == kSuccess) {
            result = GroupNaming::BuildGroupFileName(targetBase, groupingNames, values, target);
        }
        if (result == kSuccess) {
            result = scratch.SaveGroupedFile(target.Text(), names);
        }
    }
    return result;
}
