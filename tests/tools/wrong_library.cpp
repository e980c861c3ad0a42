// A device library that is the simulator, but for the one fault that CORVANE_WRONG names.
#ifdef WITHOUT_A_FUNCTION
#define CorvaneAPIPoeGetMeasures CorvaneAPIPoeGetNothing
#endif
#include <dlfcn.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "device/corvane_api_functions.h"

namespace {

template <class Function>
Function* Next(const char* name) {
  static void* const simulator = dlopen(SIMULATOR, RTLD_NOW | RTLD_LOCAL);
  return reinterpret_cast<Function*>(dlsym(simulator, name));
}

bool Is(std::string_view fault) {
  const char* name = getenv("CORVANE_WRONG");
  return name != nullptr && fault == name;
}

uint8_t next_byte = 0;
bool list_is_gone = false;

// What is wrong with a record that was read, by its type.
template <class Record>
void Spoil(Record*) {}
void Spoil(PortsSpeedRecord* record) {
  if (Is("longer")) memset(record + 1, 0, 4);
  if (Is("earlier")) reinterpret_cast<uint8_t*>(record)[-1] = 0;
}
void Spoil(FeaturesRecord* record) {
  if (Is("enumeration")) record->tssource = 9;
  if (Is("moving")) record->slicing_size = ++next_byte;
}
void Spoil(HwFirmwaresDesc* record) {
  if (Is("count")) record->count = 5;
}
void Spoil(LinkStatusRecord* record) {
  if (Is("endless")) memset(record->sfps[0].model, 'A', sizeof record->sfps[0].model);
}
void Spoil(TimingStatusRecord* record) {
  if (Is("nan")) record->pps_deviation = std::numeric_limits<double>::quiet_NaN();
}
void Spoil(DpiFilterRecord* record) {
  if (Is("padding")) record->reserved_20[3] = ++next_byte;
}
void Spoil(StatisticsRecord*) {
  if (Is("crash")) raise(SIGSEGV);
}

template <class Record>
int32_t Get(const char* name, DeviceHandle device, Record* record) {
  static DeviceHandle known = 0;
  Record before;
  memcpy(&before, record, sizeof before);
  if (Is("any handle") && device == CORVANE_NO_DEVICE) device = known;
  known = device;
  if (list_is_gone && Is("dead handles")) return CORVANE_DEVICE_NOT_FOUND;
  if (list_is_gone && Is("deadly handles")) raise(SIGSEGV);
  const int32_t status = Next<int32_t(DeviceHandle, Record*)>(name)(device, record);
  if (status == CORVANE_OK) Spoil(record);
  if (Is("shorter") && sizeof *record == sizeof(FeaturesRecord)) {
    constexpr size_t kLast = sizeof *record - sizeof(uint8_t);
    reinterpret_cast<uint8_t*>(record)[kLast] = reinterpret_cast<uint8_t*>(&before)[kLast];
  }
  return Is("positive") ? std::abs(status) : status;
}

template <class Record>
int32_t Set(const char* name, DeviceHandle device, Record record) {
  if constexpr (std::is_same_v<Record, DpiFilterRecord>) {
    if (Is("ignored")) return CORVANE_OK;
  }
  if constexpr (std::is_same_v<Record, PortsSpeedRecord>) {
    if (Is("both ports")) record.ports[1] = record.ports[0];
  }
  if constexpr (std::is_same_v<Record, TimingTimeRecord>) {  // three numbers of 64 bits
    if (Is("time size")) record = {record.time_source, record.nanoseconds, 0};
  }
  const int32_t status = Next<int32_t(DeviceHandle, Record)>(name)(device, record);
  return Is("set status") ? 1 : status;
}

// The other functions, with what is wrong with their result.
template <class Result>
Result Spoilt(const char*, Result result) {
  return result;
}
uint32_t Spoilt(const char* name, uint32_t mask) {
  const bool is_mask = std::string_view(name) == "CorvaneAPIGetDeviceCapabilitiesEx";
  return is_mask && Is("mask") ? mask ^ CORVANE_CAP_SPEED_CONTROL : mask;
}
DeviceList* Spoilt(const char*, DeviceList* list) {
  if (Is("list") && list != nullptr) ++list->count;
  return list;
}
int32_t Spoilt(const char* name, int32_t status) {
  return Is("open") && std::string_view(name) == "CorvaneAPIInitialize" ? 7 : status;
}

template <class Function>
struct Other;
template <class Result, class... In>
struct Other<Result(In...)> {
  const char* name;
  Result operator()(In... in) {
    if constexpr (std::is_same_v<Result(In...), decltype(CorvaneApiSleepMs)>) {
      if (Is("sleep")) return;
    }
    if constexpr (std::is_same_v<Result(In...), decltype(CorvaneApiDeviceListFree)>)
      list_is_gone = true;
    if constexpr (std::is_same_v<Result(In...), decltype(CorvaneAPIGetDeviceMAC)>) {
      int32_t type = 0;
      if (Is("calls itself")) CorvaneAPIGetDeviceType(std::get<0>(std::tie(in...)), &type);
    }
    if constexpr (std::is_void_v<Result>) {
      Next<Result(In...)>(name)(in...);
    } else if constexpr (sizeof...(In) == 4) {  // the GPS output
      return Read(in...);
    } else {
      return Spoilt(name, Next<Result(In...)>(name)(in...));
    }
  }
  int32_t Read(DeviceHandle device, char* buffer, int32_t capacity, int32_t* count) {
    const int32_t status = Next<Result(In...)>(name)(device, buffer, capacity, count);
    if (Is("hang")) pause();
    if (Is("gps count")) *count = capacity + 1;
    if (Is("gps bytes")) buffer[capacity] = '\0';
    return status;
  }
};

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-macro-parentheses): types and lists of arguments
#define OTHER(result, name, parameters, arguments) \
  result name parameters {                         \
    return Other<decltype(name)>{#name} arguments; \
  }
#define GET(name, Record)                                                \
  int32_t name(DeviceHandle device, std::add_pointer_t<Record> record) { \
    return Get(#name, device, record);                                   \
  }
#define SET(name, Record)                            \
  int32_t name(DeviceHandle device, Record record) { \
    return Set(#name, device, record);               \
  }
#define DO(name) OTHER(int32_t, name, (DeviceHandle device), (device))
// NOLINTEND(bugprone-macro-parentheses)
CORVANE_API_FUNCTIONS(GET, SET, DO, OTHER)

}  // extern "C"
