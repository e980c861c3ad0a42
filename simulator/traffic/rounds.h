// What changes in a frame of the mix each time it comes round: the numbers of TCP segments, as if
// each stream went on for ever or were opened anew; the identifiers of questions and their answers.
//
// Sources: TCP: RFC 9293. Checksums that follow a changed word: RFC 1624.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "traffic/mix.h"

namespace simulator {

struct RoundFields {
  struct Field {            // of 32 bits
    size_t at;              // in the frame; 0 for no field
    uint32_t first;         // its value in round 0
    uint32_t step;          // what a round adds
    uint32_t rounds = ~0U;  // after which it begins again, less 1; a power of two less 1
  };
  std::array<Field, 3> fields = {};
  size_t checksum_at = 0;
  uint32_t for_zero = 0;  // what stands for a checksum of 0
};

// The fields of a frame of the cycle, of which the bytes were built. A frame that is not received
// (its fate) is one that is sent again: the next of its stream has the same sequence number.
RoundFields FieldsOf(Cycle cycle, const Frame& frame, std::span<const uint8_t> bytes);

// Sets the fields, and with them the checksum, in the bytes of the frame.
void SetRound(const RoundFields& fields, uint64_t round, std::span<uint8_t> bytes);

}  // namespace simulator
