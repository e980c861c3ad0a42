#include "model/events.h"

#include "model/clock.h"
#include "model/device_records.h"
#include "model/facts.h"
#include "model/past.h"
#include "model/timing.h"

namespace simulator {
namespace {

constexpr const char* kAllDevices = "";  // a fact of none
constexpr const char* kDone = "events_done";

void ApplyToDevices(const Configuration& configuration, DeviceState& state, const Event& event,
                    int64_t when_ms) {
  for (const DeviceConfiguration& device : configuration.devices) {
    Call call = {device, state};
    if (!event.device || *event.device == device.name) ApplyEvent(call, event, when_ms);
  }
}

}  // namespace

void ApplyDueEvents(const Configuration& configuration, DeviceState& state, int64_t first_use_ms) {
  static uint64_t done = 0;
  const auto& events = configuration.events;
  const auto is_due = [&] {
    return done < events.size() && first_use_ms + events[done].at_ms <= HostMs();
  };
  if (!is_due() || !state.Begin(true)) return;
  const uint64_t known = done;
  done = 0;
  ReadFact(state, kAllDevices, kDone, done);
  for (; is_due(); ++done) {
    ApplyToDevices(configuration, state, events[done], first_use_ms + events[done].at_ms);
  }
  state.SetFact(kAllDevices, kDone, BytesOf(done));
  if (!state.Commit()) done = known;
}

// They are stored like what a restart keeps. A clock that has lost its source runs on.
void ApplyEvent(Call& call, const Event& event, int64_t when_ms) {
  const BeforeChange before = LookBack(call, when_ms);
  const uint32_t source = CurrentReference(call).source;
  for (const RecordChange& change : event.changes) {
    Bytes record = CurrentRecord(call, change.record);
    change.apply(record);
    call.state.SetConfiguration(call.device.name, change.record, record);
    call.state.SaveConfiguration(call.device.name, change.record);
  }
  const bool lost = CurrentReference(call).source == CORVANE_TIME_NONE;
  if (lost && source != CORVANE_TIME_NONE) SetClock(call, source, ClockOffsetNs(call));
  NoteChange(call, before);
}

}  // namespace simulator
