// Reading the records that a configuration file gives.
#pragma once

#include "configuration/keys.h"

namespace simulator {

// Writes what the node gives into record (layout.size bytes, changed only where the node names a
// field): a table of fields, when it has any, or a string with the whole record in hexadecimal.
// False with the error filled when a field is unknown or a value does not fit it.
bool ReadRecord(const RecordLayout& layout, Where node, Bytes& record, ConfigurationError& error);

// The bytes of a text of hexadecimal digits; false when it is not one.
bool ReadHex(std::string_view text, Bytes& bytes);

}  // namespace simulator
