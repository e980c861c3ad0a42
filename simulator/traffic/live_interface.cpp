#include "traffic/live_interface.h"

#include <algorithm>
#include <cstring>

#include "state/host_clock.h"

namespace simulator {
namespace {

constexpr int kSnapLength = 262144;  // the most that libpcap takes
constexpr int kTimeoutMs = 20;

struct OpenFailure {
  int status;
  const char* missing;
};

constexpr OpenFailure kFailures[] = {
    {PCAP_ERROR_PERM_DENIED, "no right to capture: CAP_NET_RAW is missing"},
    {PCAP_ERROR_PROMISC_PERM_DENIED, "no right to promiscuous mode: CAP_NET_ADMIN is missing"},
    {PCAP_ERROR_NO_SUCH_DEVICE, "there is no such interface"},
    {PCAP_ERROR_IFACE_NOT_UP, "the interface is down"},
};

std::string FailureText(pcap_t* pcap, int status) {
  for (const OpenFailure& failure : kFailures) {
    if (failure.status == status) return failure.missing;
  }
  const char* detail = pcap_geterr(pcap);
  return *detail != '\0' ? detail : pcap_statustostr(status);
}

// The ring gives frames in blocks, each after the timeout at the latest.
void SetOptions(pcap_t* pcap, uint64_t max_waiting) {
  constexpr uint64_t kLeast = 2 << 20;
  constexpr uint64_t kMost = 1 << 30;
  pcap_set_snaplen(pcap, kSnapLength);
  pcap_set_promisc(pcap, 1);
  pcap_set_timeout(pcap, kTimeoutMs);
  pcap_set_buffer_size(pcap, static_cast<int>(std::clamp(max_waiting, kLeast, kMost)));
  pcap_set_tstamp_precision(pcap, PCAP_TSTAMP_PRECISION_NANO);
}

}  // namespace

bool LiveInterface::Open(const PortSource& source, uint8_t port, uint64_t max_waiting,
                         std::string& reason) {
  name_ = source.interface;
  port_ = port;
  char error[PCAP_ERRBUF_SIZE] = "";
  pcap_.reset(pcap_create(name_.c_str(), error));
  reason = "cannot capture on " + name_ + ": ";
  if (pcap_ == nullptr) {
    reason += error;
    return false;
  }
  SetOptions(pcap_.get(), max_waiting);
  const int status = pcap_activate(pcap_.get());
  if (status < 0) {
    reason += FailureText(pcap_.get(), status);
    return false;
  }
  if (pcap_datalink(pcap_.get()) != DLT_EN10MB || pcap_setnonblock(pcap_.get(), 1, error) != 0) {
    reason += *error != '\0' ? error : "it has no Ethernet frames";
    return false;
  }
  bytes_ = std::make_unique<uint8_t[]>(kSnapLength);
  return true;
}

RawFrame LiveInterface::Count(const pcap_pkthdr& header, const uint8_t* bytes) {
  ++frames_;
  total_bytes_ += header.len + kFcsSize;
  const int64_t host_ns = ScaledNs(header.ts.tv_sec * kSecond + header.ts.tv_usec);
  return {bytes, header.caplen, header.len, port_, true, false, host_ns};
}

// The supply when libpcap had no frame. A stream that was told to end first waits for frames that
// the kernel does not show yet.
Supply LiveInterface::WithoutFrame(int count, int64_t now_ns, int64_t end_ns) {
  if (count < 0) {
    reason_ = name_ + ": " + pcap_geterr(pcap_.get());
    return Supply::kFailed;
  }
  return end_ns <= now_ns - kDelayNs ? Supply::kEnded : Supply::kLater;
}

// The bytes are copied, for libpcap gives a block back to the kernel after its last frame.
void LiveInterface::Copy(u_char* self, const pcap_pkthdr* header, const u_char* bytes) {
  auto& live = *reinterpret_cast<LiveInterface*>(self);
  memcpy(live.bytes_.get(), bytes, header->caplen);
  live.frame_ = live.Count(*header, live.bytes_.get());
}

Supply LiveInterface::Next(int64_t now_ns, int64_t end_ns, RawFrame& frame) {
  const int count = pcap_dispatch(pcap_.get(), 1, Copy, reinterpret_cast<u_char*>(this));
  if (count <= 0) return WithoutFrame(count, now_ns, end_ns);
  if (frame_.time_ns > end_ns) return Supply::kEnded;
  frame = frame_;
  return Supply::kFrame;
}

struct LiveInterface::Draining {
  LiveInterface& live;
  int64_t end_ns;
  const TakeFrame& take;
  bool ended;
};

void LiveInterface::Give(u_char* draining, const pcap_pkthdr* header, const u_char* bytes) {
  auto& to = *reinterpret_cast<Draining*>(draining);
  if (to.ended) return;
  RawFrame frame = to.live.Count(*header, bytes);
  to.ended = frame.time_ns > to.end_ns || !to.take(frame);
}

Supply LiveInterface::Drain(int64_t now_ns, int64_t end_ns, int most, const TakeFrame& take) {
  Draining draining = {*this, end_ns, take, false};
  const int count = pcap_dispatch(pcap_.get(), most, Give, reinterpret_cast<u_char*>(&draining));
  if (count <= 0) return WithoutFrame(count, now_ns, end_ns);
  return draining.ended ? Supply::kEnded : Supply::kFrame;
}

LostFrames LiveInterface::lost() {
  pcap_stat statistics = {};
  if (pcap_stats(pcap_.get(), &statistics) != 0) return {};
  const uint64_t mean = frames_ == 0 ? 0 : total_bytes_ / frames_;
  return {statistics.ps_drop, statistics.ps_drop * mean};
}

}  // namespace simulator
