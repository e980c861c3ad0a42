// The simulator's configuration file.
#include <string_view>

#include "configuration.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ConfigurationError error;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto configuration = ReadConfiguration(text, "folder/sim.toml", error);
  Require(configuration || !error.reason.empty());
  return 0;
}
