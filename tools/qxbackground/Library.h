#ifndef QXBACKGROUND_LIBRARY_H
#define QXBACKGROUND_LIBRARY_H

#include "ToolError.h"

#include "QX_BackgroundCorrection.hpp"

#include <string>

namespace workbench {

// What the verbs share: which library file to load (filled from the command line before a verb runs), and the exit
// status, for verbs whose answer is one.
struct TContext {
    int status = 0;
    std::string libraryPath = QX_KRLSDK::TBackgroundCorrectionLibrary::DefaultName();

    QX_KRLSDK::TBackgroundCorrectionLibrary Library() const
    {
        return QX_KRLSDK::TBackgroundCorrectionLibrary(libraryPath);
    }
};

// Runs one step against the library; a refusal becomes a TToolError that says what the step was about.
template <class TStep> void Call(const std::string& about, TStep&& step)
{
    try {
        step();
    } catch (const QX_KRLSDK::TBackgroundCorrectionError& error) {
        throw TToolError(about, std::string(error.what()) + " [code " + std::to_string(error.Code()) + "]");
    }
}

} // namespace workbench

#endif
