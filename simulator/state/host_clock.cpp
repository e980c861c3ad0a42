#include "state/host_clock.h"

#include <algorithm>
#include <chrono>

namespace simulator {
namespace {

int64_t since_ns = 0;
int64_t scale = 1;

template <class Clock>
int64_t NowNs() {
  const auto now = Clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

void SetTimeScale(int64_t from_ns, int64_t factor) {
  since_ns = from_ns;
  scale = factor;
}

int64_t TimeScale() {
  return scale;
}

int64_t ScaledNs(int64_t host_ns) {
  constexpr int64_t kMostNs = int64_t{1} << 62;  // of simulated time, more than a century
  return host_ns + std::min(host_ns - since_ns, kMostNs / scale) * (scale - 1);
}

int64_t HostNs() {
  return ScaledNs(NowNs<std::chrono::system_clock>());
}

tm UtcOf(int64_t seconds) {
  const time_t time = seconds;
  tm utc = {};
  gmtime_r(&time, &utc);
  return utc;
}

int64_t SteadyNs() {
  static const int64_t start_ns = NowNs<std::chrono::steady_clock>();
  return (NowNs<std::chrono::steady_clock>() - start_ns) * scale;
}

}  // namespace simulator
