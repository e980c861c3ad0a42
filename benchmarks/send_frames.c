// send_frames INTERFACE COUNT RATE
//
// Sends COUNT Ethernet frames of mixed lengths (60 to 1514 bytes, 358 on average) out of the
// interface, RATE a second, in bursts of a millisecond. The frames have the EtherType for local
// experiments (IEEE 802), followed by their number, from 0, in four bytes. Prints how many were
// sent.
#define _GNU_SOURCE  // sendmmsg
#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>

enum { kMostBurst = 1024, kMostLength = 1514, kEtherType = 0x88B5 };

// Seven short ones, four of medium length and one long one: a common mix of Internet traffic.
static const size_t kLengths[] = {60, 590, 60, 60, 590, 60, 1514, 60, 590, 60, 590, 60};

static unsigned char frames[kMostBurst][kMostLength];

static void Fill(unsigned char* frame, unsigned number) {
  static const unsigned char kHead[] = {2, 0, 0, 0, 0, 2, 2, 0, 0, 0, 0, 1, 0x88, 0xB5};
  const unsigned order = htonl(number);
  memcpy(frame, kHead, sizeof kHead);
  memcpy(frame + sizeof kHead, &order, sizeof order);
}

static int SendBurst(int file, unsigned first, unsigned count) {
  struct mmsghdr messages[kMostBurst] = {0};
  struct iovec parts[kMostBurst];
  for (unsigned i = 0; i < count; ++i) {
    Fill(frames[i], first + i);
    parts[i] = (struct iovec){frames[i], kLengths[(first + i) % 12]};
    messages[i].msg_hdr = (struct msghdr){.msg_iov = &parts[i], .msg_iovlen = 1};
  }
  for (unsigned done = 0; done < count;) {
    const int sent = sendmmsg(file, messages + done, count - done, 0);
    if (sent <= 0) return 0;
    done += (unsigned)sent;
  }
  return 1;
}

static int OpenInterface(const char* name) {
  const int file = socket(AF_PACKET, SOCK_RAW, 0);
  const struct sockaddr_ll address = {.sll_family = AF_PACKET,
                                      .sll_protocol = htons(kEtherType),
                                      .sll_ifindex = (int)if_nametoindex(name)};
  if (file < 0 || bind(file, (const struct sockaddr*)&address, sizeof address) != 0) return -1;
  return file;
}

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const unsigned count = (unsigned)strtoul(argv[2], NULL, 10);
  unsigned burst = (unsigned)strtoul(argv[3], NULL, 10) / 1000;
  if (burst == 0) burst = 1;
  if (burst > kMostBurst) burst = kMostBurst;
  const int file = OpenInterface(argv[1]);
  struct timespec due;
  clock_gettime(CLOCK_MONOTONIC, &due);
  unsigned sent = 0;
  while (file >= 0 && sent < count) {
    const unsigned now = count - sent < burst ? count - sent : burst;
    if (!SendBurst(file, sent, now)) break;
    sent += now;
    due.tv_nsec += 1000000;
    due.tv_sec += due.tv_nsec / 1000000000;
    due.tv_nsec %= 1000000000;
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, NULL);
  }
  printf("%u\n", sent);
  if (sent < count) perror("send_frames");
  return sent < count;
}
