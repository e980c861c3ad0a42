#include "tap/frame_path.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace simulator {
namespace {

constexpr uint32_t kCrcSize = 4;
constexpr size_t kLongestFrame =
    262144;  // that a source gives; a longer one would cost an allocation

uint32_t NetworkCondition(Layer2 layer2) {
  if (layer2 == Layer2::kIp4) return kCountIpv4;
  return layer2 == Layer2::kIp6 ? kCountIpv6 : 0;
}

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

FramePath::FramePath(const PathSettings& settings)
    : port_disabled_{settings.features.disablea == 1, settings.features.disableb == 1},
      keeps_crc_errors_(settings.features.transmitcrcerrors == 1),
      keeps_crc_(settings.features.keepcrc32 == 1),
      slice_(std::numeric_limits<uint32_t>::max()),
      packet_filter_(settings.filter, settings.capabilities),
      dropped_types_(DroppedTypes(settings.types, settings.capabilities)),
      dpi_(settings.dpi, settings.capabilities),
      counters_(settings.counters) {
  const FeaturesRecord& features = settings.features;
  const bool slices = features.slicing == 1 && features.slicing_size != 0;
  if (slices && !settings.full_frames) slice_ = features.slicing_size;
  needs_facts_ =
      packet_filter_.active() || dropped_types_ != 0 || (counters_.asked() & kCountParsed) != 0;
  if (keeps_crc_) with_crc_.resize(kLongestFrame + kCrcSize);
}

bool FramePath::PortKeeps(const RawFrame& frame) const {
  return !port_disabled_[frame.port];
}

bool FramePath::CrcKeeps(const RawFrame& frame) const {
  return !frame.hw_dropped && (frame.crc_ok || keeps_crc_errors_);
}

bool FramePath::TypesKeep(const FrameFacts& facts) const {
  return dropped_types_ == 0 || (TypesOf(facts) & dropped_types_) == 0;
}

bool FramePath::FiltersKeep(const RawFrame& frame, const FrameFacts& facts) const {
  return packet_filter_.Keeps(frame, facts) && TypesKeep(facts) &&
         dpi_.Keeps(frame.bytes, frame.length);
}

void FramePath::Count(const RawFrame& frame, const FrameFacts& facts) {
  const CountedFrame counted = {ConditionsOf(frame, facts, counters_.asked()),
                                frame.wire_length + kCrcSize, frame.port, facts.source,
                                facts.destination};
  counters_.Count(counted);
  CountAtPort(counted, 1, counts_.ports[frame.port]);
}

PathCounts FramePath::counts() const {
  PathCounts counts = counts_;
  counters_.Read(counts.counters);
  return counts;
}

uint32_t FramePath::Slice(uint32_t length) const {
  return std::min(length, slice_);
}

void FramePath::AppendCrc(const RawFrame& frame, KeptFrame& kept) {
  kept.wire_length = frame.wire_length + kCrcSize;
  if (frame.length != frame.wire_length || Slice(frame.length + kCrcSize) <= frame.length) return;
  // A wrong check sequence is the right one inverted.
  const auto right = static_cast<uint32_t>(crc32(0, frame.bytes, frame.length));
  const uint32_t crc = frame.crc_ok ? right : ~right;
  if (with_crc_.size() < frame.length + kCrcSize) with_crc_.resize(frame.length + kCrcSize);
  std::copy_n(frame.bytes, frame.length, with_crc_.begin());
  for (uint32_t i = 0; i < kCrcSize; ++i) {
    with_crc_[frame.length + i] = static_cast<uint8_t>(crc >> (8 * i));
  }
  kept.bytes = with_crc_.data();
  kept.length = Slice(frame.length + kCrcSize);
}

bool FramePath::Process(const RawFrame& frame, KeptFrame& kept) {
  ++counts_.seen;
  const FrameFacts facts = needs_facts_ ? ParseFrame(frame) : FrameFacts{};
  const bool keeps = PortKeeps(frame) && CrcKeeps(frame) && FiltersKeep(frame, facts);
  Count(frame, facts);
  if (!keeps) return false;
  kept = {frame.bytes, Slice(frame.length), frame.wire_length, frame.port, frame.time_ns};
  if (keeps_crc_) AppendCrc(frame, kept);
  return true;
}

}  // namespace simulator
