/*
 * The functions of the library as a table, for programs that need all of them: those that stand in
 * front of the library, and those that look its functions up. A row is one of
 *
 *   GET(name, record)                          int32_t name(DeviceHandle, record*)
 *   SET(name, record)                          int32_t name(DeviceHandle, record)
 *   DO(name)                                   int32_t name(DeviceHandle)
 *   OTHER(result, name, parameters, arguments)
 *
 * and CORVANE_API_FUNCTIONS(GET, SET, DO, OTHER) expands them with the macros given.
 */
#ifndef CORVANE_DEVICE_CORVANE_API_FUNCTIONS_H_
#define CORVANE_DEVICE_CORVANE_API_FUNCTIONS_H_

#include "device/corvane_api.h"

/* clang-format off */
#define CORVANE_API_FUNCTIONS(GET, SET, DO, OTHER)                                               \
  OTHER(int32_t, CorvaneAPIInitialize, (void), ())                                               \
  OTHER(int32_t, CorvaneAPIUninitialize, (void), ())                                             \
  OTHER(DeviceList*, CorvaneAPIGetDevicesList, (void), ())                                       \
  OTHER(void, CorvaneApiDeviceListFree, (DeviceList* list), (list))                              \
  OTHER(void, CorvaneApiSleepMs, (uint32_t milliseconds), (milliseconds))                        \
  OTHER(uint32_t, CorvaneAPIGetVersion, (void), ())                                              \
  OTHER(int32_t, CorvaneAPIGetDeviceMAC, (DeviceHandle device, uint8_t* mac), (device, mac))     \
  OTHER(uint32_t, CorvaneAPIGetDeviceCapabilitiesEx, (DeviceHandle device), (device))            \
  GET(CorvaneAPIGetDeviceType, int32_t)                                                          \
  GET(CorvaneAPIGetVersions, VersionRecord)                                                      \
  GET(CorvaneAPIGetDeviceFeatures, FeaturesRecord)                                               \
  SET(CorvaneAPISetDeviceFeatures, FeaturesRecord)                                               \
  DO(CorvaneAPISaveDeviceFeatures)                                                               \
  GET(CorvaneAPIGetHwFirmwaresDesc, HwFirmwaresDesc)                                             \
  DO(CorvaneAPIRestartDevice)                                                                    \
  GET(CorvaneAPIGetDevicePortsSpeed, PortsSpeedRecord)                                           \
  SET(CorvaneAPISetDevicePortsSpeed, PortsSpeedRecord)                                           \
  GET(CorvaneAPIGetLinkStatus, LinkStatusRecord)                                                 \
  GET(CorvaneAPIGetDpiFilter, DpiFilterRecord)                                                   \
  SET(CorvaneAPISetDpiFilter, DpiFilterRecord)                                                   \
  DO(CorvaneAPISaveDpiFilter)                                                                    \
  GET(CorvaneAPIPoeGetMeasures, PoeMeasures)                                                     \
  GET(CorvaneAPIDiskDumpGetStatus, DiskDumpStatus)                                               \
  OTHER(int32_t, CorvaneAPIDiskDumpSetConfig, (DeviceHandle device, DiskDumpConfig config),      \
        (device, config))                                                                        \
  OTHER(int32_t, CorvaneAPIDiskDumpSetConfigEx, (DeviceHandle device, DiskDumpConfigEx config),  \
        (device, config))                                                                        \
  DO(CorvaneAPIDiskDumpStart)                                                                    \
  DO(CorvaneAPIDiskDumpStop)                                                                     \
  GET(CorvaneAPIGetStatistics, StatisticsRecord)                                                 \
  OTHER(int32_t, CorvaneAPIGetCounterV2,                                                         \
        (DeviceHandle device, uint32_t index, CounterV2Config* counter), (device, index, counter)) \
  SET(CorvaneAPISetCounterV2, CounterV2Config)                                                   \
  OTHER(int32_t, CorvaneAPIFirmwareUpdateStart, (DeviceHandle device, const wchar_t* path),      \
        (device, path))                                                                          \
  OTHER(int32_t, CorvaneAPIFirmwareUpdateGetProgress, (DeviceHandle device, int32_t* percent),   \
        (device, percent))                                                                       \
  GET(CorvaneAPIGetPacketFilter, PacketFilterRecord)                                             \
  SET(CorvaneAPISetPacketFilter, PacketFilterRecord)                                             \
  DO(CorvaneAPISavePacketFilter)                                                                 \
  GET(CorvaneAPIGetPacketsTypeFilter, PacketTypeFilterRecord)                                    \
  SET(CorvaneAPISetPacketsTypeFilter, PacketTypeFilterRecord)                                    \
  GET(CorvaneAPIGetTimingStatus, TimingStatusRecord)                                             \
  SET(CorvaneAPISetTimingTime, TimingTimeRecord)                                                 \
  DO(CorvaneAPIGPSOutputFlush)                                                                   \
  OTHER(int32_t, CorvaneAPIGPSOutputRead,                                                        \
        (DeviceHandle device, char* buffer, int32_t capacity, int32_t* count),                   \
        (device, buffer, capacity, count))
/* clang-format on */

#endif /* CORVANE_DEVICE_CORVANE_API_FUNCTIONS_H_ */
