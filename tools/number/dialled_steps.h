#pragma once
// How a dial string came about, step by step: which setting of the location, or which rule of its country,
// gave which part. Taken from the translation itself, so that it holds for whatever rules a service has.

#include <tools/number/telephony_service.h>

namespace tools {

struct DialledStep {
    std::string part; // as it is shown
    std::string rule;
};

/// "local", "long distance", "international" or "as written".
std::string Road_Of(const Translation &translation);

/// Of one that succeeded. Together the parts are what is shown, without the blanks and brackets in between;
/// the first is the tone or pulse, which is dialled only.
std::vector<DialledStep> Steps_Of(const Translation &translation, const DialLocation &from,
                                  const std::string &number);

} // namespace tools
