// The library as a whole: opening, closing, the device list, sleeping, its version.
#include "library/library.h"

#include <chrono>
#include <map>
#include <memory>
#include <thread>

#include "library/call_frame.h"

using namespace simulator;

namespace {

// A list as callers get it, with its nodes.
struct OwnedList {
  DeviceList list;
  std::vector<DeviceNode> nodes;
};

// The lists that callers hold, some of them to the end of the process.
std::map<const DeviceList*, std::unique_ptr<OwnedList>>& HeldLists() {
  static std::map<const DeviceList*, std::unique_ptr<OwnedList>> lists;
  return lists;
}

}  // namespace

extern "C" {

int32_t CorvaneAPIInitialize(void) {
  if (!OpenLibrary()) return kStateFailed;
  const int32_t status = PlainCall(__func__);
  if (status != CORVANE_OK) CloseLibrary();
  return status;
}

int32_t CorvaneAPIUninitialize(void) {
  const int32_t status = PlainCall(__func__);
  CloseLibrary();
  return status;
}

DeviceList* CorvaneAPIGetDevicesList(void) {
  std::vector<DeviceHandle> handles;
  if (PlainCall(__func__) != CORVANE_OK || !TheLibrary().state.is_open()) return nullptr;
  if (!AttachedDevices(handles)) return nullptr;

  auto owned = std::make_unique<OwnedList>();
  for (const DeviceHandle handle : handles) owned->nodes.push_back({nullptr, handle});
  for (size_t i = 1; i < owned->nodes.size(); ++i) owned->nodes[i - 1].next = &owned->nodes[i];
  owned->list.first = owned->nodes.empty() ? nullptr : owned->nodes.data();
  const auto count = static_cast<int32_t>(owned->nodes.size());
  owned->list.count = TheLibrary().configuration.device_count.value_or(count);
  DeviceList* const list = &owned->list;
  HeldLists()[list] = std::move(owned);
  return list;
}

void CorvaneApiDeviceListFree(DeviceList* list) {
  PlainCall(__func__);
  const auto held = HeldLists().find(list);
  if (held == HeldLists().end()) return;
  // As strict as a library can be: what works here also works where handles live on.
  for (const DeviceNode& node : held->second->nodes) TheLibrary().handles.erase(node.handle);
  HeldLists().erase(held);
}

void CorvaneApiSleepMs(uint32_t milliseconds) {
  PlainCall(__func__, " milliseconds=" + std::to_string(milliseconds));
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

uint32_t CorvaneAPIGetVersion(void) {
  const uint32_t version = TheLibrary().configuration.library_version;
  PlainCall(__func__, HexArgument("record", &version, sizeof version));
  return version;
}

}  // extern "C"
