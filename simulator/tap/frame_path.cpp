#include "tap/frame_path.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace simulator {
namespace {

constexpr uint32_t kOnlySlice = 128;  // bytes, of a device that cannot choose
constexpr double kLongestQueueNs = 100e6;
constexpr double kFastestBits = 1e10;  // per second
constexpr size_t kLongestFrame =
    262144;  // that a source gives; a longer one would cost an allocation

// asked: the kCount... bits that some counter asks for.
uint32_t ConditionsOf(const RawFrame& frame, const FrameFacts& facts, uint32_t asked) {
  uint32_t conditions = frame.crc_ok ? kCountCrcOk : 0;
  if (frame.hw_dropped) conditions |= kCountHwDropped;
  if ((asked & ~(kCountCrcOk | kCountHwDropped)) == 0) return conditions;
  conditions |= NetworkCondition(facts.layer2);
  if (frame.length >= kEthernetHeader) conditions |= DestinationCondition(frame.bytes);
  if (facts.has_protocol) conditions |= ProtocolCondition(facts.protocol);
  return conditions;
}

}  // namespace

FramePath::FramePath(const PathSettings& settings, const PathCounts& counts)
    : passes_(settings.passes),
      stamping_(settings.stamping),
      keeps_crc_errors_(settings.features.transmitcrcerrors == 1),
      keeps_crc_(settings.features.keepcrc32 == 1),
      slice_(std::numeric_limits<uint32_t>::max()),
      packet_filter_(settings.filter, settings.capabilities),
      dropped_types_(DroppedTypes(settings.types, settings.capabilities)),
      dpi_(settings.dpi, settings.capabilities),
      counters_(settings.counters),
      counts_(counts) {
  const FeaturesRecord& features = settings.features;
  const bool slices = features.slicing == 1 && features.slicing_size != 0;
  const bool any_length = (settings.capabilities & CORVANE_CAP_SLICING_LENGTH) != 0;
  if (slices && !settings.full_frames) slice_ = any_length ? features.slicing_size : kOnlySlice;
  for (int port = 0; port < CORVANE_PORTS; ++port) {
    const auto bits = static_cast<double>(settings.bits_per_second[port]);
    wires_[port] = {bits > 0, bits < kFastestBits ? 8e9 / bits : 0, 0};
  }
  needs_facts_ =
      packet_filter_.active() || dropped_types_ != 0 || (counters_.asked() & kCountParsed) != 0;
  if (keeps_crc_) with_crc_.resize(kLongestFrame + kFcsSize);
}

bool FramePath::Arrives(const RawFrame& frame) {
  Wire& wire = wires_[frame.port];
  if (!wire.up || wire.ns_a_byte == 0) return wire.up;
  const auto time_ns = static_cast<double>(frame.time_ns);
  const double ahead_ns = wire.free_ns - time_ns;
  // Far ahead: the clock was set back.
  if (ahead_ns < 0 || ahead_ns > 2 * kLongestQueueNs) wire.free_ns = time_ns;
  if (wire.free_ns - time_ns > kLongestQueueNs) return false;
  wire.free_ns += wire.ns_a_byte * (frame.wire_length + kFcsSize + kFrameOverhead);
  return true;
}

int64_t FramePath::Stamp(const RawFrame& frame) const {
  constexpr int64_t kGainsNsIn = 1'000'000;  // ns, a clock that runs free
  if (stamping_.by_host != 0) return frame.time_ns / 1000 * 1000;
  const int64_t free_ns = frame.time_ns - stamping_.offset_ns - stamping_.free_since_ns;
  const bool is_free = stamping_.free_since_ns != 0 && free_ns > 0;
  return frame.time_ns + stamping_.port_ns[frame.port] + (is_free ? free_ns / kGainsNsIn : 0);
}

bool FramePath::Keeps(const RawFrame& frame, const FrameFacts& facts) const {
  return !frame.hw_dropped && (frame.crc_ok || keeps_crc_errors_) &&
         packet_filter_.Keeps(frame, facts) &&
         (dropped_types_ == 0 || (TypesOf(facts) & dropped_types_) == 0) &&
         dpi_.Keeps(frame.bytes, frame.length);
}

void FramePath::Count(const RawFrame& frame, const FrameFacts& facts) {
  const bool passes = passes_ && frame.crc_ok;
  CountedFrame counted = {ConditionsOf(frame, facts, counters_.asked()),
                          frame.wire_length + kFcsSize, passes ? kBothPorts : 1U << frame.port,
                          facts.source, facts.destination};
  counters_.Count(counted);
  CountAtPort(counted, 1, counts_.ports[frame.port]);
  counted.conditions &= ~kCountHwDropped;
  if (passes) CountAtPort(counted, 1, counts_.ports[1 - frame.port]);
}

PathCounts FramePath::counts() const {
  PathCounts counts = counts_;
  counters_.AddTo(counts.counters);
  return counts;
}

uint32_t FramePath::Slice(uint32_t length) const {
  return std::min(length, slice_);
}

void FramePath::AppendCrc(const RawFrame& frame, KeptFrame& kept) {
  kept.wire_length = frame.wire_length + kFcsSize;
  if (frame.fcs_length >= 0) {
    kept.length = Slice(frame.length + static_cast<uint32_t>(frame.fcs_length));
    return;
  }
  if (frame.length != frame.wire_length || Slice(frame.length + kFcsSize) <= frame.length) return;
  // A wrong check sequence is the right one inverted.
  const auto right = static_cast<uint32_t>(crc32(0, frame.bytes, frame.length));
  const uint32_t crc = frame.crc_ok ? right : ~right;
  if (with_crc_.size() < frame.length + kFcsSize) with_crc_.resize(frame.length + kFcsSize);
  std::copy_n(frame.bytes, frame.length, with_crc_.begin());
  for (uint32_t i = 0; i < kFcsSize; ++i) {
    with_crc_[frame.length + i] = static_cast<uint8_t>(crc >> (8 * i));
  }
  kept.bytes = with_crc_.data();
  kept.length = Slice(frame.length + kFcsSize);
}

bool FramePath::Process(const RawFrame& frame, KeptFrame& kept) {
  ++counts_.seen;
  const FrameFacts facts = needs_facts_ ? ParseFrame(frame) : FrameFacts{};
  const bool keeps = Keeps(frame, facts);
  Count(frame, facts);
  if (!keeps) return false;
  kept = {frame.bytes, Slice(frame.length), frame.wire_length,
          frame.port,  Stamp(frame),        !frame.crc_ok};
  if (keeps_crc_) AppendCrc(frame, kept);
  return true;
}

}  // namespace simulator
