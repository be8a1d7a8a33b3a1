// qxbackground, the command-line workbench: uses the library as any host would, through its exports.
#include "base/Arguments.h"
#include "base/Color.h"
#include "base/Interrupts.h"
#include "base/Wording.h"
#include "commandline/CommandLine.h"
#include "verbs/Verbs.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr int kFailed = 2;

// One line, whatever the text held.
int Report(std::string text)
{
    for (char& character : text) {
        if (static_cast<unsigned char>(character) < ' ')
            character = ' ';
    }
    std::fprintf(stderr, "%s %s\n", workbench::ErrorMark("qxbackground:").c_str(), workbench::Printable(text).c_str());
    return kFailed;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    using namespace workbench;
    const std::vector<std::string> given = TakeArguments(argumentCount, arguments);
    TContext context;
    const auto addVerbs = [&context](TVerb& app) {
        app.Reads(TPathKind::Library,
                  app.add_option("--library", context.libraryPath, "Library file to load")->capture_default_str());
        app.AddVerbs({
            {"correct", [&] { AddCorrectVerb(app, context); }},
            {"apply", [&] { AddApplyVerb(app, context); }},
            {"build", [&] { AddBuildVerb(app, context); }},
            {"hotpixels", [&] { AddHotPixelsVerb(app); }},
            {"list", [&] { AddListVerb(app, context); }},
            {"show", [&] { AddShowVerb(app, context); }},
            {"check", [&] { AddCheckVerb(app, context); }},
            {"diff", [&] { AddDiffVerb(app, context); }},
            {"report", [&] { AddReportVerb(app, context); }},
            {"import", [&] { AddImportVerb(app, context); }},
            {"rename", [&] { AddRenameVerb(app, context); }},
            {"delete", [&] { AddDeleteVerb(app, context); }},
            {"statistics", [&] { AddStatisticsVerb(app); }},
            {"convert", [&] { AddConvertVerb(app); }},
            {"export", [&] { AddExportVerb(app, context); }},
            {"simulate", [&] { AddSimulateVerb(app); }},
            {"store", [&] { AddStoreVerb(app, context); }},
            {"completion", [&] { AddCompletionVerb(app); }},
        });
    };
    CatchInterrupts();
    try {
        RunCommandLine(given, ProgramText(), addVerbs, AddGuide);
        std::cout.flush();
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0 || !std::cout)
            return Report("the standard output cannot be written to; the command itself was carried out");
        return context.status;
    } catch (const std::bad_alloc&) {
        return Report("there is not enough memory");
    } catch (const std::exception& error) {
        return Report(error.what());
    }
}
