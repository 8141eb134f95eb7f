#!/usr/bin/env bash
# Runs the reference device (front end + service module, 100 interfaces) and
# the direct grpc++ server side by side on loopback, measures both with the
# same client in one run, and writes the table into the "Reference device"
# section of docs/performance.md. Needs build/device (./run.sh example or
# ./run.sh test device builds it). Ports: DEVICE_BENCH_PORTS (19401,19402).
set -euo pipefail
cd "$(dirname "$0")/../.."
build=build/device
[ -x "$build/bench/mgmtmsg-device-bench" ] || {
  echo "no $build/bench/mgmtmsg-device-bench: build the device first (./run.sh test device)"
  exit 1
}
IFS=, read -r device_port direct_port <<<"${DEVICE_BENCH_PORTS:-19401,19402}"
tmp=$(mktemp -d)
pids=()
cleanup() {
  kill "${pids[@]}" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$tmp"
}
trap cleanup EXIT

"$build/frontend/mgmtmsg-frontend" --listen "127.0.0.1:$device_port" --south "$tmp/south.sock" \
  >"$tmp/frontend.out" 2>"$tmp/frontend.log" &
frontend=$!
"$build/service/mgmtmsg-service" --south "$tmp/south.sock" --interfaces 100 2>"$tmp/service.log" &
service=$!
"$build/bench/mgmtmsg-device-bench" serve "127.0.0.1:$direct_port" 100 >"$tmp/direct.out" &
direct=$!
pids=("$frontend" "$service" "$direct")
for _ in $(seq 100); do
  grep -q listening "$tmp/direct.out" && grep -q "service module connected" "$tmp/frontend.log" &&
    break
  sleep 0.1
done

table=$("$build/bench/mgmtmsg-device-bench" drive "127.0.0.1:$device_port" "$frontend,$service" \
  "127.0.0.1:$direct_port" "$direct" "$@")
kill "${pids[@]}"
wait 2>/dev/null || true

# Dial-out: the counters of 100 interfaces pushed to one collector as fast as
# it takes them, by the device (service module + channel + front end) and by
# the in-process grpc++ client; the collector counts DIAL_OUT_SECONDS.
seconds=${DIAL_OUT_SECONDS:-5}
collect() {
  "$build/bench/mgmtmsg-device-bench" collect "127.0.0.1:$1" "$seconds" >"$tmp/collect.out" &
  pids=($!)
  for _ in $(seq 50); do grep -q listening "$tmp/collect.out" && break; sleep 0.1; done
}
collect "$device_port"
"$build/frontend/mgmtmsg-frontend" --listen "127.0.0.1:$direct_port" --south "$tmp/south2.sock" \
  >/dev/null 2>"$tmp/frontend2.log" &
pids+=($!)
"$build/service/mgmtmsg-service" --south "$tmp/south2.sock" --interfaces 100 \
  --dial-out "127.0.0.1:$device_port" --dial-out-interval-ms 0 2>"$tmp/service2.log" &
pids+=($!)
wait "${pids[0]}"
device_rate=$(awk '/updates_per_s/ {print $2}' "$tmp/collect.out")
kill "${pids[@]:1}"
wait 2>/dev/null || true
collect "$device_port"
"$build/bench/mgmtmsg-device-bench" push "127.0.0.1:$device_port" 100 $((seconds + 3))
wait "${pids[0]}"
direct_rate=$(awk '/updates_per_s/ {print $2}' "$tmp/collect.out")
table+=$'\n'"| Dial-out to one collector, 400 updates a message, updates/s | $device_rate | $direct_rate | \
$(awk -v a="$device_rate" -v b="$direct_rate" 'BEGIN { printf "%.2fx", a / b }') |"
echo "$table"
section="<!-- device bench: made by device/bench/run.sh on $(date -u +%Y-%m-%d), $(nproc) cores -->
$table"
/usr/bin/python3 - docs/performance.md "$section" <<'PY'
import re, sys
path, section = sys.argv[1], sys.argv[2]
text = open(path).read()
begin, end = "<!-- device bench begin -->", "<!-- device bench end -->"
block = f"{begin}\n{section}\n{end}"
text = re.sub(re.escape(begin) + ".*?" + re.escape(end), lambda _: block, text, flags=re.S)
open(path, "w").write(text)
PY
