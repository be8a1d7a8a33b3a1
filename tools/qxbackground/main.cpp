// qxbackground, the command-line workbench: uses the library as any host would, through its exports.
#include "base/Arguments.h"
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
    std::fprintf(stderr, "qxbackground: %s\n", workbench::Printable(text).c_str());
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
        AddCorrectVerb(app, context);
        AddBuildVerb(app, context);
        AddListVerb(app, context);
        AddShowVerb(app, context);
        AddApplyVerb(app, context);
        AddImportVerb(app, context);
        AddDeleteVerb(app, context);
        AddCheckVerb(app, context);
        AddStoreVerb(app, context);
        AddSimulateVerb(app);
        AddStatisticsVerb(app);
        AddReportVerb(app, context);
        AddHotPixelsVerb(app);
        AddExportVerb(app, context);
        AddDiffVerb(app, context);
        AddConvertVerb(app);
        AddRenameVerb(app, context);
    };
    CatchInterrupts();
    try {
        RunCommandLine(
            given,
            {"qxbackground", "qxbackground " QXBACKGROUND_VERSION,
             "Background correction of 16-bit camera images from the command line.\n"
             "Pages of TIFF files are counted from 1. Exit status: 0 done; 1 some of several files failed (each "
             "with its line) or, with check, do not load whole; 2 refused or failed, with one line that says why."},
            addVerbs);
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
