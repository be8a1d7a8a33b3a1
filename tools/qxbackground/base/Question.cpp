#include "base/Question.h"

#include "base/TProgress.h"
#include "base/Terminal.h"

#include <cstdio>

namespace workbench {

bool SomebodyCanBeAsked()
{
    return StandardInputIsTerminal() && StandardErrorIsTerminal();
}

bool AnswersYes(const std::string& question)
{
    std::fputs((question + " [y/N] ").c_str(), stderr);
    std::fflush(stderr);
    const std::string answer = LineFromTerminal();
    if (answer.empty() || answer.back() != '\n')
        std::fputc('\n', stderr); // the input ended, or Ctrl-C: what is said next begins a line
    std::fflush(stderr);
    ThrowIfInterrupted();
    return answer.compare(0, 1, "y") == 0 || answer.compare(0, 1, "Y") == 0;
}

} // namespace workbench
