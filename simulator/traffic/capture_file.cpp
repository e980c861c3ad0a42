#include "traffic/capture_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace simulator {
namespace {

constexpr uint32_t kLongestBlock = 16 << 20;
constexpr unsigned kPiece = 1 << 16;  // at once from the file: a pipe is waited for
constexpr uint32_t kLongestPacket = 262144;
constexpr uint64_t kSecond = 1'000'000'000;
constexpr uint32_t kEthernet = 1;
constexpr uint32_t kCrcOverFcs = 0x2144DF1C;  // what the CRC over a frame and its own CRC gives

constexpr const char* kUnknown = "unknown file format";
constexpr const char* kNoEthernet = "it has other frames than those of Ethernet";
constexpr const char* kDamaged = "it has a damaged block";
constexpr const char* kTooLong = "it has a packet that is too long";

// Magic numbers.
constexpr uint32_t kMicroseconds = 0xA1B2C3D4;
constexpr uint32_t kNanoseconds = 0xA1B23C4D;
constexpr uint32_t kByteOrder = 0x1A2B3C4D;
constexpr size_t kPcapHeader = 24;

// Blocks of pcapng.
constexpr uint32_t kSection = 0x0A0D0D0A;  // in either byte order
constexpr uint32_t kInterface = 1;
constexpr uint32_t kOldPacket = 2;
constexpr uint32_t kSimplePacket = 3;
constexpr uint32_t kEnhancedPacket = 6;

size_t Padded(size_t size) {
  return (size + 3) & ~size_t{3};
}

// A power of 10, or of 2 with the highest bit; 0 when it is too large.
uint64_t TicksOf(uint8_t resolution) {
  const uint64_t base = resolution > 0x7F ? 2 : 10;
  uint64_t ticks = 1;
  for (int i = resolution & 0x7F; i > 0; --i) {
    if (__builtin_mul_overflow(ticks, base, &ticks)) return 0;
  }
  return ticks;
}

int64_t TimeOf(uint64_t time, uint64_t ticks, int64_t offset_s) {
  __int128 ns = time;
  if (ticks != kSecond) ns = ns * kSecond / ticks;
  ns += static_cast<__int128>(offset_s) * kSecond;
  return static_cast<int64_t>(std::clamp<__int128>(ns, 0, kLatestNs));
}

}  // namespace

template <class Value>
Value CaptureFile::Get(const uint8_t* at) const {
  uint8_t bytes[sizeof(Value)];
  memcpy(bytes, at, sizeof bytes);
  if (swapped_) std::reverse(bytes, bytes + sizeof bytes);
  Value value;
  memcpy(&value, bytes, sizeof value);
  return value;
}

// True when that many bytes are in the buffer at at_.
bool CaptureFile::Has(size_t size) {
  if (end_ - at_ >= size) return true;
  std::copy(buffer_.data() + at_, buffer_.data() + end_, buffer_.data());
  end_ -= at_;
  at_ = 0;
  if (buffer_.size() < size + kPiece) buffer_.resize(size + kPiece);
  while (end_ < size) {
    const int count = gzread(file_.get(), &buffer_[end_], kPiece);
    if (count <= 0) return false;
    end_ += static_cast<size_t>(count);
  }
  return true;
}

Supply CaptureFile::Fail(const std::string& reason) {
  reason_ = "cannot read " + path_ + ": " + reason;
  return Supply::kFailed;
}

// When Has was false.
Supply CaptureFile::AtEnd() {
  int error = Z_OK;
  const char* text = gzerror(file_.get(), &error);
  if (error == Z_ERRNO) text = strerror(errno);
  if (error != Z_OK && error != Z_STREAM_END) return Fail(text);
  return at_ == end_ ? Supply::kEnded : Fail("it ends within a packet");
}

bool CaptureFile::Open(const std::string& path) {
  path_ = path;
  file_.reset(gzopen(path.c_str(), "rbe"));
  if (file_ == nullptr) return Fail(strerror(errno)) == Supply::kFrame;
  at_ = end_ = 0;
  time_ns_ = 0;
  swapped_ = false;
  interfaces_.clear();
  RawFrame none;
  Supply supply = Begin();
  while (supply == Supply::kLater && interfaces_.empty()) supply = NextBlock(none);
  return supply != Supply::kFailed;
}

// Supply::kLater when it is a capture file.
Supply CaptureFile::Begin() {
  if (!Has(kPcapHeader)) return AtEnd() == Supply::kEnded ? Fail("it is empty") : Supply::kFailed;
  const uint32_t magic = Get32(&buffer_[0]);
  is_pcapng_ = magic == kSection;
  if (is_pcapng_) return Supply::kLater;
  const bool nanoseconds = magic == kNanoseconds || magic == __builtin_bswap32(kNanoseconds);
  const uint32_t expected = nanoseconds ? kNanoseconds : kMicroseconds;
  swapped_ = magic != expected;
  if (swapped_ && magic != __builtin_bswap32(expected)) return Fail(kUnknown);
  const uint32_t type = Get32(&buffer_[20]);  // with the length of check sequences in 16-bit words
  if ((type & 0xFFFF) != kEthernet) return Fail(kNoEthernet);
  interfaces_.push_back({.ticks = nanoseconds ? kSecond : kSecond / 1000,
                         .fcs_length = (type & 1U << 26) != 0 ? (type >> 28) * 2 : 0});
  at_ = kPcapHeader;
  return Supply::kLater;
}

Supply CaptureFile::Next(RawFrame& frame) {
  Supply supply = Supply::kLater;
  while (supply == Supply::kLater) supply = is_pcapng_ ? NextBlock(frame) : NextPcap(frame);
  return supply;
}

Supply CaptureFile::NextPcap(RawFrame& frame) {
  constexpr size_t kHead = 16;
  if (!Has(kHead)) return AtEnd();
  const uint32_t captured = Get32(&buffer_[at_ + 8]);
  if (captured > kLongestPacket) return Fail(kTooLong);
  if (!Has(kHead + captured)) return AtEnd();
  const uint8_t* head = &buffer_[at_];
  at_ += kHead + captured;
  const Interface& from = interfaces_[0];
  time_ns_ = TimeOf(Get32(head) * from.ticks + Get32(head + 4), from.ticks, 0);
  return Give({from, head + kHead, captured, Get32(head + 12), 0}, frame);
}

// One block; Supply::kLater when it was no packet.
Supply CaptureFile::NextBlock(RawFrame& frame) {
  if (!Has(12)) return AtEnd();
  if (Get32(&buffer_[at_]) == kSection) {
    swapped_ = false;
    const uint32_t order = Get32(&buffer_[at_ + 8]);
    swapped_ = order != kByteOrder;
    if (swapped_ && order != __builtin_bswap32(kByteOrder)) return Fail(kDamaged);
    interfaces_.clear();
  }
  const uint32_t size = Get32(&buffer_[at_ + 4]);
  if (size < 12 || size % 4 != 0 || size > kLongestBlock) return Fail(kDamaged);
  if (!Has(size)) return AtEnd();
  const Bytes block(&buffer_[at_], size - 4);
  at_ += size;
  const uint32_t type = Get32(&block[0]);
  if (Get32(block.data() + block.size()) != size) return Fail(kDamaged);
  if (type == kInterface) return AddInterface(block);
  const bool is_packet = type == kEnhancedPacket || type == kSimplePacket || type == kOldPacket;
  return is_packet ? TakePacket(type, block, frame) : Supply::kLater;
}

// The value of an option; empty without one.
CaptureFile::Bytes CaptureFile::Option(Bytes options, uint16_t wanted) const {
  while (options.size() >= 4) {
    const auto code = Get<uint16_t>(&options[0]);
    const size_t size = Get<uint16_t>(&options[2]);
    if (code == 0 || size > options.size() - 4) break;
    if (code == wanted) return options.subspan(4, size);
    options = options.subspan(std::min(options.size(), 4 + Padded(size)));
  }
  return {};
}

Supply CaptureFile::AddInterface(Bytes block) {
  constexpr size_t kHead = 16;
  if (block.size() < kHead) return Fail(kDamaged);
  if (Get<uint16_t>(&block[8]) != kEthernet) return Fail(kNoEthernet);
  const Bytes options = block.subspan(kHead);
  const Bytes name = Option(options, 2);
  const Bytes resolution = Option(options, 9);
  const Bytes fcs_length = Option(options, 13);
  const Bytes offset = Option(options, 14);
  Interface added = {.name = {name.begin(), name.end()},
                     .ticks = resolution.empty() ? kSecond / 1000 : TicksOf(resolution[0])};
  if (added.ticks == 0) return Fail(kDamaged);
  if (const uint32_t snap_length = Get32(&block[12])) added.snap_length = snap_length;
  if (!fcs_length.empty()) added.fcs_length = fcs_length[0];
  if (offset.size() == 8) added.offset_s = Get<int64_t>(&offset[0]);
  interfaces_.push_back(std::move(added));
  return Supply::kLater;
}

// A simple packet has neither an interface nor a time nor options.
Supply CaptureFile::TakePacket(uint32_t type, Bytes block, RawFrame& frame) {
  const bool simple = type == kSimplePacket;
  const size_t head = simple ? 12 : 28;
  if (block.size() < head) return Fail(kDamaged);
  const uint32_t first = type == kOldPacket ? Get<uint16_t>(&block[8]) : Get32(&block[8]);
  if ((simple ? 0 : first) >= interfaces_.size()) return Fail(kDamaged);
  const Interface& from = interfaces_[simple ? 0 : first];
  Record record = {from, block.data() + head, first, first, 0};
  if (simple) record.captured = static_cast<uint32_t>(std::min<uint64_t>(first, from.snap_length));
  if (!simple) {
    const uint64_t time = uint64_t{Get32(&block[12])} << 32 | Get32(&block[16]);
    time_ns_ = TimeOf(time, from.ticks, from.offset_s);
    record.captured = Get32(&block[20]);
    record.original = Get32(&block[24]);
  }
  if (Padded(record.captured) > block.size() - head) return Fail(kDamaged);
  const Bytes flags = Option(block.subspan(head + Padded(record.captured)), 2);
  if (flags.size() == 4) record.flags = Get32(&flags[0]);
  return Give(record, frame);
}

Supply CaptureFile::Give(const Record& record, RawFrame& frame) {
  if (record.captured > kLongestPacket) return Fail(kTooLong);
  const uint32_t of_packet = record.flags >> 5 & 0xF;
  const uint32_t fcs_length = of_packet != 0 ? of_packet : record.from.fcs_length;
  const uint32_t original = std::max(record.captured, record.original);
  const uint32_t wire_length = original - std::min(original, fcs_length);
  const uint32_t length = std::min(record.captured, wire_length);
  frame = {record.bytes, length, wire_length, 0, (record.flags & 1U << 24) == 0, false, time_ns_};
  if (fcs_length == kFcsSize) frame.fcs_length = static_cast<int8_t>(record.captured - length);
  if (frame.fcs_length == kFcsSize && crc32(0, record.bytes, record.captured) != kCrcOverFcs) {
    frame.crc_ok = false;
  }
  interface_ = record.from.name;
  return Supply::kFrame;
}

}  // namespace simulator
