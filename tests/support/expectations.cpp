#include "support/expectations.h"

std::string OneDevice(uint32_t capabilities, const std::string& more) {
  return DeviceToml(11, "00:1a:2b:3c:4d:5e", capabilities, more);
}

std::string Hex(uint64_t number, int bytes) {
  std::string digits;
  for (; bytes > 0; --bytes, number >>= 8) {
    for (const uint64_t digit : {number >> 4, number}) digits += "0123456789abcdef"[digit & 15];
  }
  return digits;
}

std::string Sevens(size_t size, const std::map<size_t, std::string>& changes) {
  std::string record;
  while (record.size() < 2 * size) record += "07";
  for (const auto& [at, bytes] : changes) record.replace(2 * at, bytes.size(), bytes);
  return record;
}

std::string Sent(const Simulation& simulation, const std::string& function) {
  const auto lines = simulation.Lines("CorvaneAPI" + function);
  const size_t at = lines.empty() ? std::string::npos : lines.back().find(" record=");
  if (at == std::string::npos) return "nothing";
  return lines.back().substr(at + 8, lines.back().rfind(' ') - at - 8);
}

std::string Work(const Simulation& simulation) {
  std::string work;
  for (const std::string& call : simulation.Calls()) {
    work = call == "CorvaneApiDeviceListFree" ? "" : work + call.substr(10) + " ";
  }
  EXPECT_TRUE(work.ends_with("Uninitialize ")) << work;
  return work.substr(0, work.rfind("Uninitialize"));
}

void ExpectRun(const Simulation& simulation, const std::string& words, const std::string& out,
               int status) {
  const Result result = simulation.Run(words);
  EXPECT_EQ(result.out, "Corvane detected\n" + out) << words;
  EXPECT_EQ(result.status, status) << words;
}

void ExpectFailures(const std::string& device, std::initializer_list<Failure> failures) {
  for (const auto& [words, function, out] : failures) {
    const Simulation simulation(device + FaultToml("CorvaneAPI" + function, -77));
    ExpectRun(simulation, words, out, 256 - 77);
    EXPECT_TRUE(Work(simulation).ends_with(function + " ")) << words;
    const Result missing = simulation.Run(std::string(words) + " -d 9");
    EXPECT_EQ(missing.out, "Invalid Corvane device selected\n") << words;
    EXPECT_EQ(missing.status, 252) << words;
    EXPECT_EQ(Work(simulation), "") << words;
  }
}
