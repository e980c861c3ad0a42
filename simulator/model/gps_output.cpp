#include "model/gps_output.h"

#include <algorithm>
#include <map>

#include "model/clock.h"
#include "model/device_records.h"
#include "model/nmea_sentences.h"

namespace simulator {
namespace {

constexpr int64_t kSecond = 1'000'000'000;  // ns
constexpr size_t kBufferSize = 4096;        // bytes
constexpr int64_t kBufferedSeconds = 32;    // more than the buffer holds: each has over 128 bytes

struct GpsBuffer {
  int64_t filled_ns = HostNs();  // the host's time up to which the text is complete
  std::string text;
};

GpsBuffer& BufferOf(const Call& call) {
  static std::map<std::string, GpsBuffer, std::less<>> buffers;
  return buffers.try_emplace(call.device.name).first->second;
}

// The board may lack its GPS module: then it has nothing to say.
bool HasModule(const TimingStatusRecord& status) {
  return status.gps_module == 0 || status.gps_module == 2;
}

GpsFix FixOf(const TimingStatusRecord& status) {
  if (status.gps_fix == 1) return GpsFix::k2d;
  return status.gps_fix == 2 ? GpsFix::k3d : GpsFix::kNone;
}

// One second of the receiver as the timing status describes it; its time is filled in later.
GpsSecond ReceiverState(const Call& call, const TimingStatusRecord& status) {
  return {.position = call.device.position,
          .fix = FixOf(status),
          .satellites_in_view = status.satellites_gps,
          .satellites_used = status.satellites_used};
}

// The oldest sentences are lost when there are too many.
void Trim(std::string& text) {
  if (text.size() <= kBufferSize) return;
  text.erase(0, text.find('\n', text.size() - kBufferSize) + 1);
}

// Adds the sentences of the seconds of the device's clock that began since the last call. How many
// is measured on the host's clock, so that setting the device's clock repeats or skips at most one.
void FillBuffer(Call& call, GpsBuffer& buffer) {
  const int64_t now_ns = HostNs();
  const int64_t offset_ns = ClockOffsetNs(call);
  const int64_t last = (now_ns + offset_ns) / kSecond;
  const int64_t filled = (buffer.filled_ns + offset_ns) / kSecond;
  buffer.filled_ns = now_ns;
  if (filled >= last) return;

  const auto status = Current<TimingStatusRecord>(call, "timing_status");
  if (!HasModule(status)) return;
  GpsSecond second = ReceiverState(call, status);
  second.time = std::max(filled, last - kBufferedSeconds);
  while (++second.time <= last) buffer.text += NmeaSentences(second);
  Trim(buffer.text);
}

}  // namespace

void FlushGpsOutput(const Call& call) {
  BufferOf(call) = {};
}

int32_t ReadGpsOutput(Call& call, char* buffer, size_t capacity) {
  if (const auto& given = call.device.gps_output) {
    given->text.copy(buffer, capacity);
    return given->count;
  }
  GpsBuffer& output = BufferOf(call);
  FillBuffer(call, output);
  const size_t size = output.text.copy(buffer, capacity);
  output.text.erase(0, size);
  return static_cast<int32_t>(size);
}

}  // namespace simulator
