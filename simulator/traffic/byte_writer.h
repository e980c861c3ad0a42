// Fills a buffer with fields in network byte order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

namespace simulator {

class ByteWriter {
 public:
  explicit ByteWriter(std::span<uint8_t> room) : room_(room) {}

  void Put8(uint32_t value) {
    if (at_ < room_.size()) room_[at_++] = static_cast<uint8_t>(value);
  }
  void Put16(uint32_t value) {
    Put8(value >> 8);
    Put8(value);
  }
  void Put32(uint32_t value) {
    Put16(value >> 16);
    Put16(value);
  }
  // Several fields, one after the other.
  void Put8(std::initializer_list<uint32_t> values) {
    for (const uint32_t value : values) Put8(value);
  }
  void Put16(std::initializer_list<uint32_t> values) {
    for (const uint32_t value : values) Put16(value);
  }
  void Put32(std::initializer_list<uint32_t> values) {
    for (const uint32_t value : values) Put32(value);
  }
  void Put(std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) Put8(byte);
  }
  void Put(std::string_view text) {
    for (const char letter : text) Put8(static_cast<uint8_t>(letter));
  }
  void Fill(size_t count, uint8_t byte) {
    for (size_t i = 0; i < count; ++i) Put8(byte);
  }

  size_t left() const { return room_.size() - at_; }
  std::span<uint8_t> rest() const { return room_.subspan(at_); }

 private:
  std::span<uint8_t> room_;
  size_t at_ = 0;
};

}  // namespace simulator
