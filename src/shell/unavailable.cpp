// Leaf commands that this build does not have yet.
#include "device/report.h"
#include "device/status.h"
#include "shell/handlers.h"

namespace {

int Unavailable() {
  return Fail(kRejected, "not available in this build");
}

}  // namespace

int DirectCaptureStatus(const CommandNode&) {
  return Unavailable();
}
int DirectCaptureStart(const CommandNode&) {
  return Unavailable();
}
int DirectCaptureStop(const CommandNode&) {
  return Unavailable();
}
int Statistics(const CommandNode&) {
  return Unavailable();
}
int CountersSet(const CommandNode&) {
  return Unavailable();
}
int CountersShow(const CommandNode&) {
  return Unavailable();
}
int FirmwareUpdate(const CommandNode&) {
  return Unavailable();
}
int PortControlSet(const CommandNode&) {
  return Unavailable();
}
int PortControlShow(const CommandNode&) {
  return Unavailable();
}
int PortStatus(const CommandNode&) {
  return Unavailable();
}
int SfpStatus(const CommandNode&) {
  return Unavailable();
}
int DpiEnable(const CommandNode&) {
  return Unavailable();
}
int DpiDisable(const CommandNode&) {
  return Unavailable();
}
int DpiSave(const CommandNode&) {
  return Unavailable();
}
int DpiShow(const CommandNode&) {
  return Unavailable();
}
int PoeShow(const CommandNode&) {
  return Unavailable();
}
int FilterSet(const CommandNode&) {
  return Unavailable();
}
int FilterShow(const CommandNode&) {
  return Unavailable();
}
int PacketTypeFilterSet(const CommandNode&) {
  return Unavailable();
}
int PacketTypeFilterShow(const CommandNode&) {
  return Unavailable();
}
int TimingConfig(const CommandNode&) {
  return Unavailable();
}
int TimingSave(const CommandNode&) {
  return Unavailable();
}
int TimingStatus(const CommandNode&) {
  return Unavailable();
}
int TimingSetSntp(const CommandNode&) {
  return Unavailable();
}
int TimingSetGps(const CommandNode&) {
  return Unavailable();
}
int TimingSetManual(const CommandNode&) {
  return Unavailable();
}
int TimingSetSystem(const CommandNode&) {
  return Unavailable();
}
int Nmea(const CommandNode&) {
  return Unavailable();
}
