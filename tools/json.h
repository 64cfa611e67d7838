#pragma once
// JSON on standard output, in UTF-8. Texts of the machine become such by Utf8_Of (output.h).

#include <tools/json_type.h>

#include <nlohmann/json.hpp>

namespace tools {

void Print_Json(const Json &value);

} // namespace tools
