#include "capture/capture_start.h"

#include "console/status.h"
#include "device/capabilities.h"

namespace corvane {

namespace {

int Configure(DeviceHandle device, const std::variant<DiskDumpConfig, DiskDumpConfigEx>& config) {
  if (const auto* named = std::get_if<DiskDumpConfig>(&config)) {
    return CorvaneAPIDiskDumpSetConfig(device, *named);
  }
  return CorvaneAPIDiskDumpSetConfigEx(device, *std::get_if<DiskDumpConfigEx>(&config));
}

// The last counter counts what the hardware dropped, on both ports, and nothing else.
int ConfigureDropCounter(DeviceHandle device) {
  CounterV2Config counter = {};
  counter.index = CORVANE_COUNTERS_V2 - 1;
  for (int32_t* condition :
       {&counter.ipv4, &counter.ipv6, &counter.bcast, &counter.mcast, &counter.ucast, &counter.icmp,
        &counter.udp, &counter.tcp, &counter.crc_ok, &counter.size_mode}) {
    *condition = CORVANE_IGNORE;
  }
  counter.hw_dropped = CORVANE_COUNT_IF_TRUE;
  counter.porta = 1;
  counter.portb = 1;
  return CorvaneAPISetCounterV2(device, counter);
}

}  // namespace

CaptureStart StartCapture(DeviceHandle device,
                          const std::variant<DiskDumpConfig, DiskDumpConfigEx>& config) {
  DiskDumpStatus running = {};
  int status = CorvaneAPIDiskDumpGetStatus(device, &running);
  if (status != kSuccess) return {status, "Failed: cannot get status\n"};
  if (running.enabled != 0) return {kAlreadyRunning, "Failed: capture is already started"};

  status = Configure(device, config);
  if (status != kSuccess) return {status, "Failed: cannot set configuration"};
  if (Supports(device, CORVANE_CAP_STATISTICS_V2)) {
    status = ConfigureDropCounter(device);
    if (status != kSuccess) {
      return {status, "Failed: cannot set counters config for statistics V2"};
    }
  }
  status = CorvaneAPIDiskDumpStart(device);
  return {status, status == kSuccess ? "Capture started" : "Failed: cannot start capture"};
}

}  // namespace corvane
