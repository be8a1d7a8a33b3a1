// qxbackground completion: the script by which a shell completes command lines of this program.
#include "commandline/Completion.h"

#include "base/TToolError.h"
#include "verbs/Verbs.h"

#include <iostream>
#include <memory>
#include <string>

namespace workbench {

void AddCompletionVerb(TVerb& app)
{
    TVerb& verb = app.AddVerb("completion", "Print what makes a shell complete verbs, options, files and keys");
    const auto shell = std::make_shared<std::string>();
    verb.add_option("shell", *shell, "bash, zsh or fish")->required();
    verb.Run([shell] {
        if (*shell != "bash" && *shell != "zsh" && *shell != "fish")
            throw TToolError("'" + *shell + "' is none of bash, zsh and fish");
        std::cout << CompletionScript(*shell);
    });
}

} // namespace workbench
