#include "configuration/tables.h"

namespace simulator {
namespace {

template <class Value>
struct Word {
  const char* text;
  Value value;
};

constexpr Word<SourceKind> kSources[] = {{"generator", SourceKind::kGenerator},
                                         {"pcap", SourceKind::kPcap},
                                         {"interface", SourceKind::kInterface}};
constexpr Word<Pace> kPaces[] = {
    {"original", Pace::kOriginal}, {"rate", Pace::kRate}, {"fast", Pace::kFast}};

template <class Value, size_t kCount>
bool ReadWord(Where node, const Word<Value> (&words)[kCount], Value& value,
              ConfigurationError& error) {
  std::string text;
  if (!ReadValue(node, text, error)) return false;
  std::string expected;
  for (const Word<Value>& word : words) {
    value = word.value;
    if (text == word.text) return true;
    expected += (expected.empty() ? "\"" : ", \"") + std::string(word.text) + "\"";
  }
  return RefuseValue(node, "one of " + expected + " is expected here", error);
}

bool ReadSource(Where node, PortSource& source, ConfigurationError& error) {
  return ReadWord(node, kSources, source.kind, error);
}

bool ReadPace(Where node, PortSource& source, ConfigurationError& error) {
  return ReadWord(node, kPaces, source.pace, error);
}

constexpr int64_t kMost = 1'000'000'000'000'000;

constexpr Key<PortSource> kPortKeys[] = {
    {"source", ReadSource},
    {"rate", ReadNumber<0, 10'000'000, &PortSource::rate>},
    {"seed", ReadNumber<0, UINT32_MAX, &PortSource::seed>},
    {"frames", ReadNumber<1, kMost, &PortSource::frames>},
    {"burst", ReadNumber<1, kMost, &PortSource::burst>},
    {"crc_errors", ReadNumber<1, kMost, &PortSource::crc_errors>},
    {"drops", ReadNumber<1, kMost, &PortSource::drops>},
    {"file", ReadMember<&PortSource::file>},
    {"interface", ReadMember<&PortSource::interface>},
    {"repeat", ReadMember<&PortSource::repeat>},
    {"pace", ReadPace},
};

// The keys that a source uses, by SourceKind.
constexpr std::string_view kUsed[] = {
    " source ", " source rate seed frames burst crc_errors drops ",
    " source file interface pace rate repeat ", " source interface "};

bool ReadPort(Where node, PortSource& source, ConfigurationError& error) {
  if (!ReadTable(node, "a port wants a table", kPortKeys, source, error)) return false;
  if (source.kind == SourceKind::kUnset) return RefuseValue(node, "a port needs a source", error);
  const std::string_view used = kUsed[static_cast<size_t>(source.kind)];
  for (const auto& [name, value] : *node.as_table()) {
    const std::string key(name.str());
    if (used.find(' ' + key + ' ') != std::string_view::npos) continue;
    return RefuseValue(value, "this source does not use \"" + key + '"', error);
  }
  if (source.kind == SourceKind::kPcap && source.file.empty()) {
    return RefuseValue(node, "a pcap source needs a file", error);
  }
  if (source.kind == SourceKind::kPcap && source.rate >= 0 && source.pace != Pace::kRate) {
    return RefuseValue(*node.as_table()->get("rate"), "a rate wants pace = \"rate\"", error);
  }
  if (source.kind == SourceKind::kInterface && source.interface.empty()) {
    return RefuseValue(node, "an interface source needs an interface", error);
  }
  return true;
}

}  // namespace

bool ReadPortA(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadPort(node, device.ports[0], error);
}

bool ReadPortB(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadPort(node, device.ports[1], error);
}

}  // namespace simulator
