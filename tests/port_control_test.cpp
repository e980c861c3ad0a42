// portcontrol set, save and show, end to end.
#include "device/capabilities.h"
#include "support/records.h"

namespace {

std::string Device(const std::string& speeds, const std::string& inline_mode) {
  return OneDevice(kSpeedControl,
                   "ports_speed = \"" + speeds + "\"\nfeatures = {inline = " + inline_mode + "}");
}

const std::string kOn = "01000000";
const std::string kOff = "00000000";
const std::string kSetFailed = "Failed to set Corvane port control configuration";

TEST(PortControl, SetWritesWhatIsNamedAndKeepsTheRest) {
  const struct {
    std::string arguments, inline_mode;
    std::map<size_t, std::string> changes;
  } cases[] = {
      {"a --1000txfd on --100txfd off --100txhd ON --10txfd off --10txhd on",
       "0",
       {{4, kOn + kOff + kOn + kOff + kOn}}},
      {"b --autonegotiation on --asymmetricpause on --symmetricpause off",
       "0",
       {{40, kOn}, {64, kOn + kOff}}},
      {"b --prefermaster off --forcerole on", "2", {{72, kOff + kOn}}},  // only 1 is inline mode
      {"a --prefermaster on", "1", {{32, kOn}, {72, kOn}}},
      {"a --1000txfd off --100txfd off --100txhd off --10txfd off --10txhd off",
       "0",
       {{4, kOff + kOff + kOff + kOff + kOff}}},
      {"a --autonegotiation off --100txfd off --100txhd off --10txfd off --10txhd on",
       "0",
       {{0, kOff}, {8, kOff + kOff + kOff + kOn}}},
  };
  for (const auto& [arguments, inline_mode, changes] : cases) {
    const Simulation simulation(Device(Sevens(80), inline_mode));
    ExpectRun(simulation, "portcontrol set --portselection " + arguments, "");
    EXPECT_EQ(Sent(simulation, "SetDevicePortsSpeed"), Sevens(80, changes)) << arguments;
  }
}

// In inline mode all of port A's settings go to port B.
TEST(PortControl, SetCopiesPortAInInlineMode) {
  const Simulation simulation(Device(std::string(80, '1') + std::string(80, '2'), "1"));
  ExpectRun(simulation, "portcontrol set --portselection a", "");
  EXPECT_EQ(Sent(simulation, "SetDevicePortsSpeed"), std::string(160, '1'));
}

TEST(PortControl, SetRefusesAndWritesNothing) {
  const std::string port = "port must be selected to apply control configuration to";
  const std::string gigabit = "1000TXFD speed is not supported if autonegotiation is disabled";
  const std::string one = "if autonegotiation is disabled, one and only one port speed must be set";
  const std::string manual = " --portselection a --autonegotiation off";
  const std::pair<std::string, std::string> cases[] = {
      {"", port},
      {" --portselection A", port},
      {" --portselection b", "cannot configure port B when inline mode is on"},
      {manual + " --1000txfd on", gigabit},
      {manual, one},
      // The numbers are added: the device's own is not one speed, even beside a 1.
      {manual + " --100txfd on --100txhd off --10txfd off", one},
      {manual + " --100txfd off --100txhd off --10txfd off --10txhd off", one},
  };
  const Simulation simulation(Device(Sevens(80), "1"));
  for (const auto& [arguments, reason] : cases) {
    std::string out = kSetFailed;
    out.append(": ").append(reason).append("\n");
    ExpectRun(simulation, "portcontrol set" + arguments, out, 255);
  }
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetDevicePortsSpeed"), 0);
}

// One switch of each port on at a time; whatever is not 1 is off.
TEST(PortControl, ShowsEverySwitchOfBothPorts) {
  std::string reports;
  for (size_t on = 0; on < 10; ++on) {
    const std::string speeds = Sevens(80, {{4 * on, kOn}, {40 + 4 * (9 - on), kOn}});
    reports += Simulation(Device(speeds, "1")).Run("portcontrol show").out;
  }
  EXPECT_EQ(reports, GoldenReport("portcontrol"));
}

TEST(PortControl, NeedsSpeedControlButForSave) {
  const Simulation simulation(OneDevice(~kSpeedControl));
  ExpectRun(simulation, "portcontrol set",
            kSetFailed + ": this device does not support port control\n", 251);
  ExpectRun(simulation, "portcontrol show", "This device does not support port control\n", 251);
  ExpectRun(simulation, "portcontrol save", "");
  EXPECT_EQ(Work(simulation), "SaveDeviceFeatures ");
}

TEST(PortControl, SaysWhatFailed) {
  const char* set = "portcontrol set --portselection a";
  const char* unread = "Failed to get Corvane ports control configuration\n";
  const std::string no_features = kSetFailed + ": failed to get Corvane features\n";
  const std::string unwritten = kSetFailed + "\n";
  ExpectFailures(Device(Sevens(80), "1"),
                 {{"portcontrol set", "GetDevicePortsSpeed", unread},
                  {"portcontrol show", "GetDevicePortsSpeed", unread},
                  {"portcontrol set", "GetDeviceFeatures", no_features.c_str()},
                  {set, "SetDevicePortsSpeed", unwritten.c_str()},
                  {"portcontrol save", "SaveDeviceFeatures",
                   "Failed to save Corvane Features configuration\n"}});
}

}  // namespace
