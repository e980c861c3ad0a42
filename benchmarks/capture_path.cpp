// capture_path IN OUT [slice BYTES | filter HOST PORT | pattern HEX32]
//
// Takes the packets of a capture file through the device's frame path into a pcapng file, as a
// direct capture does, and prints how many were kept. All arrive at port A.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "dump/capture_writer.h"
#include "tap/frame_path.h"
#include "traffic/capture_file.h"

using namespace simulator;

namespace {

int Usage() {
  fprintf(stderr, "capture_path IN OUT [slice BYTES | filter HOST PORT | pattern HEX32]\n");
  return 2;
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

}  // namespace

int main(int argc, char** argv) {
  PathSettings settings = {};
  if (argc < 3 || !Configure(settings, argc - 3, argv + 3)) return Usage();
  CaptureFile trace;
  if (!trace.Open(argv[1])) return fprintf(stderr, "capture_path: %s\n", trace.reason().c_str()), 1;
  const std::string out = argv[2];
  const size_t slash = out.rfind('/');
  CaptureTarget target;
  target.directory = slash == std::string::npos ? "." : out.substr(0, slash);
  target.pattern = out.substr(slash + 1);
  target.max_cache = uint64_t{100} << 20;
  std::string reason;
  FramePath path(settings);
  CaptureWriter writer;
  unsigned long long count = 0;
  bool ok = writer.Open(target, reason);
  RawFrame frame;
  KeptFrame kept;
  while (ok && trace.Next(frame) == Supply::kFrame) {
    if (!path.Process(frame, kept)) continue;
    ++count;
    ok = writer.Write(kept);
  }
  if (!writer.Close() || !trace.reason().empty()) {
    fprintf(stderr, "capture_path: %s%s\n", writer.reason().c_str(), trace.reason().c_str());
    return 1;
  }
  printf("%llu\n", count);
  return 0;
}
