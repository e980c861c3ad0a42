// The records by field: names, values as text, and the values that a field may have.
#pragma once

#include <functional>
#include <string>

#include "library.h"
#include "records/record_fields.h"

namespace lab {

// The fields of one record of a reading.
std::span<const simulator::Field> FieldsOf(const Reading& reading);

// A field in a record: its name with those of the groups around it, "sfps[1].measured.voltage".
struct Place {
  std::string path;
  const simulator::Field& field;
  size_t offset;
};
std::vector<Place> PlacesOf(const Reading& reading);

// The value of an integer field of up to eight bytes, signed as 32-bit numbers are in records.
int64_t NumberAt(const Place& place, const Bytes& record);
std::string TextOf(const Place& place, const Bytes& record);

// The least and the greatest number that the field has; none known: false.
bool FindRange(const Reading& reading, const Place& place, int64_t& least, int64_t& most);

}  // namespace lab
