#pragma once
// The name of what JSON is made of, for declarations; json.h has the thing itself, which takes the compiler
// long.

#include <nlohmann/json_fwd.hpp>

namespace tools {

/// Objects keep the order of their members.
using Json = nlohmann::ordered_json;

} // namespace tools
