#include "calibration/Remedy.h"

namespace workbench {

std::string Remedy(const std::string& refusal)
{
    static const struct {
        const char* part; // of the library's text
        const char* remedy;
    } kRemedies[] = {
        {"Key is not unique", "; choose another key, or delete that correction first"},
        {"key was not found", "; 'list' shows the keys that there are"},
        {"key not found", "; 'list' shows the keys that there are"},
        {"] is out of range", "; the region lies within the correction, whose size 'list' shows"},
        {"Neither a file nor any group file", "; see its base name and its folder"},
    };
    for (const auto& known : kRemedies) {
        if (refusal.find(known.part) != std::string::npos)
            return known.remedy;
    }
    return {};
}

} // namespace workbench
