#include "capture/statistics.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "console/output.h"
#include "console/status.h"
#include "device/session.h"
#include "device/wait.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr int kDefaultDelayMs = 1000;

void PrintVersion1(const StatisticsRecord& statistics) {
  const auto& v1 = statistics.counters.v1;
  printf("%-25s : %20" PRIu64 "\n", "Timestamp", statistics.timestamp);
  printf("%-25s : %20" PRIu64 "\n", "SW dropped", statistics.sw_dropped);
  printf("%-25s : %20" PRIu64 " ms\n", "Link Up", v1.link_up_ms);
  printf("%-25s : %20" PRIu64 " ms\n", "Link Down", v1.link_down_ms);
  for (int port = 0; port < CORVANE_PORTS; ++port) {
    printf("Port %c\n", 'A' + port);
    for (const PortCounterRow& row : kPortCounters) {
      printf("\t%-25s : %20" PRIu64 "\n", row.label, v1.ports[port].*row.counter);
    }
  }
}

// The counters are numbered from 1 here, from 0 where they are configured. The last one counts what
// the hardware dropped.
void PrintVersion2(const StatisticsRecord& statistics) {
  const auto& counters = statistics.counters.v2;
  printf("%-10s : %20" PRIu64 "\n", "Timestamp", statistics.timestamp);
  printf("%-10s : %20" PRIu64 "\n", "SW dropped", statistics.sw_dropped);
  printf("%-10s : %20" PRIu64 "\n", "HW dropped", counters[CORVANE_COUNTERS_V2 - 1]);
  for (int i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    printf("Counter %02d : %20" PRIu64 "\n", i + 1, counters[i]);
  }
}

// The limits are strict: exactly 1024 bytes are 1024.00 B.
void PrintSize(double bytes) {
  struct Unit {
    double size;
    const char* name;
  };
  constexpr Unit kUnits[] = {{1073741824.0, "GB"}, {1048576.0, "MB"}, {1024.0, "KB"}};
  for (const Unit& unit : kUnits) {
    if (bytes > unit.size) {
      printf("%.2f %s", bytes / unit.size, unit.name);
      return;
    }
  }
  printf("%.2f B", bytes);
}

void PrintSizeRow(const char* label, uint64_t bytes) {
  printf("%-25s : ", label);
  PrintSize(static_cast<double>(bytes));
  putchar('\n');
}

void PrintCapture(const DiskDumpStatus& capture) {
  if (capture.enabled == 0) {
    puts("Direct capture : STOPPED");
    return;
  }
  puts("Direct capture : STARTED");
  PrintSizeRow("Cache used", capture.cache_used);
  PrintSizeRow("Written", capture.bytes_written);
  PrintSizeRow("Dropped", capture.bytes_dropped);
  printf("%-25s : %" PRIu64 "\n", "Files Written", capture.files_written);
}

// One report. False when no further one can follow; the status is the command's so far.
bool Report(DeviceHandle device, int& status) {
  StatisticsRecord statistics = {};
  status = CorvaneAPIGetStatistics(device, &statistics);
  if (status != kSuccess) {
    puts("Failed to get statistics");
    return false;
  }
  putchar('\n');
  switch (statistics.version) {
    case 1:
      PrintVersion1(statistics);
      break;
    case 2:
      PrintVersion2(statistics);
      break;
    default:
      puts("Unsupported statistics version");
      return false;
  }
  DiskDumpStatus capture = {};
  status = CorvaneAPIDiskDumpGetStatus(device, &capture);
  if (status == kSuccess) PrintCapture(capture);
  return true;
}

}  // namespace

int Statistics(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const bool continuous = IsGiven(leaf, kContinuous.key);
  const int delay = std::max(0, Integer(leaf, kRefreshDelay.key, kDefaultDelayMs));
  int status = kSuccess;
  while (Report(session.device(), status) && continuous && FlushOutput()) {
    Wait(static_cast<uint32_t>(delay));
  }
  return status;
}

}  // namespace corvane
