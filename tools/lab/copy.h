// A simulator configuration whose devices answer as others did.
#pragma once

#include "answers.h"

namespace lab {

// Replaces addresses and serial numbers, equal ones by equal ones; what addresses have in common at
// their beginning stays common. Zeros stay, for they stand where a wildcard is.
void Anonymize(Source& source);

// The configuration file's text.
std::string ToToml(const Source& source);

}  // namespace lab
