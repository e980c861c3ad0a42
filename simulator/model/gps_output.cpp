#include "model/gps_output.h"

#include <algorithm>
#include <map>
#include <utility>

#include "model/clock.h"
#include "model/nmea_sentences.h"
#include "model/timing.h"

namespace simulator {
namespace {

constexpr size_t kBufferSize = 4096;      // bytes
constexpr int64_t kBufferedSeconds = 32;  // more than the buffer holds: each has over 128 bytes

struct GpsBuffer {
  int64_t filled = HostNs() / kSecond;  // the second up to which the text is complete
  std::string text;
};

GpsBuffer& BufferOf(const Call& call) {
  static std::map<std::string, GpsBuffer, std::less<>> buffers;
  return buffers.try_emplace(call.device.name).first->second;
}

// One second of the receiver; its time is filled in later.
GpsSecond ReceiverState(const Call& call, const TimingStatusRecord& receiver) {
  return {.position = call.device.position,
          .fix = static_cast<GpsFix>(receiver.gps_fix),
          .in_view = {receiver.satellites_gps, receiver.satellites_glonass},
          .used = receiver.satellites_used};
}

// The oldest sentences are lost when there are too many.
void Trim(std::string& text) {
  if (text.size() <= kBufferSize) return;
  text.erase(0, text.find('\n', text.size() - kBufferSize) + 1);
}

// Adds the sentences of the seconds that began since the last call. The time is that of the
// satellites, to which the device's clock may or may not be set: the host's.
void FillBuffer(Call& call, GpsBuffer& buffer) {
  const int64_t last = HostNs() / kSecond;
  const int64_t filled = std::exchange(buffer.filled, last);
  if (filled >= last) return;

  const TimingStatusRecord receiver = CurrentReceiver(call);
  if (!HasModule(receiver)) return;
  GpsSecond second = ReceiverState(call, receiver);
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
