#!/usr/bin/env bash
# Every filter keeps exactly the frames, and every counter counts exactly the frames, that a display
# filter of tshark selects, out of 100,000 mixed ones.
#   frame_filter_test.sh MIXED_FRAMES FILTER_FRAMES [SEED]
# Ends with 77 where there is no tshark.
set -euo pipefail
export LC_ALL=C

mixed_frames=$1
filter_frames=$2
seed=${3:-20261}
command -v tshark >/dev/null || { echo 'tshark is not installed'; exit 77; }

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
trace=$folder/mixed.pcap
"$mixed_frames" "$trace" 100000 "$seed"

# tshark is to look at the headers that the device looks at, and no further: what an ICMP error
# quotes is not the frame's. Its own protocol "ethertype" and those below cannot be missed.
export XDG_CONFIG_HOME=$folder
mkdir -p "$folder/wireshark"
tshark -G protocols 2>/dev/null | cut -f3 |
  grep -vxE 'frame|eth|ethertype|vlan|ieee8021ad|arp|ip|ipv6(\..*)?|ah|mipv6|hip|tcp|udp' \
    >"$folder/wireshark/disabled_protos"

# ---- Display filters of which the cases are made

# An IP version other than the EtherType says: tshark follows the version, the device neither.
contradictory='(ip && ipv6)'
# A header that is cut off has fields in tshark.
whole='(ip.dst || ipv6.dst)'

ether_type() { echo "(eth.type == $1 || vlan.etype == $1)"; }

# protocol LIST: the IP protocol after all extension headers is one of the list.
protocol() {
  echo "($whole && !$contradictory && (ip.proto in {$1} || ipv6.nxt in {$1} ||" \
    "ipv6.hopopts.nxt in {$1} || ipv6.routing.nxt in {$1} || ipv6.dstopts.nxt in {$1} ||" \
    "ipv6.fraghdr.nxt in {$1} || ah.next_header in {$1}))"
}

# transport CONDITION: on fields of TCP and UDP.
transport() { echo "(($1) && !$contradictory)"; }

port_of() { transport "$1.port == $2"; }

vlan_id() {
  echo "(vlan.id == $1 || ieee8021ad.id == $1 || ieee8021ad.svid == $1 || ieee8021ad.cvid == $1)"
}

other_protocols="3..5,7..16,18..42,45..50,52..57,59,61..134,136..138,141..255"
pattern=436f7276616e65207061747465726e21 # Corvane pattern!

# ---- Cases: the settings, and the display filter of the frames that are kept

cases=()
add() { cases+=("$1|$2"); }

# A type that is switched off drops its frames.
drops() { add "off=$1" "!($2)"; }

# Packet filter: MAC addresses
add 'mac=02:00:00:0a:00:15' 'eth.addr == 02:00:00:0a:00:15'
add 'srcmac=02:00:00:*:00:35 dstmac=ff:ff:ff:ff:ff:ff' \
  'eth.src[0:3] == 02:00:00 && eth.src[4:2] == 00:35 && eth.dst == ff:ff:ff:ff:ff:ff'
# IP addresses
add 'ip=10.1.2.3' "ip.addr == 10.1.2.3 && $whole"
add 'srcip=192.168.*.* dstip=10.*.2.3' \
  'ip.src == 192.168.0.0/16 && ip.dst[0] == 0a && ip.dst[2:2] == 02:03'
add 'srcip4=10.1.2.3 dstip4=192.*.*.*' 'ip.src == 10.1.2.3 && ip.dst == 192.0.0.0/8'
add 'dstip=2001:0db8:0010:0000:0000:0000:0000:0021' "ipv6.dst == 2001:db8:10::21 && !$contradictory"
add 'srcip=2001:0db8:****:****:****:****:****:****' \
  "!$contradictory && $whole && (ipv6.src == 2001:db8::/32 || ip.src == 32.1.13.184)"
add 'ip=2001:0db8:0010:****:****:****:****:0022' \
  "!$contradictory && $whole && ((ipv6.src == 2001:db8:10::/48 && ipv6.src[14:2] == 00:22) ||
  (ipv6.dst == 2001:db8:10::/48 && ipv6.dst[14:2] == 00:22))"
# Ports
add 'port=443' "$(transport 'tcp.port == 443 || udp.port == 443')"
add 'srcport=53 dstport=5060' "$(transport \
  '(tcp.srcport == 53 && tcp.dstport == 5060) || (udp.srcport == 53 && udp.dstport == 5060)')"
# VLAN tags, and all together
add 'vlanid=30' "$(vlan_id 30)"
add 'vlanid=0' "$(vlan_id 0)"
add 'vlanid=4464' 'frame.number == 0'
add 'ip=10.1.*.* port=80 vlanid=200' "$(vlan_id 200) && ip.addr == 10.1.0.0/16 &&
  (tcp.port == 80 || udp.port == 80)"

# Packet types
drops ipv4 "$(ether_type 0x0800)"
drops ipv6 "$(ether_type 0x86dd)"
drops arp "$(ether_type 0x0806)"
drops l2other "!($(ether_type 0x0800) || $(ether_type 0x86dd) || $(ether_type 0x0806))"
drops vlan 'vlan || ieee8021ad'
drops tcp "$(protocol 6)"
drops udp "$(protocol 17)"
drops icmp "$(protocol 1,58)"
drops igmp "$(protocol 2)"
drops l4other "$(protocol $other_protocols) || ($whole && !$contradictory &&
  ip.proto in {0,43,44,51,60,135,139,140})"
drops https "$(port_of tcp 443)"
drops http "$(port_of tcp 80)"
drops ftp "$(port_of tcp 21) || $(port_of tcp 20)"
drops dns "$(port_of tcp 53) || $(port_of udp 53)"
drops smtp "$(port_of tcp 25)"
drops pop3 "$(port_of tcp 110)"
drops dhcp "$(port_of udp 67) || $(port_of udp 68)"
drops ssh "$(port_of tcp 22)"
drops sip "$(port_of tcp 5060) || $(port_of udp 5060)"
drops smb "$(port_of tcp 445)"
drops quic "$(port_of udp 443)"
drops tcpfin "$(transport 'tcp.flags.fin == 1')"
drops tcpsyn "$(transport 'tcp.flags.syn == 1')"
drops tcprst "$(transport 'tcp.flags.reset == 1')"
drops tcppsh "$(transport 'tcp.flags.push == 1')"
drops tcpack "$(transport 'tcp.flags.ack == 1')"
drops zerowindow "$(transport 'tcp.window_size_value == 0')"
add 'off=ipv6 off=tcpsyn off=arp' \
  "!$(ether_type 0x86dd) && !$(transport 'tcp.flags.syn == 1') && !$(ether_type 0x0806)"

# DPI: the whole pattern, its first and last words, every second byte, one byte
add "dpihex=$pattern" 'frame contains "Corvane pattern!"'
add "dpihex=$pattern dpimask=ff" 'frame contains "Corvane "'
add "dpihex=$pattern dpimask=ff00" 'frame contains "pattern!"'
add "dpihex=$pattern dpimask=5555" \
  'frame matches "(?s-i)C.r.a.e.p.t.e.n"'
add "dpihex=$pattern dpimask=80008000" 'frame contains "!"'
add "dpihex=$pattern srcport=443" \
  "$(transport 'tcp.srcport == 443 || udp.srcport == 443') && frame contains \"Corvane pattern!\""

# Counters
add 'ipv4=1 tcp=1 ucast=1' "$(ether_type 0x0800) && $(protocol 6) && eth.dst.ig == 0"
add 'ipv6=0 udp=0 mcast=1 size_gt=500' "!$(ether_type 0x86dd) && !$(protocol 17) &&
  eth.dst.ig == 1 && eth.dst != ff:ff:ff:ff:ff:ff && frame.len > 496"
add 'ipv4=1 ipv4_addr=10.1.*.3' "$(ether_type 0x0800) && !$contradictory && $whole &&
  ((ip.src == 10.1.0.0/16 && ip.src[3] == 03) || (ip.dst == 10.1.0.0/16 && ip.dst[3] == 03))"
add 'ipv6=1 ipv6_addr=2001:0db8:0010:0000:0000:0000:0000:**21' "!$contradictory && $whole &&
  ((ipv6.src == 2001:db8:10::/112 && ipv6.src[15] == 21) ||
  (ipv6.dst == 2001:db8:10::/112 && ipv6.dst[15] == 21))"
add 'bcast=1 icmp=0 size_eq=64' \
  "eth.dst == ff:ff:ff:ff:ff:ff && !$(protocol 1,58) && frame.len == 60"

# ---- One case

# check NUMBER SETTINGS|FILTER: a line when the two differ. Prints to a file: cases run side by side.
check() {
  local settings=${2%%|*} filter=${2#*|} out=$folder/$1
  tshark -n -o ip.defragment:FALSE -o ipv6.defragment:FALSE -r "$trace" -Y "$filter" \
    -o 'gui.column.format:"Number","%m"' >"$out.tshark" 2>"$out.errors" ||
    { sed "s/^/$settings: /" "$out.errors" >"$out.differs"; return; }
  # shellcheck disable=SC2086 # settings are words
  "$filter_frames" "$trace" $settings >"$out.ours"
  sed -i "s, ,,g" "$out.tshark"
  cmp -s "$out.tshark" "$out.ours" && return
  echo "$settings: tshark $(wc -l <"$out.tshark"), ours $(wc -l <"$out.ours"); the first" \
    "differences: $(diff "$out.tshark" "$out.ours" | grep '^[<>]' | head -4 | tr '\n' ' ')" \
    >"$out.differs"
}

# Every nth case from the given one on.
worker() {
  local i
  for ((i = $1; i < ${#cases[@]}; i += $2)); do check "$i" "${cases[i]}"; done
}

workers=$(nproc)
for ((w = 0; w < workers; ++w)); do worker "$w" "$workers" & done
wait

for ((i = 0; i < ${#cases[@]}; ++i)); do
  [ -e "$folder/$i.ours" ] || [ -e "$folder/$i.differs" ] || echo "${cases[i]%%|*}: did not run"
  [ ! -e "$folder/$i.differs" ] || cat "$folder/$i.differs"
done >"$folder/failures"
cat "$folder/failures"
echo "${#cases[@]} cases"
[ ! -s "$folder/failures" ]
