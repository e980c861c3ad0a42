// portstatus, end to end.
#include "support/records.h"

namespace {

std::string Device(const LinkStatusRecord& status, const std::string& inline_mode = "0") {
  return OneDevice(0, RawToml("link_status", status) + "features = {inline = " + inline_mode + "}");
}

// What nobody reads is set, and each flag differs from its neighbours.
LinkStatusRecord TwoPorts() {
  LinkStatusRecord status;
  memset(&status, 7, sizeof status);
  status.link_valid = status.phy_valid = 1;
  status.phy_count = 2;
  status.links[0] = {7, 2, 0};
  status.links[1] = {7, 0, 9};
  for (uint32_t slot = 0; slot < CORVANE_PHY_SLOTS; ++slot) {
    status.phys[0].slots[slot] = slot % 3;
    status.phys[1].slots[slot] = slot % 3 == 1 ? 0x80000000 : (slot + 1) % 3;
  }
  status.phys[0].slots[CORVANE_PHY_IDLE_ERROR_COUNT] = 0xFFFFFF2A;
  status.phys[1].slots[CORVANE_PHY_IDLE_ERROR_COUNT] = 0xFF;
  return status;
}

TEST(PortStatus, ReportsBothPorts) {
  EXPECT_EQ(Simulation(Device(TwoPorts())).Run("portstatus").out, GoldenReport("portstatus"));
}

// In inline mode, which is any number but 0 here, port A's link is port B's too.
TEST(PortStatus, NamesTheLink) {
  const char* const names[][2] = {{"10Mbps_FDX", "10Mbps_HDX"},
                                  {"100Mbps_FDX", "100Mbps_HDX"},
                                  {"1Gbps_FDX", "1Gbps_HDX"},
                                  {"10Gbps_FDX", "10Gbps_HDX"},
                                  {"N/A", "N/A"},
                                  {"Down", "Down"},
                                  {"N/A", "N/A"},
                                  {"N/A", "N/A"}};
  LinkStatusRecord status = TwoPorts();
  for (int32_t speed = 0; speed < 8; ++speed) {
    for (const uint32_t half : {0U, 1U}) {
      status.links[0] = {7, speed == 7 ? INT32_MIN : speed, half * 0x100};
      std::string report = GoldenReport("portstatus");
      for (const std::string old : {"1Gbps_FDX", "10Mbps_HDX"}) {
        report.replace(report.find(old), old.size(), names[speed][half]);
      }
      EXPECT_EQ(Simulation(Device(status, "2")).Run("portstatus").out, report) << speed;
    }
  }
}

TEST(PortStatus, ReadsNoFurtherThanTheRecord) {
  const std::string both = GoldenReport("portstatus");
  const std::string first = both.substr(0, both.find("Port B"));
  const std::string none = "Corvane detected\n";
  LinkStatusRecord status = TwoPorts();
  for (const auto& [count, report] : std::map<int32_t, std::string>{
           {INT32_MIN, none}, {-1, none}, {0, none}, {1, first}, {3, both}, {INT32_MAX, both}}) {
    status.phy_count = count;
    const Result result = Simulation(Device(status)).Run("portstatus");
    EXPECT_EQ(result.out, report) << count;
    EXPECT_EQ(result.status, 0) << count;
  }
}

TEST(PortStatus, NeedsValidLinksAndPhysAndSaysWhatFailed) {
  for (const auto& [link, phy] : {std::pair<uint8_t, uint8_t>{0, 1}, {1, 0}, {2, 1}, {1, 255}}) {
    LinkStatusRecord status = TwoPorts();
    status.link_valid = link;
    status.phy_valid = phy;
    ExpectRun(Simulation(Device(status)), "portstatus",
              "Could not get ports status: your device does not support this feature\n", 251);
  }
  ExpectFailures(Device(TwoPorts()),
                 {{"portstatus", "GetDeviceFeatures",
                   "Could not get ports status: failed to get Corvane features configuration\n"},
                  {"portstatus", "GetLinkStatus", "Could not get link status for ports status\n"}});
}

}  // namespace
