#ifndef QXBACKGROUND_BASE_JSONTEXT_H
#define QXBACKGROUND_BASE_JSONTEXT_H

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace workbench {

// JSON as it is printed and written, with a line feed at its end. Bytes that are not UTF-8 (keys may hold any) become
// the replacement character.
std::string JsonText(const nlohmann::json& json);

} // namespace workbench

#endif
