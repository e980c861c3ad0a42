#include "answers.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace lab {

namespace {

constexpr const char* kVersion = "CorvaneAPIGetVersion";

template <class Type, class Get>
Answer AskFor(const Get& get) {
  Answer answer = {CORVANE_OK, Bytes(sizeof(Type))};
  answer.status = get(reinterpret_cast<Type*>(answer.bytes.data()));
  if (answer.status != CORVANE_OK) answer.bytes.clear();
  return answer;
}

Answer AskFor(const Reading& reading, DeviceHandle device, uint32_t index) {
  Answer answer = {CORVANE_OK, Bytes(reading.size)};
  answer.status = reading.get(device, index, answer.bytes.data());
  if (answer.status != CORVANE_OK) answer.bytes.clear();
  return answer;
}

using Words = std::map<std::string, std::string>;

// " name=value name="text""; false when it is anything else. A text keeps its escapes.
bool ReadWords(std::string_view line, Words& words) {
  while (!line.empty()) {
    const size_t equals = line.find('=');
    if (line[0] != ' ' || equals == std::string_view::npos) return false;
    size_t end = equals + 1;
    const bool quoted = end < line.size() && line[end] == '"';
    if (quoted) {
      for (++end; end < line.size() && line[end] != '"'; ++end) end += line[end] == '\\' ? 1 : 0;
      if (end++ >= line.size()) return false;
    } else {
      end = std::min(line.find(' ', end), line.size());
    }
    words[std::string(line.substr(1, equals - 1))] = line.substr(equals + 1, end - equals - 1);
    line.remove_prefix(end);
  }
  return true;
}

template <class Number>
bool ReadNumber(const std::string& text, Number& number) {
  const char* end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data(), end, number);
  return failure == std::errc() && stop == end;
}

bool ReadBytes(const std::string& text, Bytes& bytes) {
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    uint8_t byte = 0;
    const auto [stop, failure] = std::from_chars(&text[i], &text[i] + 2, byte, 16);
    if (failure != std::errc() || stop != &text[i] + 2) return false;
    bytes.push_back(byte);
  }
  return text.size() % 2 == 0;
}

Answers& AnswersOf(const std::string& device, Source& source) {
  for (Answers& answers : source.devices) {
    if (answers.device == device) return answers;
  }
  return source.devices.emplace_back(Answers{device, {}});
}

// A record that was set is what the device has: it counts as that of the Get.
std::string GetOf(std::string function, Words& words, const Bytes& bytes) {
  for (const Reading& reading : AllReadings()) {
    if (reading.set_function == nullptr || function != reading.set_function) continue;
    if (reading.count > 1 && bytes.size() >= sizeof(uint32_t)) {
      uint32_t index = 0;
      memcpy(&index, bytes.data(), sizeof index);
      words["index"] = std::to_string(index);
    }
    return reading.get_function;
  }
  return function;
}

constexpr size_t kMacLength = 17;

bool IsMac(const std::string& text) {
  unsigned b[CORVANE_MAC_SIZE];
  char rest = 0;
  return text.size() == kMacLength &&
         text.find_first_not_of("0123456789abcdef:") == std::string::npos &&
         sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5],
                &rest) == CORVANE_MAC_SIZE;
}

bool ReadCall(const std::string& line, Source& source) {
  const size_t blank = line.find(' ');
  Words words;
  Answer answer = {};
  std::string function = line.substr(0, blank);
  if (!function.starts_with("Corvane") || blank == std::string::npos) return false;
  if (!ReadWords(std::string_view(line).substr(blank), words)) return false;
  if (!ReadNumber(words["status"], answer.status) || !ReadBytes(words["record"], answer.bytes))
    return false;
  if (function == kVersion && answer.bytes.size() == sizeof(uint32_t)) {
    memcpy(&source.library_version.emplace(), answer.bytes.data(), sizeof(uint32_t));
  }
  if (words["device"].size() != kMacLength) return true;  // none, or one that is not known
  if (!IsMac(words["device"])) return false;
  const std::string get = GetOf(function, words, answer.bytes);
  const bool is_set = get != function;
  std::optional<uint32_t> index;
  if (words.contains("index") && !ReadNumber(words["index"], index.emplace())) return false;
  if (is_set && answer.status != CORVANE_OK) return true;
  const auto [known, added] =
      AnswersOf(words["device"], source).of.try_emplace(KeyOf(get, index), answer);
  if (!added && (answer.status == CORVANE_OK || known->second.status != CORVANE_OK))
    known->second = answer;
  return true;
}

}  // namespace

std::string KeyOf(const std::string& function, std::optional<uint32_t> index) {
  return index ? function + " index=" + std::to_string(*index) : function;
}

Answers Ask(const Device& device) {
  Answers answers = {device.name, {}};
  const DeviceHandle handle = device.handle;
  answers.of["CorvaneAPIGetDeviceType"] = AskFor<int32_t>(
      [=](int32_t* type) { return LIBRARY(CorvaneAPIGetDeviceType)(handle, type); });
  answers.of["CorvaneAPIGetDeviceCapabilitiesEx"] = AskFor<uint32_t>([=](uint32_t* mask) {
    *mask = LIBRARY(CorvaneAPIGetDeviceCapabilitiesEx)(handle);
    return CORVANE_OK;
  });
  for (const Reading& reading : AllReadings()) {
    for (uint32_t index = 0; index < reading.count; ++index) {
      const auto indexed = reading.count == 1 ? std::nullopt : std::optional(index);
      answers.of[KeyOf(reading.get_function, indexed)] = AskFor(reading, handle, index);
    }
  }
  char text[128];
  int32_t count = 0;
  const int32_t status = LIBRARY(CorvaneAPIGPSOutputRead)(handle, text, sizeof text, &count);
  answers.of["CorvaneAPIGPSOutputRead"] = {status, {}};
  return answers;
}

std::string ReadCalls(const std::string& path, Source& source) {
  std::ifstream file(path);
  if (!file) return path + ": " + strerror(errno);
  size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (!ReadCall(line, source)) {
      return path + ":" + std::to_string(number) + ": this is no line of a journal of calls";
    }
  }
  return source.devices.empty() ? path + ": no call for a device is in it" : "";
}

}  // namespace lab
