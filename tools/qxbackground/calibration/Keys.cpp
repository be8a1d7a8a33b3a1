#include "calibration/Keys.h"

#include "base/TToolError.h"
#include "base/Wording.h"

#include "file/CalibrationFormat.h"

namespace workbench {

std::string FoldedKey(std::string key)
{
    for (char& character : key) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return key;
}

bool IsSameKey(const std::string& one, const std::string& other)
{
    return one.size() == other.size() && FoldedKey(one) == FoldedKey(other);
}

const TStoredCorrection* FindKey(const std::vector<TStoredCorrection>& corrections, const std::string& key)
{
    for (const TStoredCorrection& correction : corrections) {
        if (IsSameKey(correction.key, key))
            return &correction;
    }
    return nullptr;
}

void CheckKey(const std::string& key, const std::string& whose)
{
    if (key.empty())
        throw TToolError(whose + ": the key is empty");
    if (HasControlCharacter(key))
        throw TToolError(whose + ": the key has a control character (a tab, a line feed); keys are printable text");
    if (key.size() > CalibrationFormat::kKeyLength)
        throw TToolError(whose + ": the key has " + std::to_string(key.size()) +
                         " bytes; files keep 512, and a cut key may no longer tell corrections apart");
}

} // namespace workbench
