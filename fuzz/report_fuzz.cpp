// Any bytes are a report: every output of them must be what its readers accept.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "metrics.h"
#include "output.h"
#include "parser.h"

using namespace report;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);
  Metrics metrics({{"device", std::string(input.substr(0, 8))}});
  ReportParser parser([&metrics](const Json& report) {
    metrics.Add(report);
    if (!Json::accept(ToJson(report)) || !Json::accept(ToLine(report, "now"))) abort();
  });
  while (!input.empty()) {
    const size_t end = input.find('\n');
    parser.ReadLine(input.substr(0, end));
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
  }
  parser.Finish();
  const std::string text = metrics.Text();
  if (text != ValidText(text)) abort();
  return 0;
}
