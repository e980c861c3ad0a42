/*
 * A device library that answers at once: one device with every capability, records of zeros, no
 * state, no waiting. All further cost of a run is the utility's own.
 */
#include <string.h>

#include "device/corvane_api.h"

enum { kTypeCode = 11, kVersion = 0x00000102 };

static const uint32_t kAllCapabilities = 0x03FFFFFF;
static const uint8_t kMac[CORVANE_MAC_SIZE] = {0x02, 0x00, 0x00, 0x00, 0x00, 0x01};

static DeviceNode the_device = {.next = NULL, .handle = 1};
static DeviceList the_list = {.first = &the_device, .count = 1};

/* Functions that succeed at once; FILLS answers with a record of zeros. */
#define ACCEPTS(function)                 \
  int32_t function(DeviceHandle device) { \
    (void)device;                         \
    return CORVANE_OK;                    \
  }
#define ACCEPTS_RECORD(function, Record)                 \
  int32_t function(DeviceHandle device, Record record) { \
    (void)device;                                        \
    (void)record;                                        \
    return CORVANE_OK;                                   \
  }
#define FILLS(function, Record)                           \
  int32_t function(DeviceHandle device, Record* record) { \
    (void)device;                                         \
    memset(record, 0, sizeof *record);                    \
    return CORVANE_OK;                                    \
  }

int32_t CorvaneAPIInitialize(void) {
  return CORVANE_OK;
}

int32_t CorvaneAPIUninitialize(void) {
  return CORVANE_OK;
}

DeviceList* CorvaneAPIGetDevicesList(void) {
  return &the_list;
}

void CorvaneApiDeviceListFree(DeviceList* list) {
  (void)list;
}

void CorvaneApiSleepMs(uint32_t milliseconds) {
  (void)milliseconds;
}

int32_t CorvaneAPIGetDeviceType(DeviceHandle device, int32_t* type_code) {
  (void)device;
  *type_code = kTypeCode;
  return CORVANE_OK;
}

int32_t CorvaneAPIGetDeviceMAC(DeviceHandle device, uint8_t* mac) {
  (void)device;
  memcpy(mac, kMac, sizeof kMac);
  return CORVANE_OK;
}

uint32_t CorvaneAPIGetDeviceCapabilitiesEx(DeviceHandle device) {
  (void)device;
  return kAllCapabilities;
}

uint32_t CorvaneAPIGetVersion(void) {
  return kVersion;
}

FILLS(CorvaneAPIGetVersions, VersionRecord)

FILLS(CorvaneAPIGetDeviceFeatures, FeaturesRecord)
ACCEPTS_RECORD(CorvaneAPISetDeviceFeatures, FeaturesRecord)
ACCEPTS(CorvaneAPISaveDeviceFeatures)
ACCEPTS(CorvaneAPIRestartDevice)

int32_t CorvaneAPIGetHwFirmwaresDesc(DeviceHandle device, HwFirmwaresDesc* firmwares) {
  (void)device;
  *firmwares = (HwFirmwaresDesc){.count = 2, .names = {"10G", "1G"}};
  return CORVANE_OK;
}

FILLS(CorvaneAPIGetDevicePortsSpeed, PortsSpeedRecord)
ACCEPTS_RECORD(CorvaneAPISetDevicePortsSpeed, PortsSpeedRecord)

/* Every section is present and as long as possible, so that the reports are, too. */
int32_t CorvaneAPIGetLinkStatus(DeviceHandle device, LinkStatusRecord* status) {
  (void)device;
  *status = (LinkStatusRecord){.link_valid = 1,
                               .sfp_valid = 1,
                               .sfp_count = CORVANE_PORTS,
                               .sfps = {{.link_up = 1}, {.link_up = 1}},
                               .phy_valid = 1,
                               .phy_count = CORVANE_PORTS};
  return CORVANE_OK;
}

FILLS(CorvaneAPIGetDpiFilter, DpiFilterRecord)
ACCEPTS_RECORD(CorvaneAPISetDpiFilter, DpiFilterRecord)
ACCEPTS(CorvaneAPISaveDpiFilter)

FILLS(CorvaneAPIPoeGetMeasures, PoeMeasures)

FILLS(CorvaneAPIDiskDumpGetStatus, DiskDumpStatus)
ACCEPTS_RECORD(CorvaneAPIDiskDumpSetConfig, DiskDumpConfig)
ACCEPTS_RECORD(CorvaneAPIDiskDumpSetConfigEx, DiskDumpConfigEx)
ACCEPTS(CorvaneAPIDiskDumpStart)
ACCEPTS(CorvaneAPIDiskDumpStop)

int32_t CorvaneAPIGetStatistics(DeviceHandle device, StatisticsRecord* statistics) {
  (void)device;
  memset(statistics, 0, sizeof *statistics);
  statistics->version = 2;
  return CORVANE_OK;
}

int32_t CorvaneAPIGetCounterV2(DeviceHandle device, uint32_t index, CounterV2Config* counter) {
  (void)device;
  memset(counter, 0, sizeof *counter);
  counter->index = (int32_t)index;
  return CORVANE_OK;
}

ACCEPTS_RECORD(CorvaneAPISetCounterV2, CounterV2Config)

ACCEPTS_RECORD(CorvaneAPIFirmwareUpdateStart, const wchar_t*)

int32_t CorvaneAPIFirmwareUpdateGetProgress(DeviceHandle device, int32_t* percent) {
  (void)device;
  *percent = 100;
  return CORVANE_OK;
}

FILLS(CorvaneAPIGetPacketFilter, PacketFilterRecord)
ACCEPTS_RECORD(CorvaneAPISetPacketFilter, PacketFilterRecord)
ACCEPTS(CorvaneAPISavePacketFilter)
FILLS(CorvaneAPIGetPacketsTypeFilter, PacketTypeFilterRecord)
ACCEPTS_RECORD(CorvaneAPISetPacketsTypeFilter, PacketTypeFilterRecord)

FILLS(CorvaneAPIGetTimingStatus, TimingStatusRecord)
ACCEPTS_RECORD(CorvaneAPISetTimingTime, TimingTimeRecord)

ACCEPTS(CorvaneAPIGPSOutputFlush)

/* Fails, so that a stream of sentences ends. */
int32_t CorvaneAPIGPSOutputRead(DeviceHandle device, char* buffer, int32_t capacity,
                                int32_t* count) {
  (void)device;
  (void)buffer;
  (void)capacity;
  *count = 0;
  return CORVANE_GPS_OUTPUT_NOT_SUPPORTED;
}
