// The host's clocks as the simulator sees them: both run faster by the scale that was set, from the
// moment that was set. Nanoseconds.
#pragma once

#include <cstdint>
#include <ctime>

namespace simulator {

inline constexpr int64_t kSecond = 1'000'000'000;  // ns
inline constexpr int64_t kNsPerMs = 1'000'000;

// since_ns: on the host's clock, since the Unix epoch; from then on time passes scale times as
// fast.
void SetTimeScale(int64_t since_ns, int64_t scale);
int64_t TimeScale();

int64_t HostNs();    // since the Unix epoch
int64_t SteadyNs();  // never set; since some moment

// The fields of a time in whole seconds since the Unix epoch.
tm UtcOf(int64_t seconds);

// A time of the host's own clock as HostNs() would have said it.
int64_t ScaledNs(int64_t host_ns);

}  // namespace simulator
