#!/usr/bin/env python3
"""Writes docs/performance.md (to standard output) from the results that
bench/run.sh leaves in its results directory."""

import json
import pathlib
import re
import subprocess
import sys

# (workload, its sides, the pairs of sides whose profiles are compared, what one run is)
WORKLOADS = [
    ("W1", ["ours", "ours_reset", "direct", "direct_arena", "writer", "protobuf_c", "memcpy"],
     [("ours", "direct"), ("ours_reset", "direct_arena"), ("writer", "protobuf_c")],
     "one Get response of 1000 updates"),
    ("W2", ["ours", "direct"], [("ours", "direct")],
     "one Set request of 100 updates: parsed into a fresh context and walked"),
    ("W3", ["ours", "ours_cleared", "direct", "direct_arena", "writer", "protobuf_c", "memcpy"],
     [("ours", "direct_arena"), ("writer", "protobuf_c")],
     "one Subscribe stream of 10,000 messages of 50 updates on one context"),
    ("W4_64KiB", ["ours", "memcpy"], [],
     "one IPC frame of a SouthMsg with 64 KiB of rpc_data, then freed"),
    ("W4_1MiB", ["ours", "memcpy"], [],
     "one IPC frame of a SouthMsg with 1 MiB of rpc_data, then freed"),
    ("W5", ["ours", "direct"], [],
     "10,000 serializations of a dial-in SubsReply with a 4 KiB message"),
    ("Paths_FromText", ["ours", "elements"], [],
     "W1's 1000 update paths read from their text into a fresh Get response, against built "
     "element by element"),
    ("Paths_ToText", ["ours", "printer"], [],
     "W1's 1000 update paths written as text, against the example's former printer"),
]
# (side, reference side, limit): time at most limit times the reference's.
TIME_LIMIT = [
    ("W1/ours", "W1/direct", 1.05),
    ("W1/ours_reset", "W1/direct", 0.6),
    ("W1/ours_reset", "W1/direct_arena", 1.05),
    ("W2/ours", "W2/direct", 1.05),
    ("W3/ours", "W3/ours_cleared", 0.75),
    ("W3/ours", "W3/direct_arena", 1.05),
    ("W3/ours_cleared", "W3/direct", 1.05),
    ("W4_1MiB/ours", "W4_1MiB/memcpy", 1.2),
    ("Paths_FromText/ours", "Paths_FromText/elements", 1.5),
    ("Paths_ToText/ours", "Paths_ToText/printer", 1.5),
    ("W1/writer", "W1/direct", 0.15),
    ("W1/writer", "W1/protobuf_c", 0.333),
    ("W3/writer", "W3/direct", 0.15),
    ("W3/writer", "W3/protobuf_c", 0.333),
]
# The same for the instructions counted under callgrind.
INSTRUCTION_LIMIT = [
    ("W1/ours", "W1/direct", 1.03),
    ("W1/ours_reset", "W1/direct", 0.6),
    ("W1/ours_reset", "W1/direct_arena", 1.03),
    ("W2/ours", "W2/direct", 1.03),
    ("W3/ours", "W3/ours_cleared", 0.75),
    ("W3/ours", "W3/direct_arena", 1.03),
    ("W3/ours_cleared", "W3/direct", 1.03),
    ("Paths_FromText/ours", "Paths_FromText/elements", 1.5),
    ("Paths_ToText/ours", "Paths_ToText/printer", 1.5),
    ("W1/writer", "W1/direct", 0.15),
    ("W1/writer", "W1/protobuf_c", 0.333),
    ("W3/writer", "W3/direct", 0.15),
    ("W3/writer", "W3/protobuf_c", 0.333),
]
# The writer's sides reported against a memcpy of the bytes they produce.
MEMCPY_RATIO = ["W1/writer", "W3/writer"]
# Heap allocations of a W3 message at steady state: its 25 JSON values'
# characters, longer than the inline string size.
STEADY_W3_HEAP_LIMIT = 25
# A stream whose messages a worker thread builds: growth of the memory in use.
WORKER_STREAM_MEMORY_LIMIT = 64 * 1024
STREAM_MEMORY_LIMIT = 1 << 20  # bytes, between 1,000 and 1,000,000 messages
ANNOTATE_LINE = re.compile(r"^\s*([\d,]+)\s+\(\s*[\d.]+%\)\s+(.+)$")


def load(results):
    timing, spread = {}, {}
    for entry in json.loads((results / "timing.json").read_text())["benchmarks"]:
        if entry.get("aggregate_name") == "median":
            timing[entry["run_name"]] = entry
        elif entry.get("aggregate_name") == "cv":
            spread[entry["run_name"]] = entry["cpu_time"]
    for name, cv in spread.items():
        timing[name]["cpu_cv"] = cv
    instructions = {}
    for info in (results / "callgrind").glob("*.json"):
        once = json.loads(info.read_text())
        totals = re.search(r"^totals:\s*(\d+)", info.with_suffix(".out").read_text(), re.M)
        instructions[once["workload"]] = {
            "per_run": int(totals.group(1)) / once["runs"],
            "runs": once["runs"],
            "profile": info.with_suffix(".out"),
        }
    machine = dict(
        line.split("=", 1) for line in (results / "machine.txt").read_text().splitlines() if "=" in line
    )
    load_avg = [
        (results / name).read_text().strip().split("load average:")[-1].strip()
        for name in ("load-before", "load-after")
    ]
    memory = results / "memory.json"
    memory = json.loads(memory.read_text()) if memory.exists() else None
    check = json.loads((results / "check.json").read_text())
    return timing, instructions, check, memory, machine, load_avg


def exclusive_costs(profile):
    """Instructions spent in each function itself (the lines of every source
    file inlined into it summed), keyed by (function, object file), from
    callgrind_annotate."""
    text = subprocess.run(
        ["callgrind_annotate", "--inclusive=no", "--threshold=100", "--auto=no", str(profile)],
        check=True, capture_output=True, text=True).stdout
    costs, objects = {}, {}
    for line in text.splitlines():
        match = ANNOTATE_LINE.match(line)
        if match and "PROGRAM TOTALS" not in match.group(2):
            found = re.match(r"^(.*?)(?:\s+\[(/[^\]]*)\])?$", match.group(2))
            function = found.group(1).split(":", 1)[-1]
            if found.group(2):
                objects[function] = pathlib.Path(found.group(2)).name
            costs[function] = costs.get(function, 0) + int(match.group(1).replace(",", ""))
    return {(function, objects.get(function, "?")): cost for function, cost in costs.items()}


def seconds_text(us):
    if us >= 1000:
        return f"{us / 1000:.2f} ms"
    return f"{us:.2f} µs"


def ratio(ours, reference):
    return ours / reference if reference else float("nan")


def microseconds(entry, key):
    scale = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}[entry["time_unit"]]
    return entry[key] * scale


def workload_table(name, sides, timing, instructions):
    entries = [(timing[f"{name}/{side}"], instructions[f"{name}/{side}"]) for side in sides]
    unit = entries[0][0].get("label", "unit: run").split("unit: ")[-1]
    rows = [
        ("time, median CPU", lambda t, i: seconds_text(microseconds(t, "cpu_time"))),
        ("time, median wall", lambda t, i: seconds_text(microseconds(t, "real_time"))),
        ("CPU time spread (coefficient of variation)", lambda t, i: f"{100 * t.get('cpu_cv', 0):.1f} %"),
        ("instructions per run", lambda t, i: f"{i['per_run']:,.0f}"),
        (f"heap allocations per {unit}", lambda t, i: f"{t['heap_allocs_per_unit']:,.2f}"),
        (f"platform allocations per {unit}", lambda t, i: f"{t['platform_allocs_per_unit']:,.2f}"),
    ]
    lines = ["| | " + " | ".join(sides) + " |", "|---|" + "---:|" * len(sides)]
    for label, fmt in rows:
        lines.append(f"| {label} | " + " | ".join(fmt(t, i) for t, i in entries) + " |")
    return lines


def profile_lines(name, ours, reference, instructions):
    oi, ri = instructions[f"{name}/{ours}"], instructions[f"{name}/{reference}"]
    mine, theirs = exclusive_costs(oi["profile"]), exclusive_costs(ri["profile"])

    def by_object(costs, runs):
        totals = {}
        for (_, obj), cost in costs.items():
            totals[obj] = totals.get(obj, 0) + cost / runs
        return totals

    mine_objects, their_objects = by_object(mine, oi["runs"]), by_object(theirs, ri["runs"])
    lines = [
        "Where the instructions of one run go, by object file (exclusive counts, `callgrind_annotate`).",
        "The generated classes' inline accessors run inside libmgmtmsg on our side and inside",
        "mgmtmsg_bench on the direct side, so those two rows move together; their sum is what counts.",
        "",
        f"| object | {ours} | {reference} | {ours} − {reference} |",
        "|---|---:|---:|---:|",
    ]
    for obj in sorted(set(mine_objects) | set(their_objects), key=lambda o: -mine_objects.get(o, 0)):
        a, b = mine_objects.get(obj, 0), their_objects.get(obj, 0)
        if max(a, b) >= 0.001 * oi["per_run"]:
            lines.append(f"| {obj} | {a:,.0f} | {b:,.0f} | {a - b:+,.0f} |")
    diffs = sorted(
        ((mine.get(k, 0) / oi["runs"] - theirs.get(k, 0) / ri["runs"], k) for k in set(mine) | set(theirs)),
        key=lambda item: -item[0])
    lines += [
        "",
        "The functions where ours spends the most more (code inlined into an entry point is",
        "counted in the entry point, on the direct side in the caller it was inlined into):",
        "",
        f"| {ours} − {reference} per run | function |",
        "|---:|---|",
    ]
    lines += [f"| {diff:+,.0f} | `{function[:120]}` ({obj}) |" for diff, (function, obj) in diffs[:6] if diff > 0]
    return lines


def goals(timing, instructions, check, memory):
    rows = []
    for side, reference, limit in TIME_LIMIT:
        value = ratio(timing[side]["cpu_time"], timing[reference]["cpu_time"])
        rows.append((f"{side}: time at most {limit}x {reference}", f"{value:.3f}x", value <= limit))
    for side, reference, limit in INSTRUCTION_LIMIT:
        value = ratio(instructions[side]["per_run"], instructions[reference]["per_run"])
        rows.append((f"{side}: instructions at most {limit}x {reference}", f"{value:.4f}x",
                     value <= limit))
    for entry in check["serialize_again"]:
        if "again" in entry["call"]:
            rows.append((f"{entry['call']}: no heap allocation", f"{entry['heap']} heap",
                         entry["heap"] == 0))
        if entry["call"].startswith("GRPCI_SouthMsgSerialize"):
            rows.append(("GRPCI_SouthMsgSerialize: exactly one platform allocation, no heap allocation",
                         f"{entry['platform']} platform, {entry['heap']} heap",
                         entry["platform"] == 1 and entry["heap"] == 0))
        if "through the writer at steady state" in entry["call"]:
            rows.append((f"{entry['call']}: no heap allocation", f"{entry['heap']} heap",
                         entry["heap"] == 0))
        if entry["call"].startswith("W3 messages at steady state"):
            per_message = entry["heap"] / entry["units"]
            rows.append((f"W3 at steady state: at most {STEADY_W3_HEAP_LIMIT} heap allocations per message",
                         f"{per_message:.2f}", per_message <= STEADY_W3_HEAP_LIMIT))
        if entry["call"].startswith("W3 messages with paths from text"):
            per_message = entry["heap"] / entry["units"]
            rows.append((f"W3 with paths from text at steady state: at most {STEADY_W3_HEAP_LIMIT} "
                         "heap allocations per message", f"{per_message:.2f}",
                         per_message <= STEADY_W3_HEAP_LIMIT))
    if memory and "worker_thread" in memory:
        worker = memory["worker_thread"]
        growth = worker["in_use_bytes_late"] - worker["in_use_bytes_early"]
        rows.append((f"W3 stream built on a worker thread: memory in use after {worker['messages']:,} "
                     f"messages within 64 KiB of after {worker['early_messages']:,}",
                     f"{growth:+,} bytes", abs(growth) < WORKER_STREAM_MEMORY_LIMIT))
    if memory:
        growth = memory["in_use_bytes_late"] - memory["in_use_bytes_early"]
        rows.append((f"W3 stream: memory in use after {memory['messages']:,} messages within 1 MiB of "
                     f"after {memory['early_messages']:,}", f"{growth:+,} bytes",
                     abs(growth) <= STREAM_MEMORY_LIMIT))
    return rows


def main():
    results = pathlib.Path(sys.argv[1])
    timing, instructions, check, memory, machine, load_avg = load(results)
    repetitions = next(iter(timing.values()))["repetitions"]
    goal_rows = goals(timing, instructions, check, memory)
    out = [
        "# Performance",
        "",
        "Regenerated by `bench/run.sh`; do not edit by hand. Every workload is written twice in",
        "`bench/`: through our C entry points from a C file (`bench/ours.c`, as the device's",
        "software calls them) and with the protobuf C++ generated classes used directly",
        "(`bench/direct.cc`). Both sides build the same messages from the same inputs. The path",
        "workloads (`bench/paths.c`) set paths as text against the element and key entry points,",
        "and write them against the example's former printer. W1 and W3 also run through the",
        "notification writer (`bench/writer.c`, `gnmi/gnmi_wire.h`), with protobuf-c",
        "(`bench/protobuf_c.c`, code generated by `protoc-c` from the same schema) and as a",
        "`memcpy` of the bytes they produce.",
        "",
        "## Machine",
        "",
        f"- CPU: {machine.get('cpu', '?')}, {machine.get('cores', '?')} cores",
        f"- Compiler: {machine.get('compiler', '?')}, build type RelWithDebInfo (-O2 -g)",
        f"- protobuf {machine.get('protobuf', '?')}, Google Benchmark {machine.get('benchmark', '?')}, "
        f"{machine.get('kernel', '?')}",
        f"- Date: {machine.get('date', '?')}",
        f"- Load average before / after the timing pass: {load_avg[0]} / {load_avg[1]}",
        "",
        "## Goals",
        "",
        "| goal | measured | met |",
        "|---|---:|:---:|",
    ]
    out += [f"| {goal} | {value} | {'yes' if met else '**no**'} |" for goal, value, met in goal_rows]
    failed = [goal for goal, _, met in goal_rows if not met]
    out += ["", f"{len(goal_rows) - len(failed)} of {len(goal_rows)} goals met."]
    if failed:
        out += ["Not met: " + "; ".join(failed) + ". See the profiles below."]
    out += ["", "The notification writer against a `memcpy` of the bytes it produces:", "",
            "| side | time | instructions |", "|---|---:|---:|"]
    for side in MEMCPY_RATIO:
        reference = side.split("/")[0] + "/memcpy"
        out.append(f"| {side} | {ratio(timing[side]['cpu_time'], timing[reference]['cpu_time']):.1f}x | "
                   f"{ratio(instructions[side]['per_run'], instructions[reference]['per_run']):.1f}x |")
    out += [
        "",
        "Times are judged on the medians of this run, so they depend on what else the machine was",
        "doing (load average above). The instruction counts do not: they are the stable measure of",
        "what our layer adds, and each workload's section below shows where its instructions go.",
    ]
    out += [
        "",
        "## How it is measured",
        "",
        "- Byte identity: before anything is timed, both sides of every workload run once into",
        "  recorders and their bytes are compared (W2: the strings read, in reading order; W4: our",
        "  frame against the same frame built by the generated classes). The benchmark binary fails",
        "  when they differ.",
        f"- Time: Google Benchmark, {repetitions} repetitions interleaved at random between the",
        "  benchmarks; the table gives the median. The goals use CPU time, which is less disturbed",
        "  than wall time by the other jobs sharing the machine's cores.",
        "- Instructions: each side alone under `valgrind --tool=callgrind --collect-atstart=no",
        "  --toggle-collect=BenchCollected`: one warm-up run, then a fixed number of runs inside",
        "  `BenchCollected`, so only the workload's own instructions (and the library's, the runtime's",
        "  and the C library's below it) are counted.",
        "- Heap allocations: the benchmark binary replaces `malloc` and its siblings, so every",
        "  allocation of the library, the protobuf runtime and `operator new` is counted. The host",
        "  substitute of the device memory manager takes its blocks from `malloc`; those are counted",
        "  as platform allocations (`OxaHost_Stats`) and not as heap allocations.",
        "- W1 has four sides: `ours`, a fresh Get context per response (Init, build, Serialize,",
        "  DeInit); `ours_reset`, one Get context kept from response to response, its response",
        "  emptied by `GNMI_GetResponse_Reset` before each; `direct`, a fresh `GetResponse` on the",
        "  heap with a fresh output buffer; `direct_arena`, one `google::protobuf::Arena` (default",
        "  options) and one output buffer kept from response to response, the arena `Reset()` and",
        "  a new `GetResponse` created on it for each.",
        "- W3 has four sides: `ours` streams as a C caller does (`GNMI_SubscribeResponse_Reset`,",
        "  build 50 updates, Serialize; all from `bench/ours.c`); `ours_cleared` is the W3 of before",
        "  the reset entry points, kept as the reference of the first: between messages the harness",
        "  clears the notification on the heap through the exported context class",
        "  (`static_cast<GnmiRpcSubscribe*>(ctx)->GetResponse_()->mutable_update()->Clear()`),",
        "  which a C caller cannot do; `direct` clears its own notification on the heap the same",
        "  way; `direct_arena` resets an Arena (default options) per message and creates the",
        "  response on it. Every side serializes into a buffer reused from message to message, which",
        "  grows to the exact size when a message is longer than every one before.",
        "- The writer sides (`writer`) encode W1's prefix and update paths once, before timing",
        "  (`GNMI_WirePath_Make`), as a device does for the leaves it samples; each response or",
        "  message is then `GNMI_Writer_Begin`, one `GNMI_Writer_AddJsonIetf` or",
        "  `GNMI_Writer_AddUint` per update and `GNMI_Writer_Finish`, on a Get context kept from",
        "  response to response (W1) or a fresh Subscribe context per stream (W3). The protobuf-c",
        "  sides (`protobuf_c`) fill message structures kept from message to message, point their",
        "  strings at the inputs (protobuf-c copies nothing) and pack into a reused buffer. The",
        "  `memcpy` sides copy W1's response, or W3's first message once per message, between two",
        "  preallocated buffers. The byte check compares the writer and protobuf-c with the direct",
        "  side.",
        "- The direct side is written as a careful C++ user would: `mutable_`/`add_` accessors,",
        "  string data assigned into the field's own string, the size computed once with",
        "  `ByteSizeLong` and the encoder run on the cached sizes (`SerializeWithCachedSizesToArray`)",
        "  into its buffer; W5 into a `malloc`ed block of N + 1 bytes, freed after each run.",
        "- W2's values are `json_val`, the only typed value our interface reads back; the walk reads",
        "  every path element name, key, key value and value on both sides.",
        "- W4 compares `GRPCI_SouthMsgSerialize` + `OXA_Free_F` with a `memcpy` of the frame's bytes",
        "  between two preallocated buffers.",
        "- W4 and W5 take their blocks from the host substitute of the device memory manager",
        "  (`platform/oxa_mem_host.c`: `malloc` under a lock, with call counters), so our side also",
        "  pays for the substitute: in W5 that is most of the difference to the direct side's plain",
        "  `malloc`. On the device the platform's own allocator takes its place.",
        "- Paths as text (`bench/paths.c`): both sides of Paths_FromText add 1000 updates to a fresh",
        "  Get response and give each its path, one side with `GNMI_Path_FromString` from the text",
        "  `/interfaces/interface[name=ethN]/counters`, the other element by element as W1 does",
        "  (`GNMI_Path_AppendPathElem`, `GNMI_PathElem_SetName`, `GNMI_PathElem_AppendKey`); the",
        "  byte check compares the two responses. Paths_ToText writes the same 1000 paths into a",
        "  256-byte buffer with `GNMI_Path_ToString`, against the example's former printer",
        "  (`bench/printer.c`: `snprintf` per piece, keys in the map's order, nothing escaped); the",
        "  byte check compares the texts.",
        "",
        "## Workloads",
    ]
    for name, sides, pairs, what in WORKLOADS:
        out += ["", f"### {name}: {what}", ""]
        out += workload_table(name, sides, timing, instructions)
        for ours, reference in pairs:
            out += ["", f"#### {name}: {ours} against {reference}", ""]
            out += profile_lines(name, ours, reference, instructions)
    out += [
        "",
        "## Serializing again",
        "",
        "Allocations of our serializers on a context or message serialized before (the second call",
        "of the same content), and of the Subscribe serializer alone over a whole W3 stream, where",
        "the context's buffer grows to the exact size whenever a message is longer than every one",
        "before (the counters' varints lengthen as the stream goes on); the direct side's buffer",
        "grows the same way. Then whole replies on a context kept from reply to reply (reset, build,",
        "Serialize) once as many have gone before: what remains on the heap is the characters of the",
        "JSON values (25 per W3 message, 500 per W1 response).",
        "",
        "| call | heap allocations | platform allocations |",
        "|---|---:|---:|",
    ]
    out += [f"| {e['call']} | {e['heap']} | {e['platform']} |" for e in check["serialize_again"]]
    if memory:
        out += [
            "",
            "## A long stream",
            "",
            f"`mgmtmsg_bench --stream-memory`: {memory['messages']:,} W3 messages on one Subscribe context",
            "(reset, build, Serialize), with the C allocator's bytes in use (`mallinfo2`) and the",
            "resident set after the first messages and at the end.",
            "",
            "| after | bytes in use | resident set |",
            "|---|---:|---:|",
            f"| {memory['early_messages']:,} messages | {memory['in_use_bytes_early']:,} | "
            f"{memory['resident_kib_early']:,} KiB |",
            f"| {memory['messages']:,} messages | {memory['in_use_bytes_late']:,} | "
            f"{memory['resident_kib_late']:,} KiB |",
        ]
        worker = memory.get("worker_thread")
        if worker:
            out += [
                "",
                f"Then {worker['messages']:,} W3 messages on another Subscribe context, each built",
                "on one worker thread while the calling thread resets and serializes:",
                "",
                "| after | bytes in use | resident set |",
                "|---|---:|---:|",
                f"| {worker['early_messages']:,} messages | {worker['in_use_bytes_early']:,} | "
                f"{worker['resident_kib_early']:,} KiB |",
                f"| {worker['messages']:,} messages | {worker['in_use_bytes_late']:,} | "
                f"{worker['resident_kib_late']:,} KiB |",
            ]
    out += [
        "",
        "## Byte checks",
        "",
        "| workload | identical | bytes compared |",
        "|---|:---:|---:|",
    ]
    out += [f"| {e['workload']} | {'yes' if e['identical'] else '**no**'} | {e['bytes']:,} |"
            for e in check["identity"]]
    # The reference device's section is device/bench/run.sh's: kept as it stands.
    page = pathlib.Path("docs/performance.md")
    device = page.read_text().find("\n## Reference device\n") if page.exists() else -1
    if device >= 0:
        out.append(page.read_text()[device:].rstrip("\n"))
    print("\n".join(out))


if __name__ == "__main__":
    main()
