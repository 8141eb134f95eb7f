"""Dial-out: the service module publishes through the front end's client
calls to collectors (device/collector, grpcio on the pure-Python protobuf),
on both publish services, across the faults of either side."""
import os
import re
import signal
import subprocess
import tempfile
import time
import unittest

from device_client import BUILD, Client, Collector, Device, gnmi_pb2, path, wait_for
from test_device import VALGRIND, leaves

HOSTNAME = "/system/config/hostname"
ETH0 = "/interfaces/interface[name=eth0]/state"


def rss_kib(pid):
    with open(f"/proc/{pid}/status") as f:
        return int(re.search(r"VmRSS:\s+(\d+)", f.read()).group(1))


def dropped(message):
    found = re.fullmatch(r"(\d+) samples dropped", message["errors"])
    return int(found.group(1)) if found else 0


class DialOutTest(unittest.TestCase):
    def setUp(self):
        if not os.path.exists(f"{BUILD}/service/mgmtmsg-service"):
            self.skipTest("no service module built")
        self.tmp = tempfile.TemporaryDirectory()
        self.collectors, self.devices = [], []

    def tearDown(self):
        for collector in self.collectors:
            collector.stop()
        statuses = [device.stop() for device in self.devices]
        self.assertEqual(set(statuses), {(0, 0)}, self.service_log())
        self.tmp.cleanup()

    def service_log(self):
        with open(f"{self.tmp.name}/service.log") as f:
            return f.read()

    def collector(self, name, *args, port=None):
        collector = Collector(self.tmp.name, name, port, *args)
        self.collectors.append(collector)
        return collector

    def start_device(self, collectors, *args, wrap=(), frontend_args=()):
        self.device = Device(self.tmp.name, service_wrap=wrap, frontend_args=frontend_args)
        self.devices.append(self.device)
        self.device.start_frontend()
        self.device.start_service(
            "--dial-out", ",".join(f"127.0.0.1:{c.port}" for c in collectors), *args)

    def test_both_services_publish_what_get_reads(self):
        paths = [ETH0, HOSTNAME]
        for service in ("dataPublish", "Dialout"):
            with self.subTest(service=service):
                collector = self.collector(service).start()
                wrap = VALGRIND if os.environ.get("DEVICE_VALGRIND") and service == "Dialout" else ()
                self.start_device([collector], "--dial-out-service", service,
                                  "--dial-out-interval-ms", "200", "--dial-out-paths",
                                  ",".join(paths), "--tick-ms", "3600000", wrap=wrap)
                client = Client(self.device.port)
                client.gnmi.Set(gnmi_pb2.SetRequest(update=[gnmi_pb2.Update(
                    path=path(HOSTNAME), val=gnmi_pb2.TypedValue(string_val=service))]),
                    metadata=client.metadata, timeout=10)
                got = client.gnmi.Get(gnmi_pb2.GetRequest(
                    path=[path(p) for p in paths], encoding=gnmi_pb2.PROTO),
                    metadata=client.metadata, timeout=10)
                client.close()
                self.assertTrue(wait_for(lambda: any(
                    m["updates"] == leaves(got) for m in collector.messages()), 10),
                    collector.messages()[-1:])
                messages = collector.messages()
                self.assertEqual([m["req_id"] for m in messages], list(range(1, len(messages) + 1)))
                self.assertEqual({m["service"] for m in messages} | {m["errors"] for m in messages},
                                 {service, ""})
                self.assertEqual(len(leaves(got)), 6)
                self.assertEqual(self.device.stop(), (0, 0), self.service_log())
                collector.stop()

    def test_collector_late_then_restarted(self):
        collector = self.collector("late")
        started = time.monotonic()
        self.start_device([collector], "--dial-out-interval-ms", "100")
        time.sleep(2.5)
        collector.start()
        # Attempts at 0, 1, 3 and 7 s, each within a fifth: by 8.4 s at the latest.
        self.assertTrue(wait_for(lambda: collector.messages(), 8.6 - (time.monotonic() - started)))
        first = collector.messages()[0]
        self.assertGreater(first["req_id"], 1)
        self.assertEqual(dropped(first), first["req_id"] - 1)
        self.assertTrue(wait_for(lambda: len(collector.messages()) >= 20, 5))

        collector.stop(signal.SIGKILL)
        before = collector.messages()
        time.sleep(2)
        collector.start()
        self.assertTrue(wait_for(lambda: len(collector.messages()) > len(before) + 5, 10))
        after = collector.messages()[len(before):]
        ids = [m["req_id"] for m in after]
        self.assertEqual(ids, list(range(ids[0], ids[0] + len(ids))))
        gap = ids[0] - before[-1]["req_id"] - 1
        self.assertGreater(dropped(after[0]), 0)
        self.assertGreaterEqual(gap, dropped(after[0]))
        self.assertIn("not reachable", self.service_log())

    def test_slow_collector_is_bounded_and_others_keep_their_rate(self):
        fast = self.collector("fast", "--ids-only").start()
        slow = self.collector("slow", "--ids-only", "--delay-ms", "300").start()
        self.start_device([fast, slow], "--dial-out-interval-ms", "20", "--interfaces", "500")
        time.sleep(3)
        pids = [self.device.service.pid, self.device.frontend.pid]
        rss = [rss_kib(pid) for pid in pids]
        fast_before, slow_before = len(fast.messages()), len(slow.messages())
        time.sleep(4)
        grown = [rss_kib(pid) - kib for pid, kib in zip(pids, rss)]
        self.assertTrue(all(kib < 4096 for kib in grown), grown)
        self.assertGreater(len(fast.messages()) - fast_before, 4 / 0.020 * 0.7)
        ids = [m["req_id"] for m in fast.messages()]
        self.assertEqual(ids, list(range(1, len(ids) + 1)))
        late = slow.messages()[slow_before:]
        self.assertLess(len(late), 4 / 0.3 + 2)
        self.assertGreater(sum(dropped(m) for m in late), 50)

    def test_tls_checks_the_collector(self):
        certs = self.make_certs()
        good = self.collector("good", "--tls-cert", certs["good.crt"], "--tls-key",
                              certs["good.key"]).start()
        wrong = self.collector("wrong", "--tls-cert", certs["wrong.crt"], "--tls-key",
                               certs["wrong.key"]).start()
        self.start_device([good, wrong], "--dial-out-tls", "1", "--dial-out-interval-ms", "100",
                          frontend_args=["--dial-out-ca", certs["ca.crt"]])
        self.assertTrue(wait_for(lambda: len(good.messages()) >= 3, 10))
        self.assertEqual(wrong.messages(), [])
        self.assertIn(f"127.0.0.1:{wrong.port}: collector 127.0.0.1:{wrong.port} not reachable",
                      self.service_log())

    def test_front_end_killed(self):
        collector = self.collector("collector").start()
        self.start_device([collector], "--dial-out-interval-ms", "100")
        self.assertTrue(wait_for(lambda: len(collector.messages()) >= 3, 10))
        self.device.stop_frontend(signal.SIGKILL)
        before = len(collector.messages())
        self.device.start_frontend()
        self.assertTrue(wait_for(lambda: len(collector.messages()) >= before + 5, 10))
        ids = [m["req_id"] for m in collector.messages()]
        self.assertEqual(ids, sorted(set(ids)))
        self.assertIn("every call freed", self.service_log())

    def make_certs(self):
        """A test CA with a certificate for 127.0.0.1, and one of a CA that
        is not trusted."""
        out = {}
        for ca, leaf in (("ca", "good"), ("other", "wrong")):
            files = {n: os.path.join(self.tmp.name, n) for n in
                     (f"{ca}.crt", f"{ca}.key", f"{leaf}.crt", f"{leaf}.key", f"{leaf}.csr")}
            run = lambda *a: subprocess.run(["openssl", *a], check=True, capture_output=True)
            run("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "1", "-subj", f"/CN={ca}",
                "-keyout", files[f"{ca}.key"], "-out", files[f"{ca}.crt"])
            run("req", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=collector",
                "-keyout", files[f"{leaf}.key"], "-out", files[f"{leaf}.csr"])
            ext = os.path.join(self.tmp.name, "san.ext")
            with open(ext, "w") as f:
                f.write("subjectAltName=IP:127.0.0.1,DNS:localhost\n")
            run("x509", "-req", "-in", files[f"{leaf}.csr"], "-CA", files[f"{ca}.crt"],
                "-CAkey", files[f"{ca}.key"], "-CAcreateserial", "-days", "1",
                "-extfile", ext, "-out", files[f"{leaf}.crt"])
            out.update(files)
        return out


if __name__ == "__main__":
    unittest.main()
