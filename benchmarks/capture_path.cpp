// capture_path IN OUT [slice BYTES | filter HOST PORT | pattern HEX32]
//
// Takes the packets of a capture file through the device's frame path into a pcapng file, as a
// direct capture does, and prints how many were kept. All arrive at port A.
#include <pcap/pcap.h>
#include <stdio_ext.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "dump/capture_writer.h"
#include "tap/frame_path.h"

using namespace simulator;

namespace {

int Usage() {
  fprintf(stderr, "capture_path IN OUT [slice BYTES | filter HOST PORT | pattern HEX32]\n");
  return 2;
}

pcap_t* OpenTrace(const char* path) {
  FILE* file = fopen(path, "rbm");  // mapped, as the simulator opens it
  if (file == nullptr) return nullptr;
  __fsetlocking(file, FSETLOCKING_BYCALLER);  // no other thread reads it
  char error[PCAP_ERRBUF_SIZE];
  return pcap_fopen_offline_with_tstamp_precision(file, PCAP_TSTAMP_PRECISION_NANO, error);
}

void Slice(PathSettings& settings, int bytes) {
  settings.features.slicing = 1;
  settings.features.slicing_size = static_cast<uint16_t>(bytes);
}

// The address and the port of either side.
bool Filter(PathSettings& settings, const char* host, int port) {
  unsigned address[4];
  if (sscanf(host, "%u.%u.%u.%u", &address[0], &address[1], &address[2], &address[3]) != 4)
    return false;
  PacketFilterRecord& filter = settings.filter;
  filter.enable = 1;
  filter.match_flags = 1U << 4 | 1U << 6;
  filter.either_flags = 1U << 1 | 1U << 2;
  for (int i = 0; i < 4; ++i) filter.src_ip[15 - i] = static_cast<uint8_t>(address[i]);
  filter.src_ip_mask = 0xF000;
  filter.src_port = static_cast<uint16_t>(port);
  filter.port_masks = 0xC;
  return true;
}

bool Pattern(PathSettings& settings, const char* hex) {
  settings.dpi.enabled = 1;
  settings.dpi.mask = 0xFFFF;
  for (uint8_t& byte : settings.dpi.data) {
    if (sscanf(hex, "%2hhx", &byte) != 1) return false;
    hex += 2;
  }
  return true;
}

// As a device leaves the factory.
void CountAll(CounterV2Config& counter) {
  for (int32_t* condition :
       {&counter.ipv4, &counter.ipv6, &counter.bcast, &counter.mcast, &counter.ucast, &counter.icmp,
        &counter.udp, &counter.tcp, &counter.crc_ok, &counter.hw_dropped, &counter.size_mode}) {
    *condition = -1;
  }
  counter.porta = counter.portb = 1;
}

bool Configure(PathSettings& settings, int count, char** words) {
  settings.features.transmitcrcerrors = 1;
  settings.features.ts = 1;
  settings.capabilities = ~0U;
  memset(&settings.types, 1, sizeof settings.types);
  for (CounterV2Config& counter : settings.counters) CountAll(counter);
  settings.counters[CORVANE_COUNTERS_V2 - 1].hw_dropped = 1;
  if (count == 0) return true;
  const std::string mode = words[0];
  if (mode == "slice" && count == 2) return Slice(settings, atoi(words[1])), true;
  if (mode == "filter" && count == 3) return Filter(settings, words[1], atoi(words[2]));
  return mode == "pattern" && count == 2 && Pattern(settings, words[1]);
}

struct Capture {
  pcap_t* trace;
  FramePath path;
  CaptureWriter writer;
  uint64_t kept = 0;
};

// One packet of the trace, for libpcap.
void Take(u_char* user, const pcap_pkthdr* head, const u_char* bytes) {
  auto& capture = *reinterpret_cast<Capture*>(user);
  const RawFrame frame = {.bytes = bytes,
                          .length = head->caplen,
                          .wire_length = head->len,
                          .port = 0,
                          .crc_ok = true,
                          .hw_dropped = false,
                          .time_ns = head->ts.tv_sec * 1'000'000'000 + head->ts.tv_usec};
  KeptFrame kept;
  if (!capture.path.Process(frame, kept)) return;
  ++capture.kept;
  if (!capture.writer.Write(kept)) pcap_breakloop(capture.trace);
}

}  // namespace

int main(int argc, char** argv) {
  PathSettings settings = {};
  if (argc < 3 || !Configure(settings, argc - 3, argv + 3)) return Usage();
  pcap_t* trace = OpenTrace(argv[1]);
  if (trace == nullptr) return perror(argv[1]), 1;
  const std::string out = argv[2];
  const size_t slash = out.rfind('/');
  CaptureTarget target;
  target.directory = slash == std::string::npos ? "." : out.substr(0, slash);
  target.pattern = out.substr(slash + 1);
  target.max_cache = uint64_t{100} << 20;
  std::string reason;
  Capture capture = {.trace = trace, .path = FramePath(settings)};
  if (!capture.writer.Open(target, reason) ||
      pcap_loop(trace, -1, Take, reinterpret_cast<u_char*>(&capture)) != 0 ||
      !capture.writer.Close()) {
    fprintf(stderr, "capture_path: %s\n", capture.writer.reason().c_str());
    return 1;
  }
  pcap_close(trace);
  printf("%llu\n", static_cast<unsigned long long>(capture.kept));
  return 0;
}
