/*
 * The boundary to the device library, libCorvaneAPI.so.2: its 41 functions and every record that
 * crosses it. The header is plain C, so that the utility, the simulator and C programs share it.
 *
 * Conventions:
 *  - A status is 0 for success; any other value is a failure. enum CorvaneStatus names the ones
 *    that callers tell apart.
 *  - A per-device function takes the DeviceHandle found in the device list as its first argument.
 *  - Get functions fill a record that the caller owns; Set functions take the whole record by
 *    value; Save functions make the device store its current configuration of that kind.
 *  - Texts that the library is handed stay valid to the end of the process, and a list from which a
 *    handle was taken is never given back: nothing is known of how long the library uses them.
 *  - Integers are little-endian. Switch fields hold 1 for on and 0 for off.
 *  - Padding and fields called reserved travel unchanged between a read and the write that follows.
 *
 * Records that the library fills are untrusted: counts and indexes are checked against the arrays
 * below before use, texts are read no further than their array.
 */
#ifndef CORVANE_DEVICE_CORVANE_API_H_
#define CORVANE_DEVICE_CORVANE_API_H_

#include <stdint.h>
#include <wchar.h>

#ifdef __cplusplus
extern "C" {
#endif

enum CorvaneStatus {
  CORVANE_OK = 0,
  CORVANE_DEVICE_NOT_FOUND = -4,
  CORVANE_GPS_OUTPUT_NOT_SUPPORTED = -5,
  CORVANE_UPDATE_IN_PROGRESS = -13,
  CORVANE_UPDATE_FILE_UNREADABLE = -14,
  CORVANE_UPDATE_FILE_INVALID = -15
};

/* ---- Devices ------------------------------------------------------------------------------- */

/* Names one attached device, as the first argument of every function that concerns it. */
typedef uint64_t DeviceHandle;

/* The handle that stands for "no device". */
#define CORVANE_NO_DEVICE (~(DeviceHandle)0)

typedef struct DeviceNode {
  struct DeviceNode* next; /* NULL at the end */
  DeviceHandle handle;
} DeviceNode;

/* Made by the library. */
typedef struct DeviceList {
  DeviceNode* first; /* NULL when the list is empty */
  int32_t count;
} DeviceList;

enum { CORVANE_MAC_SIZE = 6 };

typedef struct VersionRecord {
  uint8_t sw_firmware[4]; /* printed in this order */
  uint8_t driver[4];      /* printed in this order */
  uint32_t hw_firmware;
} VersionRecord;

/* Bits of the mask that CorvaneAPIGetDeviceCapabilitiesEx returns. */
enum CorvaneCapability {
  CORVANE_CAP_BASIC = 0x1,
  CORVANE_CAP_DUAL_PORTS = 0x2,
  CORVANE_CAP_SPAN_MODE = 0x4,
  CORVANE_CAP_GPS = 0x8,
  CORVANE_CAP_UPDATE = 0x10,
  CORVANE_CAP_POE = 0x20,
  CORVANE_CAP_SFP = 0x40,
  CORVANE_CAP_FILTER = 0x80,
  CORVANE_CAP_STATISTICS_V1 = 0x100,
  CORVANE_CAP_STATISTICS_V2 = 0x200,
  CORVANE_CAP_SPEED_CONTROL = 0x400,
  CORVANE_CAP_LOOPBACK = 0x800,
  CORVANE_CAP_PHY1 = 0x2000,
  CORVANE_CAP_PHY2 = 0x4000,
  CORVANE_CAP_PCAPNG = 0x8000,
  CORVANE_CAP_SLICING_LENGTH = 0x10000,
  CORVANE_CAP_PHY3 = 0x20000,
  CORVANE_CAP_MULTIPLE_HW = 0x40000,
  CORVANE_CAP_FULL_FRAMES = 0x80000,
  CORVANE_CAP_NTP_TIMESTAMPS = 0x100000,
  CORVANE_CAP_PACKET_TYPE_FILTER = 0x200000,
  CORVANE_CAP_PPS_RESOLUTION_5NS = 0x400000,
  CORVANE_CAP_PPS_RESOLUTION_8NS = 0x800000,
  CORVANE_CAP_AUTONEGOTIATION = 0x1000000,
  CORVANE_CAP_VLAN_FILTER =
      0x2000000 /* tested by the filters, but without a label in the reports */
};

/* ---- Features, timing configuration, hardware firmwares ------------------------------------ */

/* Where the timestamp clock gets its time from. */
enum CorvaneTimeSource {
  CORVANE_TIME_SYSTEM = 0,
  CORVANE_TIME_RTC = 1,
  CORVANE_TIME_GPS = 2,
  CORVANE_TIME_NONE = 3,
  CORVANE_TIME_MANUAL = 4,
  CORVANE_TIME_SNTP = 5
};

typedef struct FeaturesRecord {
  uint32_t transmitcrcerrors;
  uint32_t keepcrc32;
  uint32_t disablea;
  uint32_t disableb;
  uint32_t slicing;
  uint32_t inline_; /* the field is called inline, which is a keyword */
  uint32_t loopback;
  uint32_t ts;
  uint32_t syncts;
  uint32_t forcepps;
  uint32_t tssource; /* enum CorvaneTimeSource */
  uint32_t waitforsync;
  uint32_t ppsoutput;
  uint16_t ppscomp; /* delay in units of 2^-32 s, applied negatively; 0 to 215 */
  uint16_t reserved_54;
  uint32_t portAts; /* 0 capture, 1 ingress, 2 egress */
  uint32_t portBts;
  uint32_t reserved_64;
  uint16_t slicing_size; /* bytes */
  uint16_t reserved_70;
  uint32_t autonega;
  uint32_t autonegb;
  uint8_t firmware_index; /* into HwFirmwaresDesc.names; 0 is the 10G firmware, 1 the 1G one */
  uint8_t reserved_81[3];
} FeaturesRecord;

enum { CORVANE_HW_FIRMWARES = 4, CORVANE_HW_FIRMWARE_NAME_SIZE = 32 };

typedef struct HwFirmwaresDesc {
  int32_t count; /* of valid names; may be anything, check it against CORVANE_HW_FIRMWARES */
  char names[CORVANE_HW_FIRMWARES][CORVANE_HW_FIRMWARE_NAME_SIZE]; /* NUL-terminated */
} HwFirmwaresDesc;

/* ---- Port control -------------------------------------------------------------------------- */

typedef struct PortControl {
  uint32_t autoneg;
  uint32_t _1000txfd; /* the speed fields are called 1000txfd and so on */
  uint32_t _100txfd;
  uint32_t _100txhd;
  uint32_t _10txfd;
  uint32_t _10txhd;
  uint32_t asympause;
  uint32_t sympause;
  uint32_t prefmaster;
  uint32_t forcerole;
} PortControl;

enum { CORVANE_PORTS = 2 }; /* port A is 0, port B is 1 */

typedef struct PortsSpeedRecord {
  PortControl ports[CORVANE_PORTS];
} PortsSpeedRecord;

/* ---- Link, SFP and PHY status -------------------------------------------------------------- */

typedef struct LinkEntry {
  uint32_t reserved_0;
  int32_t speed;   /* 0 10 Mbit/s, 1 100 Mbit/s, 2 1 Gbit/s, 3 10 Gbit/s, 5 link down */
  uint32_t duplex; /* 0 full, else half */
} LinkEntry;

/* The five quantities of a module's digital diagnostics, in engineering units. */
typedef struct SfpQuantities {
  float temperature; /* degrees Celsius */
  float voltage;     /* V */
  float tx_bias;     /* mA */
  float tx_power;    /* mW */
  float rx_power;    /* mW */
} SfpQuantities;

/* Decoded by the device from the module's SFF-8472 identification and diagnostics pages. */
typedef struct SfpInfo {
  uint8_t link_up; /* non-zero when up */
  char vendor_name[19];
  int32_t vendor_oui;
  char model[17];
  char revision[5];
  char date_code[14];
  char serial_no[20];
  int32_t nominal_rate;
  int32_t max_bitrate;
  int32_t min_bitrate;
  int32_t encoding;
  int32_t rate_id;
  int32_t identifier;
  int32_t ext_identifier;
  int32_t connector;
  int32_t wavelength_nm;
  int32_t monitoring_type;
  int32_t sff8472_compliance;
  int32_t length_smf;
  int32_t length_om2;
  int32_t length_om1;
  int32_t length_copper;
  int32_t length_om3;
  uint8_t reserved_144[280];
  struct {
    SfpQuantities measured;
    SfpQuantities low_alarm;
    SfpQuantities low_warning;
    SfpQuantities high_alarm;
    SfpQuantities high_warning;
  } ddm;
  uint32_t flags; /* from bit 0: five alarms, five warnings, three status bits */
  int32_t mode;   /* 0 inline, 1 span */
} SfpInfo;

enum {
  CORVANE_PHY_SLOTS = 31,
  CORVANE_PHY_MASTER_SLAVE = 0,     /* slot: 0 master, 1 slave, else unknown */
  CORVANE_PHY_IDLE_ERROR_COUNT = 18 /* slot: an 8-bit count in the first byte, 3 bytes reserved */
};

/* Every slot but the two named above is a status flag: 0 no, 1 yes, else unknown. */
typedef struct PhyStatus {
  uint32_t slots[CORVANE_PHY_SLOTS];
} PhyStatus;

typedef struct LinkStatusRecord {
  uint8_t link_valid; /* 1 when links is valid */
  uint8_t reserved_1[7];
  LinkEntry links[CORVANE_PORTS];
  uint8_t sfp_valid; /* 1 when the device has SFP cages */
  uint8_t reserved_33[3];
  int32_t sfp_count;
  SfpInfo sfps[CORVANE_PORTS];
  uint8_t phy_valid; /* 1 when the device has copper PHYs */
  uint8_t reserved_1105[3];
  int32_t phy_count;
  PhyStatus phys[CORVANE_PORTS];
} LinkStatusRecord;

/* ---- Deep packet inspection ---------------------------------------------------------------- */

typedef struct DpiFilterRecord {
  uint32_t enabled;
  uint8_t data[16]; /* raw bytes, no terminator */
  uint8_t reserved_20[16];
  uint32_t mask; /* bit 0 belongs to data[0] */
} DpiFilterRecord;

/* ---- Power over Ethernet ------------------------------------------------------------------- */

enum { CORVANE_POE_PAIRS = 4 };

typedef struct PoePair {
  float voltage; /* V */
  float current; /* A */
  uint8_t
      return_path[CORVANE_POE_PAIRS]; /* non-zero: that pair carries this pair's return current */
} PoePair;

typedef struct PoeMeasures {
  PoePair pairs[CORVANE_POE_PAIRS];
  float supply_voltage; /* V */
} PoeMeasures;

/* ---- Direct capture ------------------------------------------------------------------------ */

/* Capture to one named file (or to files derived from that name). */
typedef struct DiskDumpConfig {
  uint32_t loop; /* 1: round-robin over the files */
  uint8_t reserved_4[4];
  uint32_t reserved_8; /* always 0 */
  uint8_t reserved_12[4];
  const wchar_t* file_name;
  uint64_t max_file_size; /* bytes, 0 for no limit */
  uint64_t max_cache;     /* bytes */
  uint32_t file_count;    /* 0 for no limit */
  uint32_t max_duration;  /* seconds a file, 0 for no limit */
  uint32_t full_frames;
  uint8_t reserved_52[4];
} DiskDumpConfig;

/* Capture to a folder, with file names made from a pattern. */
typedef struct DiskDumpConfigEx {
  uint32_t loop;
  uint8_t reserved_4[4];
  uint32_t reserved_8; /* always 0 */
  uint8_t reserved_12[4];
  uint64_t max_file_size;
  uint64_t max_cache;
  uint32_t file_count;
  uint32_t max_duration;
  uint32_t full_frames;
  uint8_t reserved_44[4];
  const wchar_t* directory;
  const wchar_t* pattern; /* placeholders %N %Y %M %D %H %m %s are the library's to fill in */
} DiskDumpConfigEx;

typedef struct DiskDumpStatus {
  uint8_t enabled; /* non-zero while a capture runs */
  uint8_t reserved_1[7];
  uint64_t cache_used;    /* bytes */
  uint64_t bytes_written; /* bytes */
  uint64_t bytes_dropped; /* bytes */
  uint32_t error;         /* non-zero when the capture has failed */
  uint8_t reserved_36[4];
  uint64_t max_cache; /* bytes */
  uint64_t files_written;
} DiskDumpStatus;

/* ---- Statistics ---------------------------------------------------------------------------- */

typedef struct PortStatistics {
  uint64_t less_than_64; /* frames shorter than 64 bytes */
  uint64_t from_64_to_1518;
  uint64_t more_than_1518;
  uint64_t collisions;
  uint64_t crc_errors;
  uint64_t jabbers;
  uint64_t total_bytes;
  uint64_t reserved_56; /* a counter that no report shows */
  uint64_t valid_packets;
  uint64_t invalid_packets;
  uint64_t hw_dropped;
} PortStatistics;

enum { CORVANE_COUNTERS_V2 = 16, CORVANE_STATISTICS_SIZE = 232 };

typedef struct StatisticsRecord {
  uint32_t version; /* 1 or 2: which member of counters is valid */
  uint8_t reserved_4[4];
  uint64_t timestamp;
  uint64_t sw_dropped; /* frames */
  union {
    struct {
      uint64_t link_up_ms;
      uint64_t link_down_ms;
      PortStatistics ports[CORVANE_PORTS];
    } v1;
    uint64_t v2[CORVANE_COUNTERS_V2];
    uint8_t raw[CORVANE_STATISTICS_SIZE - 24]; /* callers provide the whole buffer */
  } counters;
} StatisticsRecord;

enum {
  CORVANE_IGNORE = -1, /* a condition that is ignored; a size mode that sets no size */
  CORVANE_COUNT_IF_FALSE = 0,
  CORVANE_COUNT_IF_TRUE = 1
};

/* Conditions hold one of the three codes above. */
typedef struct CounterV2Config {
  int32_t index; /* 0 to 15; 15 is reserved for hardware-dropped packets */
  int32_t ipv4;
  int32_t ipv6;
  int32_t bcast;
  int32_t mcast;
  int32_t ucast;
  int32_t reserved_24;
  int32_t icmp;
  int32_t udp;
  int32_t tcp;
  int32_t crc_ok;
  int32_t hw_dropped;
  int32_t size;        /* bytes */
  int32_t size_mode;   /* 0 greater than, 1 less than, 2 equal to, or CORVANE_IGNORE */
  uint8_t address[16]; /* reversed: the last byte of the address first */
  uint8_t mask[16];    /* arranged like address; 0xFF marks a byte that must match */
  int32_t porta;       /* 1 counted, 0 not */
  int32_t portb;
  int32_t mode; /* 0 packets, 1 bytes */
} CounterV2Config;

/* ---- Packet filter, packet type filter ----------------------------------------------------- */

enum CorvaneMatch {
  CORVANE_MATCH_IPV6 = 0x01, /* addresses are IPv6 */
  CORVANE_MATCH_DST_MAC = 0x02,
  CORVANE_MATCH_SRC_MAC = 0x04,
  CORVANE_MATCH_DST_IP = 0x08,
  CORVANE_MATCH_SRC_IP = 0x10,
  CORVANE_MATCH_DST_PORT = 0x20,
  CORVANE_MATCH_SRC_PORT = 0x40,
  CORVANE_MATCH_VLAN = 0x80
};

/* What the source field holds matches as source or as destination. */
enum CorvaneEither { CORVANE_EITHER_MAC = 0x1, CORVANE_EITHER_IP = 0x2, CORVANE_EITHER_PORT = 0x4 };

typedef struct PacketFilterRecord {
  uint32_t enable;
  uint32_t match_flags;              /* enum CorvaneMatch: the fields that are used */
  uint16_t either_flags;             /* enum CorvaneEither */
  uint8_t dst_mac[CORVANE_MAC_SIZE]; /* addresses are reversed: the last byte first */
  uint8_t src_mac[CORVANE_MAC_SIZE];
  uint8_t dst_ip[16];
  uint8_t src_ip[16];
  uint16_t dst_port;
  uint16_t src_port;
  uint16_t mac_masks; /* bits 0..5 bytes of dst_mac that must match, 6..11 of src_mac */
  uint16_t dst_ip_mask;
  uint16_t src_ip_mask;
  uint8_t port_masks; /* bits 0..1 dst_port, 2..3 src_port */
  uint8_t reserved_65;
  uint16_t vlan_id;
  uint16_t vlan_mask;
  uint8_t reserved_70[2];
} PacketFilterRecord;

/* One byte a switch: non-zero is on. */
typedef struct PacketTypeFilterRecord {
  uint8_t ipv4;
  uint8_t ipv6;
  uint8_t arp;
  uint8_t tcp;
  uint8_t udp;
  uint8_t icmp;
  uint8_t igmp;
  uint8_t https;
  uint8_t http;
  uint8_t ftp;
  uint8_t dns;
  uint8_t smtp;
  uint8_t pop3;
  uint8_t dhcp;
  uint8_t ssh;
  uint8_t sip;
  uint8_t smb;
  uint8_t tcpfin;
  uint8_t tcpsyn;
  uint8_t tcprst;
  uint8_t tcppsh;
  uint8_t tcpack;
  uint8_t zerowindow;
  uint8_t quic;
  uint8_t vlan;
  uint8_t l2other;
  uint8_t l4other;
} PacketTypeFilterRecord;

/* ---- Timing -------------------------------------------------------------------------------- */

typedef struct TimingStatusRecord {
  uint32_t gps_module; /* 0 present, 2 locked, else none */
  uint32_t gps_fix;    /* 1 2D, 2 3D, else none */
  uint32_t satellites_used;
  uint32_t satellites_gps;     /* in view */
  uint32_t satellites_glonass; /* in view */
  uint32_t gps_pps;            /* 1 detected */
  uint32_t external_pps;       /* 1 detected */
  uint32_t synchronized;       /* 1 when the timestamp clock is synchronised */
  double pps_deviation;        /* ns */
  uint8_t reserved_40[4];
  uint32_t timestamp_source; /* enum CorvaneTimeSource */
  uint32_t rtc_hour;         /* UTC */
  uint32_t rtc_minute;
  uint32_t rtc_second;
  uint32_t rtc_year;  /* four digits */
  uint32_t rtc_month; /* 1 to 12 */
  uint32_t rtc_day;   /* 1 to 31 */
  uint8_t reserved_72[8];
} TimingStatusRecord;

typedef struct TimingTimeRecord {
  uint32_t time_source; /* enum CorvaneTimeSource: system clock, GPS, manual or SNTP */
  uint32_t seconds;     /* since the Unix epoch */
  uint32_t nanoseconds;
} TimingTimeRecord;

/* ---- Functions ----------------------------------------------------------------------------- */

/* Opens the library; the first call. */
int32_t CorvaneAPIInitialize(void);
/* Closes the library; the last call. */
int32_t CorvaneAPIUninitialize(void);

/* The attached devices; may be NULL. */
DeviceList* CorvaneAPIGetDevicesList(void);
/* Gives a list back: only one whose handles nobody uses. */
void CorvaneApiDeviceListFree(DeviceList* list);
void CorvaneApiSleepMs(uint32_t milliseconds);

int32_t CorvaneAPIGetDeviceType(DeviceHandle device, int32_t* type_code);
/* mac: CORVANE_MAC_SIZE bytes, first byte of the text first. */
int32_t CorvaneAPIGetDeviceMAC(DeviceHandle device, uint8_t* mac);
/* The capability mask itself, no status; enum CorvaneCapability. */
uint32_t CorvaneAPIGetDeviceCapabilitiesEx(DeviceHandle device);
/* The library's version, four bytes, lowest first. */
uint32_t CorvaneAPIGetVersion(void);
int32_t CorvaneAPIGetVersions(DeviceHandle device, VersionRecord* versions);

int32_t CorvaneAPIGetDeviceFeatures(DeviceHandle device, FeaturesRecord* features);
int32_t CorvaneAPISetDeviceFeatures(DeviceHandle device, FeaturesRecord features);
/* Stores the whole current configuration: features, timing and port control. */
int32_t CorvaneAPISaveDeviceFeatures(DeviceHandle device);
int32_t CorvaneAPIGetHwFirmwaresDesc(DeviceHandle device, HwFirmwaresDesc* firmwares);
int32_t CorvaneAPIRestartDevice(DeviceHandle device);

int32_t CorvaneAPIGetDevicePortsSpeed(DeviceHandle device, PortsSpeedRecord* speeds);
int32_t CorvaneAPISetDevicePortsSpeed(DeviceHandle device, PortsSpeedRecord speeds);
int32_t CorvaneAPIGetLinkStatus(DeviceHandle device, LinkStatusRecord* status);

int32_t CorvaneAPIGetDpiFilter(DeviceHandle device, DpiFilterRecord* filter);
int32_t CorvaneAPISetDpiFilter(DeviceHandle device, DpiFilterRecord filter);
int32_t CorvaneAPISaveDpiFilter(DeviceHandle device);

int32_t CorvaneAPIPoeGetMeasures(DeviceHandle device, PoeMeasures* measures);

int32_t CorvaneAPIDiskDumpGetStatus(DeviceHandle device, DiskDumpStatus* status);
int32_t CorvaneAPIDiskDumpSetConfig(DeviceHandle device, DiskDumpConfig config);
int32_t CorvaneAPIDiskDumpSetConfigEx(DeviceHandle device, DiskDumpConfigEx config);
int32_t CorvaneAPIDiskDumpStart(DeviceHandle device);
int32_t CorvaneAPIDiskDumpStop(DeviceHandle device);

int32_t CorvaneAPIGetStatistics(DeviceHandle device, StatisticsRecord* statistics);
int32_t CorvaneAPIGetCounterV2(DeviceHandle device, uint32_t index, CounterV2Config* counter);
int32_t CorvaneAPISetCounterV2(DeviceHandle device, CounterV2Config counter);

int32_t CorvaneAPIFirmwareUpdateStart(DeviceHandle device, const wchar_t* path);
/* CORVANE_UPDATE_IN_PROGRESS while the update runs, then its result. */
int32_t CorvaneAPIFirmwareUpdateGetProgress(DeviceHandle device, int32_t* percent);

int32_t CorvaneAPIGetPacketFilter(DeviceHandle device, PacketFilterRecord* filter);
int32_t CorvaneAPISetPacketFilter(DeviceHandle device, PacketFilterRecord filter);
int32_t CorvaneAPISavePacketFilter(DeviceHandle device);
int32_t CorvaneAPIGetPacketsTypeFilter(DeviceHandle device, PacketTypeFilterRecord* filter);
int32_t CorvaneAPISetPacketsTypeFilter(DeviceHandle device, PacketTypeFilterRecord filter);

int32_t CorvaneAPIGetTimingStatus(DeviceHandle device, TimingStatusRecord* status);
int32_t CorvaneAPISetTimingTime(DeviceHandle device, TimingTimeRecord time);

/* Discards what the device has buffered of its GPS receiver's output. */
int32_t CorvaneAPIGPSOutputFlush(DeviceHandle device);
/* Copies up to capacity bytes of NMEA 0183 text, without a terminator, and sets count. */
int32_t CorvaneAPIGPSOutputRead(DeviceHandle device, char* buffer, int32_t capacity,
                                int32_t* count);

#ifdef __cplusplus
}
#endif

#endif /* CORVANE_DEVICE_CORVANE_API_H_ */
