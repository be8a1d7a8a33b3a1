#ifndef QXBACKGROUND_CALIBRATION_STEADYREAD_H
#define QXBACKGROUND_CALIBRATION_STEADYREAD_H

#include "base/TFileState.h"
#include "calibration/TStorePlace.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace workbench {

using TFileStates = std::vector<std::pair<std::string, TFileState>>;

// Runs `read` so that all it read is of one state: again when `states` says that something changed meanwhile, whether
// it failed or not. Throws TToolError about `name` when that does not end. Files are replaced whole, never written in
// place, so this needs no lock, and no right to write.
void ReadSteadily(const std::string& name, const std::function<TFileStates()>& states,
                  const std::function<void()>& read);
void ReadFileSteadily(const std::string& path, const std::function<void()>& read);
// Everything that carries a name of the store.
TFileStates StatesOfStore(const TStorePlace& place);
void ReadStoreSteadily(const TStorePlace& place, const std::function<void()>& read);

} // namespace workbench

#endif
