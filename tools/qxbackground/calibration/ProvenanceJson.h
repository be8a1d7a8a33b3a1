#ifndef QXBACKGROUND_CALIBRATION_PROVENANCEJSON_H
#define QXBACKGROUND_CALIBRATION_PROVENANCEJSON_H

#include "calibration/TProvenance.h"

#include <string>
#include <vector>

namespace workbench {

// The record of provenance as the text of its file; docs/provenance.md describes it.
std::string ProvenanceText(const std::vector<TProvenanceEntry>& entries);

// Throws TToolError about `path` when the text is no such record, is damaged, or is of a later version.
std::vector<TProvenanceEntry> ParseProvenance(const std::string& path, const std::string& text);

// A text as it comes back out of JSON, which cannot hold bytes that are not UTF-8.
std::string TextInJson(const std::string& text);

} // namespace workbench

#endif
