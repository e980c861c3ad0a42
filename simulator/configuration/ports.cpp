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
  if (!ReadText(node, text, error)) return false;
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

bool ReadRate(Where node, PortSource& source, ConfigurationError& error) {
  return ReadInteger(node, 0, 10'000'000, source.rate, error);
}

bool ReadSeed(Where node, PortSource& source, ConfigurationError& error) {
  return ReadInteger(node, 0, UINT32_MAX, source.seed, error);
}

bool ReadFileName(Where node, PortSource& source, ConfigurationError& error) {
  return ReadText(node, source.file, error);
}

bool ReadInterface(Where node, PortSource& source, ConfigurationError& error) {
  return ReadText(node, source.interface, error);
}

bool ReadRepeat(Where node, PortSource& source, ConfigurationError& error) {
  const auto* truth = node.as_boolean();
  if (truth == nullptr) return RefuseValue(node, "true or false is expected here", error);
  source.repeat = truth->get();
  return true;
}

constexpr Key<PortSource> kPortKeys[] = {
    {"source", ReadSource}, {"rate", ReadRate},           {"seed", ReadSeed},
    {"file", ReadFileName}, {"interface", ReadInterface}, {"repeat", ReadRepeat},
    {"pace", ReadPace},
};

bool ReadPort(Where node, PortSource& source, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "a port wants a table", error);
  if (!ReadKeys(*table, kPortKeys, source, error)) return false;
  switch (source.kind) {
    case SourceKind::kUnset:
      return RefuseValue(node, "a port needs a source", error);
    case SourceKind::kPcap:
      return !source.file.empty() || RefuseValue(node, "a pcap source needs a file", error);
    case SourceKind::kInterface:
      return !source.interface.empty() ||
             RefuseValue(node, "an interface source needs an interface", error);
    case SourceKind::kGenerator:
      break;
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
