// Compares the library with the literal algorithms, with OpenCV, and with what the memory allows.
//   qxbc_compare [--once] [--rounds N] [--json FILE] [--size N] [--operation TEXT]
// --size and --operation (part of a row's name) leave the other rows out.
//
// The library is called through its exports, lock and checks included; only averaging and median, which have no
// operation of their own, are called as kernels. Each row is measured in a process of its own: what a row finds of free
// memory and large pages would otherwise hang on the rows before it.
#include "compare/Files.h"
#include "compare/Measure.h"
#include "compare/Rows.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct TSettings {
    int rounds = 15;
    int size = 0;          // 0: all
    std::string operation; // empty: all
    std::string jsonPath;
    int row = -1; // -1: all, each in a process of its own; else this one, here

    bool IsQuick() const { return rounds == 1; }
};

bool ReadSettings(int argc, char** argv, TSettings& settings)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--once") == 0) {
            settings.rounds = 1;
        } else if (std::strcmp(argv[i], "--rounds") == 0 && i + 1 < argc) {
            settings.rounds = std::max(1, std::atoi(argv[++i]));
        } else if (std::strcmp(argv[i], "--json") == 0 && i + 1 < argc) {
            settings.jsonPath = argv[++i];
        } else if (std::strcmp(argv[i], "--size") == 0 && i + 1 < argc) {
            settings.size = std::atoi(argv[++i]);
        } else if (std::strcmp(argv[i], "--operation") == 0 && i + 1 < argc) {
            settings.operation = argv[++i];
        } else if (std::strcmp(argv[i], "--row") == 0 && i + 1 < argc) {
            settings.row = std::atoi(argv[++i]);
        } else {
            return false;
        }
    }
    return true;
}

std::vector<TRow> AllRows(bool isQuick)
{
    std::vector<TRow> rows;
    for (const int size : isQuick ? std::vector<int>{64, 100} : std::vector<int>{64, 512, 2048, 4096}) {
        AppendSteadyRows(rows, size);
    }
    for (const int size : isQuick ? std::vector<int>{100} : std::vector<int>{512, 2048, 4096}) {
        AppendOddRows(rows, size);
    }
    AppendRingRows(rows, isQuick ? 64 : 2048, isQuick ? 3 : 40);
    AppendRingRows(rows, isQuick ? 100 : 4096, isQuick ? 3 : 12);
    return rows;
}

// A row's timings as the process that measures it hands them on, one to a line.
std::string LinesOf(const std::vector<TTiming>& timings)
{
    std::ostringstream lines;
    lines.precision(17);
    for (const TTiming& timing : timings) {
        lines << timing.rival << ' ' << timing.medianSeconds << ' ' << timing.leastSeconds << ' '
              << timing.greatestSeconds << '\n';
    }
    return lines.str();
}

std::vector<TTiming> TimingsOf(const std::string& lines)
{
    std::vector<TTiming> timings;
    std::istringstream stream(lines);
    TTiming timing;
    while (stream >> timing.rival >> timing.medianSeconds >> timing.leastSeconds >> timing.greatestSeconds) {
        timings.push_back(timing);
    }
    return timings;
}

std::vector<TTiming> MeasureElsewhere(const char* program, int row, int rounds)
{
    const std::string command =
        "'" + std::string(program) + "' --row " + std::to_string(row) + " --rounds " + std::to_string(rounds);
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::string lines;
    char buffer[256];
    while (pipe != nullptr && std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
        lines += buffer;
    }
    std::vector<TTiming> timings = TimingsOf(lines);
    if (pipe == nullptr || pclose(pipe) != 0 || timings.empty() || timings.front().rival != "library") {
        std::fprintf(stderr, "%s failed\n", command.c_str());
        std::exit(2);
    }
    return timings;
}

void Print(nlohmann::json& report, const std::string& operation, int size, const std::vector<TTiming>& timings)
{
    const TTiming& own = timings.front();
    std::printf("%-22s %5d  %11.3f us [%.3f - %.3f]", operation.c_str(), size, own.medianSeconds * 1e6,
                own.leastSeconds * 1e6, own.greatestSeconds * 1e6);
    nlohmann::json entry = {{"operation", operation}, {"size", size}};
    for (const TTiming& timing : timings) {
        entry["seconds"][timing.rival] = {timing.medianSeconds, timing.leastSeconds, timing.greatestSeconds};
        if (timing.rival != "library") {
            entry["ratio"][timing.rival] = timing.medianSeconds / own.medianSeconds;
            std::printf("  %s %6.2f", timing.rival.c_str(), timing.medianSeconds / own.medianSeconds);
        }
    }
    std::printf("\n");
    std::fflush(stdout);
    report["rows"].push_back(entry);
}

} // namespace

int main(int argc, char** argv)
{
    TSettings settings;
    if (!ReadSettings(argc, argv, settings)) {
        std::fprintf(stderr, "usage: qxbc_compare [--once] [--rounds N] [--json FILE] [--size N] [--operation TEXT]\n");
        return 2;
    }
    const std::vector<TRow> rows = AllRows(settings.IsQuick());
    if (settings.row >= 0) {
        const std::vector<TRival> rivals = rows.at(static_cast<std::size_t>(settings.row)).makeRivals();
        std::fputs(LinesOf(Measure(rivals, settings.rounds)).c_str(), stdout);
        return 0;
    }
    nlohmann::json report = {{"rounds", settings.rounds}, {"compiler", __VERSION__}};
    std::printf(
        "operation               size      median      [spread]       ratio of each rival's time to the library's\n");
    std::fflush(stdout);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if ((settings.size == 0 || rows[row].size == settings.size) &&
            rows[row].operation.find(settings.operation) != std::string::npos) {
            Print(report, rows[row].operation, rows[row].size,
                  MeasureElsewhere(argv[0], static_cast<int>(row), settings.rounds));
        }
    }
    for (const int size : settings.IsQuick() ? std::vector<int>{16} : std::vector<int>{512, 2048}) {
        if (!settings.operation.empty() || (settings.size != 0 && size != settings.size)) {
            continue;
        }
        for (const auto& [operation, timings] :
             MeasureFiles(settings.IsQuick() ? 2 : 100, size, settings.IsQuick() ? 1 : 5)) {
            Print(report, operation, size, timings);
        }
    }
    if (!settings.jsonPath.empty()) {
        std::ofstream(settings.jsonPath) << report.dump(1) << '\n';
    }
    return 0;
}
