// A network interface of the host as a port's traffic, through libpcap, in promiscuous mode. The
// frames that are not yet fetched wait in the kernel's ring.
#pragma once

#include <pcap/pcap.h>

#include <memory>
#include <string>

#include "configuration/port_source.h"
#include "traffic/port_stream.h"

namespace simulator {

class LiveInterface : public PortStream {
 public:
  // False with the reason when the interface cannot be opened. The ring takes at most max_waiting
  // bytes, but 2 MB at least and 1 GB at most.
  bool Open(const PortSource& source, uint8_t port, uint64_t max_waiting, std::string& reason);

  // The kernel gives the times. It counts the frames for which the ring had no room, but not their
  // bytes: the mean length of the others stands in.
  static constexpr int64_t kDelayNs = 40'000'000;
  Supply Next(int64_t now_ns, int64_t end_ns, RawFrame& frame) override;
  int descriptor() const override { return pcap_get_selectable_fd(pcap_.get()); }
  int64_t delay_ns() const override { return kDelayNs; }
  LostFrames lost() override;
  std::string reason() const override { return reason_; }

  // Gives at most that many of the frames that are there, without copying them: the bytes stay
  // until take returns. kEnded after take has returned false, kFrame when more may be there.
  Supply Drain(int64_t now_ns, int64_t end_ns, int most, const TakeFrame& take);

 private:
  struct Draining;

  static void Copy(u_char* self, const pcap_pkthdr* header, const u_char* bytes);
  static void Give(u_char* draining, const pcap_pkthdr* header, const u_char* bytes);
  RawFrame Count(const pcap_pkthdr& header, const uint8_t* bytes);
  Supply WithoutFrame(int count, int64_t now_ns, int64_t end_ns);

  std::unique_ptr<pcap_t, decltype(&pcap_close)> pcap_ = {nullptr, pcap_close};
  std::string name_;
  uint8_t port_ = 0;
  std::unique_ptr<uint8_t[]> bytes_;
  RawFrame frame_ = {};
  uint64_t frames_ = 0;
  uint64_t total_bytes_ = 0;
  std::string reason_;
};

}  // namespace simulator
