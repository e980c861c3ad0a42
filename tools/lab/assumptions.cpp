#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>

#include "check.h"
#include "fields.h"

namespace lab {

namespace {

using simulator::FieldKind;

constexpr size_t kGuard = 64;  // bytes before and behind a record
constexpr uint8_t kPoisons[] = {0xA5, 0x5A};
constexpr uint32_t kKnownCapabilities = 2 * CORVANE_CAP_VLAN_FILTER - 1;
constexpr int64_t kSecond = 1'000'000'000;  // ns

Outcome Judge(const std::string& faults, const std::string& seen) {
  if (faults.empty()) return {Verdict::kOk, seen};
  return {Verdict::kDiffers, faults.substr(0, faults.size() - 2)};
}

int64_t NowNs(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return int64_t{now.tv_sec} * kSecond + now.tv_nsec;
}

// ---- Reading into guarded buffers

struct Guarded {
  int32_t status;
  Bytes bytes;       // of the record
  std::string harm;  // what is wrong around it
};

Guarded ReadGuarded(const Reading& reading, DeviceHandle device, uint32_t index, uint8_t poison) {
  Bytes buffer(kGuard + reading.size + kGuard, poison);
  uint8_t* const record = buffer.data() + kGuard;
  const int32_t status = reading.get(device, index, record);
  const auto touched = [poison](uint8_t byte) { return byte != poison; };
  Guarded result = {status, Bytes(record, record + reading.size), ""};
  if (std::any_of(buffer.data(), record, touched)) result.harm = "writes before its record";
  const auto last = std::find_if(buffer.rbegin(), buffer.rbegin() + kGuard, touched);
  const auto behind = kGuard - static_cast<size_t>(last - buffer.rbegin());
  if (behind > 0) result.harm = "writes " + std::to_string(behind) + " bytes behind its record";
  return result;
}

// Calls work(reading, index) for every record that the device must have.
template <class Work>
int ForRecords(const Subject& subject, bool settings, Work work) {
  int count = 0;
  for (const Reading& reading : AllReadings()) {
    if (!Offers(subject.capabilities, reading)) continue;
    if (settings && reading.set == nullptr) continue;
    for (uint32_t index = 0; index < reading.count; ++index, ++count) work(reading, index);
  }
  return count;
}

std::string NameOf(const Reading& reading, uint32_t index) {
  return reading.count == 1 ? reading.name
                            : std::string(reading.name) + " " + std::to_string(index);
}

std::string Fault(const Reading& reading, uint32_t index, const std::string& what) {
  return NameOf(reading, index) + ": " + what + "; ";
}

bool Read(const Reading& reading, const Subject& subject, uint32_t index, Bytes& record) {
  record.assign(reading.size + kGuard, 0);  // a library that writes too much harms nothing here
  const bool ok = reading.get(subject.device.handle, index, record.data()) == CORVANE_OK;
  record.resize(reading.size);
  return ok;
}

// Which bytes of a record belong to no field.
std::vector<bool> PaddingOf(const Reading& reading) {
  std::vector<bool> padding(reading.size, true);
  for (const Place& place : PlacesOf(reading)) {
    std::fill_n(padding.begin() + static_cast<ptrdiff_t>(place.offset), place.field.width, false);
  }
  return padding;
}

// ---- The library as a whole

Outcome HasAllSymbols(Subject& /*subject*/) {
  std::string missing;
  int count = 0;
#define ROW(name) \
  ++count;        \
  if (FindFunction(#name) == nullptr) missing += std::string("no ") + #name + "; ";
#define GET(name, Record) ROW(name)
#define OTHER(result, name, parameters, arguments) ROW(name)
  CORVANE_API_FUNCTIONS(GET, GET, ROW, OTHER)
  return Judge(missing, std::to_string(count) + " functions");
}

Outcome Opens(Subject& subject) {
  OpenSubject(subject);
  const std::string seen = "status " + std::to_string(subject.open_status);
  return {subject.open_status == CORVANE_OK ? Verdict::kOk : Verdict::kDiffers, seen};
}

std::string FileText(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::string text;
  std::getline(file, text);
  return text;
}

// A device of the maker tells its name.
bool IsCorvane(const std::filesystem::path& folder) {
  std::string text = FileText(folder / "manufacturer") + FileText(folder / "product");
  std::ranges::transform(text, text.begin(), [](unsigned char each) { return tolower(each); });
  return text.find("corvane") != std::string::npos;
}

Outcome MayUseUsb(Subject& /*subject*/) {
  std::error_code ignored;
  std::string faults;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/sys/bus/usb/devices", ignored)) {
    if (!IsCorvane(entry.path())) continue;
    ++count;
    char node[64];
    snprintf(node, sizeof node, "/dev/bus/usb/%03d/%03d",
             atoi(FileText(entry.path() / "busnum").c_str()),
             atoi(FileText(entry.path() / "devnum").c_str()));
    if (access(node, R_OK | W_OK) == 0) continue;
    faults += std::string(node) +
              " may not be used: write 'SUBSYSTEM==\"usb\", ATTR{idVendor}==\"" +
              FileText(entry.path() / "idVendor") +
              "\", TAG+=\"uaccess\"' to /etc/udev/rules.d/70-corvane.rules and plug the device in "
              "again; ";
  }
  if (count == 0) return {Verdict::kNotTried, "no USB device here has Corvane in its name"};
  return Judge(faults, std::to_string(count) + " USB devices");
}

Outcome ListIsWhole(Subject& /*subject*/) {
  const DeviceList* list = LIBRARY(CorvaneAPIGetDevicesList)();
  if (list == nullptr) return {Verdict::kDiffers, "no list"};
  std::string faults;
  std::set<DeviceHandle> handles;
  int32_t count = 0;
  for (const DeviceNode* node = list->first; node != nullptr && count <= 1000; node = node->next) {
    ++count;
    if (node->handle == CORVANE_NO_DEVICE) faults += "a handle is that of no device; ";
    if (!handles.insert(node->handle).second) faults += "a handle comes twice; ";
  }
  const std::string nodes = std::to_string(count) + " devices";
  if (count != list->count)
    faults += nodes + ", the count says " + std::to_string(list->count) + "; ";
  return Judge(faults, nodes);
}

Outcome SleepsAsLong(Subject& /*subject*/) {
  constexpr int64_t kMs = 1'000'000;
  const int64_t start = NowNs(CLOCK_MONOTONIC);
  LIBRARY(CorvaneApiSleepMs)(50);
  const int64_t took = (NowNs(CLOCK_MONOTONIC) - start) / kMs;
  return {took >= 50 && took < 1000 ? Verdict::kOk : Verdict::kDiffers,
          "50 ms took " + std::to_string(took) + " ms"};
}

// ---- Records

Outcome WritesExactly(Subject& subject) {
  std::string faults;
  const int count = ForRecords(subject, false, [&](const Reading& reading, uint32_t index) {
    const Guarded reads[] = {ReadGuarded(reading, subject.device.handle, index, kPoisons[0]),
                             ReadGuarded(reading, subject.device.handle, index, kPoisons[1])};
    size_t untouched = 0;
    for (size_t i = 0; i < reading.size; ++i) {
      const bool both = reads[0].bytes[i] == kPoisons[0] && reads[1].bytes[i] == kPoisons[1];
      untouched += both ? 1 : 0;
    }
    if (reads[0].status != CORVANE_OK) return;
    if (!reads[0].harm.empty()) faults += Fault(reading, index, reads[0].harm);
    if (untouched == 0) return;
    faults += Fault(reading, index, "leaves " + std::to_string(untouched) + " bytes as they were");
  });
  return Judge(faults, std::to_string(count) + " records");
}

Outcome AgreesWithItself(Subject& subject) {
  std::string faults;
  int count = 0;
  ForRecords(subject, false, [&](const Reading& reading, uint32_t index) {
    Bytes first;
    Bytes second;
    if (reading.moves || !Read(reading, subject, index, first)) return;
    ++count;
    if (Read(reading, subject, index, second) && first != second)
      faults += Fault(reading, index, "two reads differ");
  });
  return Judge(faults, std::to_string(count) + " records");
}

std::string FaultOfNumber(const Reading& reading, const Place& place, const Bytes& record) {
  int64_t least = 0;
  int64_t most = 0;
  if (!FindRange(reading, place, least, most)) return "";
  const int64_t number = NumberAt(place, record);
  const bool negative = number < 0 && most == UINT32_MAX;
  if (negative || (number >= least && number <= most)) return "";
  return place.path + " is " + std::to_string(number) + ", not " + std::to_string(least) + " to " +
         std::to_string(most);
}

std::string FaultOfFloat(const Place& place, const Bytes& record) {
  const std::string text = TextOf(place, record);
  return std::isfinite(strtod(text.c_str(), nullptr)) ? "" : place.path + " is " + text;
}

std::string FaultOfText(const Place& place, const Bytes& record) {
  const auto* start = reinterpret_cast<const char*>(&record[place.offset]);
  const size_t size = strnlen(start, place.field.width);
  if (size == place.field.width) return place.path + " has no end";
  const auto strange = [](unsigned char letter) { return isprint(letter) == 0; };
  return std::any_of(start, start + size, strange) ? place.path + " has other than letters" : "";
}

// The faults of the places that `fault_of` finds, in all records.
template <class FaultOf>
Outcome LookAtFields(Subject& subject, FaultOf fault_of) {
  std::string faults;
  int count = 0;
  ForRecords(subject, false, [&](const Reading& reading, uint32_t index) {
    Bytes record;
    if (!Read(reading, subject, index, record)) return;
    for (const Place& place : PlacesOf(reading)) {
      const std::string fault = fault_of(reading, place, record);
      if (!fault.empty()) faults += Fault(reading, index, fault);
      ++count;
    }
  });
  return Judge(faults, std::to_string(count) + " fields looked at");
}

Outcome NumbersAreInRange(Subject& subject) {
  return LookAtFields(subject, [](const Reading& reading, const Place& place, const Bytes& record) {
    if (place.field.kind == FieldKind::kFloat) return FaultOfFloat(place, record);
    return FaultOfNumber(reading, place, record);
  });
}

Outcome TextsEnd(Subject& subject) {
  return LookAtFields(subject, [](const Reading&, const Place& place, const Bytes& record) {
    return place.field.kind == FieldKind::kText ? FaultOfText(place, record) : std::string();
  });
}

// What stands in padding is of no interest, but a caller sends it back: it must not move.
Outcome PaddingStays(Subject& subject) {
  std::string faults;
  std::string filled;
  ForRecords(subject, false, [&](const Reading& reading, uint32_t index) {
    const Guarded first = ReadGuarded(reading, subject.device.handle, index, kPoisons[0]);
    const Guarded second = ReadGuarded(reading, subject.device.handle, index, kPoisons[1]);
    const std::vector<bool> padding = PaddingOf(reading);
    if (first.status != CORVANE_OK || (reading.moves && reading.set == nullptr)) return;
    bool zero = true;
    for (size_t i = 0; i < reading.size; ++i) {
      if (!padding[i]) continue;
      zero = zero && first.bytes[i] == 0;
      if (first.bytes[i] == second.bytes[i]) continue;
      faults += Fault(reading, index, "byte " + std::to_string(i) + " moves");
      return;
    }
    if (!zero && reading.count == 1)
      filled += std::string(filled.empty() ? "" : ", ") + reading.name;
  });
  return Judge(faults, filled.empty() ? "all zeros" : "not all zeros in " + filled);
}

Outcome StatusesAreNegative(Subject& subject) {
  std::string faults;
  int failures = 0;
  for (const Reading& reading : AllReadings()) {
    const Guarded read = ReadGuarded(reading, subject.device.handle, 0, 0);
    failures += read.status == CORVANE_OK ? 0 : 1;
    if (read.status > 0) faults += Fault(reading, 0, "status " + std::to_string(read.status));
  }
  return Judge(faults, std::to_string(failures) + " failures");
}

Outcome MaskTellsTheTruth(Subject& subject) {
  std::string faults;
  for (const Reading& reading : AllReadings()) {
    const bool offered = Offers(subject.capabilities, reading);
    const int32_t status = ReadGuarded(reading, subject.device.handle, 0, 0).status;
    if (offered == (status == CORVANE_OK)) continue;
    faults += Fault(
        reading, 0,
        std::string(offered ? "offered" : "not offered") + ", status " + std::to_string(status));
  }
  if ((subject.capabilities & ~kKnownCapabilities) != 0) faults += "unknown bits in the mask; ";
  char mask[32];
  snprintf(mask, sizeof mask, "mask 0x%x", subject.capabilities);
  return Judge(faults, mask);
}

// With text to read, as far as a device sends any within a second.
Outcome GpsReadsFit(Subject& subject) {
  constexpr int32_t kCapacity = 32;
  constexpr int kAttempts = 24;
  constexpr useconds_t kPauseUs = 50'000;
  int32_t most = 0;
  for (int attempt = 0; attempt < kAttempts && most == 0; ++attempt) {
    char buffer[kCapacity + kGuard];
    memset(buffer, kPoisons[0], sizeof buffer);
    int32_t count = -1;
    const int32_t status =
        LIBRARY(CorvaneAPIGPSOutputRead)(subject.device.handle, buffer, kCapacity, &count);
    const bool offered = (subject.capabilities & CORVANE_CAP_GPS) != 0;
    if (!offered || status != CORVANE_OK) {
      const bool as_assumed = !offered && status == CORVANE_GPS_OUTPUT_NOT_SUPPORTED;
      return {as_assumed ? Verdict::kOk : Verdict::kDiffers, "status " + std::to_string(status)};
    }
    const auto touched = [](char byte) { return static_cast<uint8_t>(byte) != kPoisons[0]; };
    if (std::any_of(buffer + kCapacity, std::end(buffer), touched))
      return {Verdict::kDiffers, "writes behind its buffer"};
    if (count < 0 || count > kCapacity)
      return {Verdict::kDiffers, std::to_string(count) + " bytes in a buffer of 32"};
    most = std::max(most, count);
    if (most == 0) usleep(kPauseUs);
  }
  return {Verdict::kOk, most == 0 ? "nothing to read" : std::to_string(most) + " bytes"};
}

// ---- Handles

Outcome RefusesWrongHandles(Subject& subject) {
  std::string faults;
  for (const DeviceHandle wrong : {CORVANE_NO_DEVICE, ~subject.device.handle, DeviceHandle{0}}) {
    const int32_t status = ReadGuarded(AllReadings()[2], wrong, 0, 0).status;
    if (status != CORVANE_DEVICE_NOT_FOUND) faults += "status " + std::to_string(status) + "; ";
  }
  return Judge(faults, "status -4");
}

// The handle of the device in a list of its own.
DeviceHandle HandleIn(const DeviceList* list, const Subject& subject) {
  const DeviceNode* node = list == nullptr ? nullptr : list->first;
  for (const Device& device : subject.devices) {
    if (node == nullptr) break;
    if (device.handle == subject.device.handle) return node->handle;
    node = node->next;
  }
  return CORVANE_NO_DEVICE;
}

int32_t StatusFor(DeviceHandle handle) {
  int32_t type = 0;
  return LIBRARY(CorvaneAPIGetDeviceType)(handle, &type);
}

Outcome OutlivesOtherLists(Subject& subject) {
  DeviceList* const first = LIBRARY(CorvaneAPIGetDevicesList)();
  const DeviceHandle kept = HandleIn(LIBRARY(CorvaneAPIGetDevicesList)(), subject);
  if (StatusFor(kept) != CORVANE_OK) return {Verdict::kDiffers, "two lists at once do not work"};
  if (first != nullptr) LIBRARY(CorvaneApiDeviceListFree)(first);
  const int32_t after = StatusFor(kept);
  return {after == CORVANE_OK ? Verdict::kOk : Verdict::kDiffers,
          "status " + std::to_string(after) + " after another list was given back"};
}

Outcome SurvivesItsList(Subject& subject) {
  DeviceList* const list = LIBRARY(CorvaneAPIGetDevicesList)();
  const DeviceHandle handle = HandleIn(list, subject);
  if (list != nullptr) LIBRARY(CorvaneApiDeviceListFree)(list);
  return {Verdict::kOk, "status " + std::to_string(StatusFor(handle)) + " afterwards"};
}

// ---- Writing

Outcome SetsTheSame(Subject& subject) {
  std::string faults;
  const int count = ForRecords(subject, true, [&](const Reading& reading, uint32_t index) {
    Bytes before;
    Bytes after;
    if (subject.shared.stop || !Read(reading, subject, index, before)) return;
    const int32_t status = reading.set(subject.device.handle, before.data());
    const bool read = Read(reading, subject, index, after);
    if (status != CORVANE_OK) {
      faults += Fault(reading, index, "status " + std::to_string(status));
    } else if (!read || before != after) {
      faults += Fault(reading, index, "is another one after it was set");
    }
  });
  return Judge(faults, std::to_string(count) + " records");
}

// Another value for the field; false when none is known.
bool Change(const Reading& reading, const Place& place, Bytes& record) {
  int64_t least = 0;
  int64_t most = 0;
  if (place.field.kind == FieldKind::kBytes) {
    record[place.offset] ^= 0xFF;
    return true;
  }
  if (!FindRange(reading, place, least, most)) return false;
  const int64_t other = NumberAt(place, record) == least ? least + 1 : least;
  memcpy(&record[place.offset], &other, place.field.width);
  return true;
}

// The value before comes back with the next one, and with the original at the end.
std::string ChangeEach(const Reading& reading, Subject& subject, const Bytes& original) {
  std::string faults;
  Bytes after;
  const auto sets = [&](const Bytes& wanted) {
    return reading.set(subject.device.handle, wanted.data()) == CORVANE_OK &&
           Read(reading, subject, 0, after) && after == wanted;
  };
  for (const Place& place : PlacesOf(reading)) {
    Bytes wanted = original;
    if (subject.shared.stop) break;
    if (Change(reading, place, wanted) && !sets(wanted))
      faults += Fault(reading, 0, place.path + " does not become " + TextOf(place, wanted));
  }
  if (!sets(original)) faults += Fault(reading, 0, "does not come back");
  return faults;
}

Outcome SetsEachField(Subject& subject) {
  std::string faults;
  int count = 0;
  ForRecords(subject, true, [&](const Reading& reading, uint32_t index) {
    Bytes original;
    if (index != 0 || subject.shared.stop || !Read(reading, subject, 0, original)) return;
    faults += ChangeEach(reading, subject, original);
    count += static_cast<int>(PlacesOf(reading).size());
  });
  return Judge(faults, std::to_string(count) + " fields");
}

int64_t RtcSeconds(const TimingStatusRecord& status) {
  tm utc = {};
  utc.tm_hour = static_cast<int>(status.rtc_hour);
  utc.tm_min = static_cast<int>(status.rtc_minute);
  utc.tm_sec = static_cast<int>(status.rtc_second);
  utc.tm_year = static_cast<int>(status.rtc_year) - 1900;
  utc.tm_mon = static_cast<int>(status.rtc_month) - 1;
  utc.tm_mday = static_cast<int>(status.rtc_day);
  return timegm(&utc);
}

// The source and the time that the clock would have now; the host's where it had that.
std::string RestoreClock(Subject& subject) {
  const auto& clock = subject.shared.clock;
  const int64_t passed = NowNs(CLOCK_MONOTONIC) - clock.read_at_ns;
  const int64_t host = NowNs(CLOCK_REALTIME);
  int64_t then = RtcSeconds(clock.status) * kSecond + passed;
  if (std::llabs(then - host) < 2 * kSecond) then = host;
  const TimingTimeRecord time = {clock.status.timestamp_source,
                                 static_cast<uint32_t>(then / kSecond),
                                 static_cast<uint32_t>(then % kSecond)};
  const int32_t status = LIBRARY(CorvaneAPISetTimingTime)(subject.device.handle, time);
  return status == CORVANE_OK ? "" : "clock: status " + std::to_string(status) + "; ";
}

Outcome SetsTheClock(Subject& subject) {
  constexpr uint32_t kTime = 1'000'000'000;  // in 2001
  auto& clock = subject.shared.clock;
  if ((subject.capabilities & CORVANE_CAP_GPS) == 0)
    return {Verdict::kNotTried, "the device has no clock"};
  if (LIBRARY(CorvaneAPIGetTimingStatus)(subject.device.handle, &clock.status) != CORVANE_OK)
    return {Verdict::kNotTried, "the clock cannot be read"};
  const uint32_t source = clock.status.timestamp_source;
  if (source == CORVANE_TIME_RTC || source == CORVANE_TIME_NONE)
    return {Verdict::kNotTried, "its present source cannot be set again"};
  clock.read_at_ns = NowNs(CLOCK_MONOTONIC);
  clock.changed = true;
  const TimingTimeRecord time = {CORVANE_TIME_MANUAL, kTime, 0};
  const int32_t status = LIBRARY(CorvaneAPISetTimingTime)(subject.device.handle, time);
  TimingStatusRecord after = {};
  LIBRARY(CorvaneAPIGetTimingStatus)(subject.device.handle, &after);
  const int64_t off = RtcSeconds(after) - kTime;
  const std::string harm = RestoreClock(subject);
  const bool is_set = off >= 0 && off <= 2;
  if (harm.empty() || (status != CORVANE_OK && !is_set)) clock.changed = false;
  if (status != CORVANE_OK) return {Verdict::kDiffers, "status " + std::to_string(status)};
  return {harm.empty() && is_set ? Verdict::kOk : Verdict::kDiffers,
          harm + "the clock is " + std::to_string(off) + " s off"};
}

constexpr Assumption kAssumptions[] = {
    {"symbols", "The library has the 41 functions", Needs::kNothing, HasAllSymbols},
    {"usb", "The user may use the USB devices", Needs::kNothing, MayUseUsb},
    {"open", "The library opens with status 0", Needs::kNothing, Opens},
    {"list", "The list has as many devices as it counts, with different handles", Needs::kDevice,
     ListIsWhole},
    {"sleep", "CorvaneApiSleepMs sleeps for so many milliseconds", Needs::kDevice, SleepsAsLong},
    {"size", "A Get writes its whole record and nothing around it", Needs::kDevice, WritesExactly},
    {"repeat", "Two Gets of a setting agree", Needs::kDevice, AgreesWithItself},
    {"range", "Numbers are those that are documented", Needs::kDevice, NumbersAreInRange},
    {"text", "Texts end within their field", Needs::kDevice, TextsEnd},
    {"padding", "Bytes of no field stay what they are", Needs::kDevice, PaddingStays},
    {"status", "A failure has a negative status", Needs::kDevice, StatusesAreNegative},
    {"mask", "A record can be read when the capability mask says so, and only then", Needs::kDevice,
     MaskTellsTheTruth},
    {"gps", "A read of the GPS output fits its buffer; without GPS it gets -5", Needs::kDevice,
     GpsReadsFit},
    {"set-same", "Set what Get gave changes nothing", Needs::kWriting, SetsTheSame},
    {"set-other", "Each field takes another value, alone, and the old one again", Needs::kWriting,
     SetsEachField},
    {"clock", "The clock takes a time in seconds and nanoseconds", Needs::kWriting, SetsTheClock},
    // These may end the process.
    {"wrong-handle", "A handle of no device gets -4", Needs::kDevice, RefusesWrongHandles},
    {"other-list", "A handle works after another list was given back", Needs::kDevice,
     OutlivesOtherLists},
    {"own-list", "A handle whose list was given back gets a status", Needs::kDevice,
     SurvivesItsList},
};
static_assert(std::size(kAssumptions) < kMostRows);  // one more is for what was put back

}  // namespace

std::span<const Assumption> AllAssumptions() {
  return kAssumptions;
}

bool OpenSubject(Subject& subject) {
  if (!subject.opened) {
    subject.opened = true;
    subject.open_status = LIBRARY(CorvaneAPIInitialize)();
    if (subject.open_status != CORVANE_OK) return false;
    subject.devices = FindDevices();
    const std::vector<Device> selected = SelectDevices(subject.devices, subject.wanted);
    if (selected.size() != 1) return false;
    subject.device = selected[0];
    subject.capabilities = LIBRARY(CorvaneAPIGetDeviceCapabilitiesEx)(subject.device.handle);
  }
  return subject.device.handle != CORVANE_NO_DEVICE;
}

void NoteOriginals(Subject& subject) {
  size_t number = 0;
  ForRecords(subject, true, [&](const Reading& reading, uint32_t index) {
    auto& original = subject.shared.originals[number++];
    Bytes record;
    if (original.valid || !Read(reading, subject, index, record)) return;
    memcpy(original.bytes, record.data(), record.size());
    original.valid = true;
  });
}

std::string RestoreOriginals(Subject& subject) {
  std::string faults;
  size_t number = 0;
  if (subject.shared.clock.changed) faults += RestoreClock(subject);
  ForRecords(subject, true, [&](const Reading& reading, uint32_t index) {
    const auto& original = subject.shared.originals[number++];
    if (!original.valid) return;
    const Bytes wanted(original.bytes, original.bytes + reading.size);
    Bytes present;
    if (Read(reading, subject, index, present) && present == wanted) return;
    const int32_t status = reading.set(subject.device.handle, wanted.data());
    const bool back = Read(reading, subject, index, present) && present == wanted;
    if (!back) faults += Fault(reading, index, "NOT put back, status " + std::to_string(status));
  });
  return faults;
}

}  // namespace lab
