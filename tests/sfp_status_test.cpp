// sfp, end to end.
#include <cmath>

#include "support/records.h"

namespace {

Simulation On(const LinkStatusRecord& status) {
  return Simulation(OneDevice(0, RawToml("link_status", status)));
}

// Port A is up, and every number in it differs from the others; port B is down.
LinkStatusRecord UpAndDown() {
  LinkStatusRecord status;
  memset(&status, 7, sizeof status);
  status.sfp_valid = 1;
  status.sfp_count = 2;
  status.sfps[0] = {128,
                    "eighteen letters..",
                    -80,
                    "sixteen letters.",
                    "four",
                    "thirteen here",
                    "nineteen characters",
                    80,
                    84,
                    88,
                    3,
                    4,
                    5,
                    104,
                    6,
                    112,
                    2,
                    1,
                    124,
                    128,
                    132,
                    136,
                    140};
  float ddm[25];
  for (int i = 0; i < 25; ++i) ddm[i] = static_cast<float>(i) + 0.25F;
  memcpy(&status.sfps[0].ddm, ddm, sizeof ddm);
  status.sfps[0].flags = ~0U;
  status.sfps[0].mode = 1;
  status.sfps[1].link_up = 0;
  return status;
}

TEST(SfpStatus, ReportsWhatIsUpAndSaysWhatIsDown) {
  const Result result = On(UpAndDown()).Run("sfp");
  EXPECT_EQ(result.out, GoldenReport("sfp"));
  EXPECT_EQ(result.status, 0);
}

// The line of the report that begins with the label; empty when there is none.
std::string Line(const std::string& report, const std::string& label) {
  const size_t at = report.find("\t" + label + ":");
  return at == std::string::npos ? "" : report.substr(at, report.find('\n', at) + 1 - at);
}

// A code without a word has no line at all.
TEST(SfpStatus, NamesTheCodes) {
  LinkStatusRecord status = UpAndDown();
  SfpInfo& sfp = status.sfps[0];
  std::string lines;
  for (int32_t code = -2; code <= 18; ++code) {
    const int32_t number = code == -2 ? INT32_MIN : code == 18 ? INT32_MAX : code;
    sfp.encoding = sfp.rate_id = sfp.identifier = sfp.connector = number;
    sfp.monitoring_type = sfp.sff8472_compliance = number;
    const std::string report = On(status).Run("sfp").out;
    lines += std::to_string(number) + "\n";
    for (const char* label : {"Encoding", "Rate ID", "Module identifier", "Connector",
                              "Monitoring type", "SFF8472 compliance"}) {
      lines += Line(report, label);
    }
  }
  EXPECT_EQ(lines, GoldenReport("sfp-codes"));
}

TEST(SfpStatus, TakesHostileRecords) {
  LinkStatusRecord status = UpAndDown();
  SfpInfo& sfp = status.sfps[0];
  memset(sfp.vendor_name, 'v', sizeof sfp.vendor_name);
  memset(sfp.model, 'm', offsetof(SfpInfo, nominal_rate) - offsetof(SfpInfo, model));
  sfp.ddm.measured = {std::nanf(""), INFINITY, -INFINITY, 3e38F, -0.001F};
  sfp.flags = 0xFFFFE000;
  sfp.mode = 2;
  const std::string report = On(status).Run("sfp").out;
  EXPECT_EQ(Line(report, "Mode"), "");
  EXPECT_EQ(Line(report, "Vendor name"), "\tVendor name: " + std::string(19, 'v') + "\n");
  EXPECT_EQ(Line(report, "Model"), "\tModel: " + std::string(17, 'm') + "\n");
  EXPECT_EQ(Line(report, "Revision"), "\tRevision: " + std::string(5, 'm') + "\n");
  EXPECT_EQ(Line(report, "Date code"), "\tDate code: " + std::string(14, 'm') + "\n");
  EXPECT_EQ(Line(report, "Serial No"), "\tSerial No: " + std::string(20, 'm') + "\n");
  EXPECT_EQ(Line(report, "Temperature (C)"), "\tTemperature (C): nan\n");
  EXPECT_EQ(Line(report, "Voltage (V)"), "\tVoltage (V): inf\n");
  EXPECT_EQ(Line(report, "TX bias (mA)"), "\tTX bias (mA): -inf\n");
  EXPECT_EQ(Line(report, "RX power (mW)"), "\tRX power (mW): -0.00\n");
  EXPECT_NE(report.find("\tAlarms:\n\tWarnings:\n\tStatus bits:\nPort B"), std::string::npos);
}

TEST(SfpStatus, ReadsNoFurtherThanTheRecord) {
  LinkStatusRecord status = UpAndDown();
  status.sfps[0].link_up = 0;
  const std::string a = "Port A status:\n\tLink: Down\n";
  const std::string both = a + "Port B status:\n\tLink: Down\n";
  for (const auto& [count, ports] : std::map<int32_t, std::string>{
           {INT32_MIN, ""}, {-1, ""}, {0, ""}, {1, a}, {3, both}, {INT32_MAX, both}}) {
    status.sfp_count = count;
    ExpectRun(On(status), "sfp", ports);
  }
}

TEST(SfpStatus, NeedsCagesAndSaysWhatFailed) {
  LinkStatusRecord status = UpAndDown();
  status.sfp_valid = 2;
  ExpectRun(On(status), "sfp",
            "Could not get SFP ports status; maybe, it's unavailable on your device\n", 251);
  ExpectFailures(OneDevice(0),
                 {{"sfp", "GetLinkStatus", "Could not get link status for SFP ports status\n"}});
}

}  // namespace
