#include "base/JsonText.h"

#include <nlohmann/json.hpp>

namespace workbench {

std::string JsonText(const nlohmann::json& json)
{
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace workbench
