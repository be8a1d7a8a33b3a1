#include "calibration/ProvenanceJson.h"

#include "base/JsonText.h"
#include "base/TToolError.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

namespace {

using nlohmann::json;

constexpr char kFormat[] = "qxbackground-provenance";
constexpr int kVersion = 1;

// As short as reads back as the same.
json NumberJson(float value)
{
    return std::isfinite(value) ? json::parse(fmt::format("{}", value)) : json();
}

json FramesJson(const TFrameRecord& record)
{
    json files = json::array();
    for (const TFrameRecord::TFile& file : record.files) {
        files.push_back({{"name", file.name}, {"bytes", file.bytes}, {"sha256", nullptr}});
        if (!file.sha256.empty())
            files.back()["sha256"] = file.sha256;
    }
    return {{"frames", record.frames}, {"files", files}};
}

json BuildJson(const TBuildRecord& record)
{
    json built{{"date", record.date},
               {"tool", record.tool},
               {"combine", record.combined},
               {"reject", record.rejection},
               {"darks", FramesJson(record.darks)},
               {"bias", nullptr},
               {"hotPixels", {{"sigma", record.hotSigma}, {"hot", record.hot}, {"dead", record.dead}}},
               {"notes", record.notes},
               {"warnings", record.warnings}};
    if (!record.rawLayout.empty())
        built["raw"] = record.rawLayout;
    if (record.bias)
        built["bias"] = FramesJson(*record.bias);
    return built;
}

json EntryJson(const TProvenanceEntry& entry)
{
    json one{{"key", entry.key},
             {"width", entry.width},
             {"height", entry.height},
             {"exposureSeconds", NumberJson(entry.exposureSeconds)},
             {"lightIntensityPercent", NumberJson(entry.lightIntensityPercent)},
             {"pixelsSha256", entry.pixelsSha256},
             {"built", nullptr}};
    if (!entry.group.empty())
        one["group"] = entry.group;
    if (!entry.importedFrom.empty())
        one["importedFrom"] = entry.importedFrom;
    if (entry.built)
        one["built"] = BuildJson(*entry.built);
    return one;
}

float ReadFloat(const json& value)
{
    return value.is_null() ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(value.get<double>());
}

std::string TextOrNothing(const json& object, const char* name)
{
    return object.contains(name) && !object.at(name).is_null() ? object.at(name).get<std::string>() : std::string();
}

TFrameRecord ReadFrameRecord(const json& object)
{
    TFrameRecord record;
    record.frames = object.at("frames").get<std::uint64_t>();
    for (const json& file : object.at("files"))
        record.files.push_back(
            {file.at("name").get<std::string>(), file.at("bytes").get<std::uint64_t>(), TextOrNothing(file, "sha256")});
    return record;
}

TBuildRecord ReadBuild(const json& object)
{
    TBuildRecord built;
    built.date = object.at("date").get<std::string>();
    built.tool = object.at("tool").get<std::string>();
    built.combined = object.at("combine").get<std::string>();
    built.rejection = object.at("reject").get<std::string>();
    built.rawLayout = TextOrNothing(object, "raw");
    built.darks = ReadFrameRecord(object.at("darks"));
    if (!object.at("bias").is_null())
        built.bias = ReadFrameRecord(object.at("bias"));
    const json& hot = object.at("hotPixels");
    built.hotSigma = hot.at("sigma").get<double>();
    built.hot = hot.at("hot").get<std::uint64_t>();
    built.dead = hot.at("dead").get<std::uint64_t>();
    built.notes = object.at("notes").get<std::vector<std::string>>();
    built.warnings = object.at("warnings").get<std::vector<std::string>>();
    return built;
}

TProvenanceEntry ReadEntry(const json& object)
{
    TProvenanceEntry entry;
    entry.key = object.at("key").get<std::string>();
    entry.group = TextOrNothing(object, "group");
    entry.width = object.at("width").get<std::uint32_t>();
    entry.height = object.at("height").get<std::uint32_t>();
    entry.exposureSeconds = ReadFloat(object.at("exposureSeconds"));
    entry.lightIntensityPercent = ReadFloat(object.at("lightIntensityPercent"));
    entry.pixelsSha256 = object.at("pixelsSha256").get<std::string>();
    entry.importedFrom = TextOrNothing(object, "importedFrom");
    if (!object.at("built").is_null())
        entry.built = ReadBuild(object.at("built"));
    return entry;
}

} // namespace

std::string ProvenanceText(const std::vector<TProvenanceEntry>& entries)
{
    json corrections = json::array();
    for (const TProvenanceEntry& entry : entries)
        corrections.push_back(EntryJson(entry));
    return JsonText({{"format", kFormat}, {"version", kVersion}, {"corrections", corrections}});
}

std::vector<TProvenanceEntry> ParseProvenance(const std::string& path, const std::string& text)
{
    std::vector<TProvenanceEntry> entries;
    try {
        const json record = json::parse(text);
        if (!record.is_object() || !record.contains("format") || record.at("format") != kFormat)
            throw TToolError(path, "is no record of what corrections were built from, but something else");
        if (record.at("version").get<int>() > kVersion)
            throw TToolError(path, "is of a later version of this program");
        for (const json& object : record.at("corrections"))
            entries.push_back(ReadEntry(object));
    } catch (const json::parse_error& error) {
        throw TToolError(path, "is damaged: no JSON from byte " + std::to_string(error.byte) + " on");
    } catch (const json::exception&) {
        throw TToolError(path, "is damaged: " + (entries.empty() ? "" : "behind '" + entries.back().key + "' ") +
                                   "something is missing, or is no text or number where one is needed");
    }
    return entries;
}

std::string TextInJson(const std::string& text)
{
    const bool plain = std::all_of(text.begin(), text.end(),
                                   [](char character) { return static_cast<unsigned char>(character) < 128; });
    if (plain)
        return text;
    return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace)).get<std::string>();
}

} // namespace workbench
