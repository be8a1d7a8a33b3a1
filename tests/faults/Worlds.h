// The objects and files that the campaigns work on, and the texts that they expect.
#ifndef TESTS_FAULTS_WORLDS_H
#define TESTS_FAULTS_WORLDS_H

#include "faults/Snapshot.h"

#include <set>
#include <string>

namespace Worlds {

constexpr char kConstruction[] = "Ran out of memory in Background correction construction.\n"
                                 "Try restarting the application if the problem persists.";
constexpr char kCreation[] = "Ran out of memory when trying to create new correction.\n"
                             "Try restarting the application if the problem persists.";
constexpr char kAdding[] = "Ran out of memory when trying to add new correction.\n"
                           "Try restarting the application if the problem persists.";
constexpr char kImporting[] = "Could not allocate memory during import.";
constexpr char kNoBackground[] = "0 'Error allocating correction memory.'";
constexpr char kReading[] = "1024 'Memory allocation error during reading.'";

inline std::string Thrown(const std::string& text)
{
    return "TZRException '" + text + "'";
}
inline std::string NotAdded(const std::string& text)
{
    return "513 'Could not add background correction - '" + text + "''";
}
inline std::string NotCreated(const std::string& text)
{
    return "1024 'Couldn't create new background entry - '" + text + "''";
}
const std::set<std::string> kNotAdded = {NotAdded(kConstruction), NotAdded(kCreation), NotAdded(kAdding)};
const std::set<std::string> kNotLoaded = {kReading, NotCreated(kAdding)};

// Files of live processors: "one" and "three" corrections; "grouped" is of structure version 2.
void FillProcessorFolder();
// A live processor with two corrections, of which "dark" is active, and settings; its source holds three, the key
// "Dark" among them.
void MakeProcessor(TWorld& world);
void MakeManyCorrections(TWorld& world); // the next one does not fit what is reserved
void MakeHeaderOnlyProcessor(TWorld& world);

// Files of a store "st" with the groups A=1 B=1 (two corrections), A=2 B=2 and A=3 B=3 (one each), of a store "old"
// with the groups A=1 B=1 and A=9 B=9, and a file "ungrouped".
void FillStoreFolder();
// Nothing in it.
void MakeEmptyStore(TWorld& world);
// Unnamed, with corrections of two groups; one is active.
void MakeFreshStore(TWorld& world);
// The store "st", with a correction added to its first group and another one of it active.
void MakeNamedStore(TWorld& world);
void MakeHeaderOnlyStore(TWorld& world);
// Sources of imports: a live processor or a store with A=1 B=1 (a key that "st" has), A=2 B=2 and a new group A=4 B=4.
void AddProcessorSource(TWorld& world);
void AddStoreSource(TWorld& world);

// Frames of 3 x 3 pixels for AddCorrection.
const unsigned short** Frames();

} // namespace Worlds

#endif
