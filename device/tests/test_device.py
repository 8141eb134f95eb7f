"""The front end and the service module together, through a real gNMI client:
the interoperability tables, the streams, dial-in, the faults of either
program, and a load of subscribers and writers."""
import json
import os
import queue
import signal
import socket
import struct
import subprocess
import tempfile
import threading
import time
import unittest

import grpc

from device_client import (BUILD, Client, Device, dialin_pb2, gnmi_pb2, path,
                           subscribe_request, wait_for)

CODE = grpc.StatusCode
LIST = gnmi_pb2.SubscriptionList
HOSTNAME = "/system/config/hostname"
ETH1 = "/interfaces/interface[name=eth1]"
COUNTER = "/interfaces/interface[name=eth0]/state/counters/in-octets"
SUB = "/gnmi.gNMI/Subscribe"
VALGRIND = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full",
            "--errors-for-leak-kinds=definite,indirect", "--show-leak-kinds=definite,indirect"]


def json_val(value):
    return gnmi_pb2.TypedValue(json_ietf_val=json.dumps(value).encode())


def update(text, val):
    return gnmi_pb2.Update(path=path(text), val=val)


def get(paths, encoding=gnmi_pb2.JSON_IETF, **kwargs):
    return gnmi_pb2.GetRequest(path=[path(p) for p in paths], encoding=encoding, **kwargs)


def leaves(reply):
    """{path text: value} of a GetResponse or of SubscribeResponses."""
    notifications = reply.notification if hasattr(reply, "notification") else [
        r.update for r in reply if r.HasField("update")]
    found = {}
    for n in notifications:
        for u in n.update:
            text = "".join("/" + e.name + "".join(f"[{k}={v}]" for k, v in sorted(e.key.items()))
                           for e in u.path.elem)
            found[text] = getattr(u.val, u.val.WhichOneof("value"))
    return found


# (name, stub method, request, expected code, check of the reply or None), in
# order: later rows see what earlier Sets did. A streaming call's reply is the
# list of its responses.
INTEROP = [
    ("capabilities", "gnmi.Capabilities", gnmi_pb2.CapabilityRequest(), CODE.OK,
     lambda r: r.gNMI_version == "0.7.0" and set(r.supported_encodings) == {
         gnmi_pb2.JSON, gnmi_pb2.JSON_IETF, gnmi_pb2.PROTO} and len(r.supported_models) == 2),
    ("set hostname", "gnmi.Set", gnmi_pb2.SetRequest(update=[update(HOSTNAME, json_val("t1"))]),
     CODE.OK, lambda r: [u.op for u in r.response] == [gnmi_pb2.UpdateResult.UPDATE]
     and r.timestamp > 0),
    ("get leaf JSON_IETF", "gnmi.Get", get([HOSTNAME]), CODE.OK,
     lambda r: leaves(r) == {HOSTNAME: b'"t1"'}),
    ("get leaf PROTO", "gnmi.Get", get([ETH1 + "/config/mtu"], gnmi_pb2.PROTO), CODE.OK,
     lambda r: leaves(r) == {ETH1 + "/config/mtu": 1500}),
    ("get subtree PROTO", "gnmi.Get", get([ETH1], gnmi_pb2.PROTO), CODE.OK,
     lambda r: len(leaves(r)) == 8),
    ("get subtree JSON_IETF", "gnmi.Get", get([ETH1]), CODE.OK,
     lambda r: (lambda o: o["config"] == {"description": "port eth1", "mtu": "1500", "enabled": True}
                and set(o["state"]["counters"]) == {"in-octets", "out-octets", "in-pkts", "out-pkts"}
                )(json.loads(leaves(r)[ETH1]))),
    ("get list JSON", "gnmi.Get", get(["/interfaces"], gnmi_pb2.JSON), CODE.OK,
     lambda r: [(e["name"], e["config"]["mtu"]) for e in json.loads(
         leaves(r)["/interfaces"])["interface"]] == [("eth0", 1500), ("eth1", 1500)]),
    ("get CONFIG", "gnmi.Get", get([ETH1], gnmi_pb2.PROTO, type=gnmi_pb2.GetRequest.CONFIG),
     CODE.OK, lambda r: len(leaves(r)) == 3 and all("/config/" in p for p in leaves(r))),
    ("get STATE", "gnmi.Get", get([ETH1], gnmi_pb2.PROTO, type=gnmi_pb2.GetRequest.STATE),
     CODE.OK, lambda r: len(leaves(r)) == 5 and all("/state/" in p for p in leaves(r))),
    ("get with prefix", "gnmi.Get", gnmi_pb2.GetRequest(
        prefix=path("/system"), path=[path("config/hostname")], encoding=gnmi_pb2.JSON), CODE.OK,
     lambda r: list(leaves(r).values()) == [b'"t1"']),
    ("get missing path", "gnmi.Get", get(["/no/such/leaf"]), CODE.NOT_FOUND, None),
    ("get ASCII", "gnmi.Get", get([HOSTNAME], gnmi_pb2.ASCII), CODE.UNIMPLEMENTED, None),
    ("get without path", "gnmi.Get", gnmi_pb2.GetRequest(), CODE.INVALID_ARGUMENT, None),
    ("set with one bad value", "gnmi.Set", gnmi_pb2.SetRequest(
        delete=[path(HOSTNAME)], update=[update(ETH1 + "/config/mtu", json_val("big"))]),
     CODE.INVALID_ARGUMENT, None),
    ("nothing of it applied", "gnmi.Get", get([HOSTNAME, ETH1 + "/config/mtu"]), CODE.OK,
     lambda r: leaves(r) == {HOSTNAME: b'"t1"', ETH1 + "/config/mtu": b'"1500"'}),
    ("set delete, replace, update", "gnmi.Set", gnmi_pb2.SetRequest(
        prefix=path(ETH1), delete=[path("config/description")],
        replace=[update("config/mtu", gnmi_pb2.TypedValue(uint_val=9000))],
        update=[update("config/name", gnmi_pb2.TypedValue(string_val="eth1"))]), CODE.OK,
     lambda r: [u.op for u in r.response] == [gnmi_pb2.UpdateResult.DELETE,
                                               gnmi_pb2.UpdateResult.REPLACE,
                                               gnmi_pb2.UpdateResult.UPDATE]),
    ("all three applied", "gnmi.Get", get([ETH1 + "/config"], gnmi_pb2.PROTO), CODE.OK,
     lambda r: leaves(r) == {ETH1 + "/config/mtu": 9000, ETH1 + "/config/enabled": True,
                             ETH1 + "/config/name": "eth1"}),
    ("subscribe once", "gnmi.Subscribe", iter([subscribe_request([ETH1], LIST.ONCE)]), CODE.OK,
     lambda rs: rs[-1].sync_response and len(leaves(rs)) == 8),
    ("subscribe poll first", "gnmi.Subscribe", iter([gnmi_pb2.SubscribeRequest(
        poll=gnmi_pb2.Poll())]), CODE.INVALID_ARGUMENT, None),
    ("subscribe BYTES", "gnmi.Subscribe", iter([subscribe_request(
        [HOSTNAME], LIST.ONCE, gnmi_pb2.BYTES)]), CODE.UNIMPLEMENTED, None),
    ("dial-in cancel of nothing", "dialin.Cancel", dialin_pb2.CancelArgs(
        request_id=1, subscription_id=999), CODE.NOT_FOUND, None),
]


class DeviceTest(unittest.TestCase):
    valgrind = bool(os.environ.get("DEVICE_VALGRIND"))

    def setUp(self):
        if not os.path.exists(f"{BUILD}/service/mgmtmsg-service"):
            self.skipTest("no service module built")
        self.tmp = tempfile.TemporaryDirectory()
        self.device = Device(self.tmp.name, service_wrap=VALGRIND if self.valgrind else ())
        self.device.start_frontend()
        self.device.start_service("--tick-ms", "100")
        self.client = Client(self.device.port)

    def tearDown(self):
        self.client.close()
        self.assertEqual(self.device.stop(), (0, 0), self.service_log())
        self.tmp.cleanup()

    def service_log(self):
        with open(f"{self.tmp.name}/service.log") as f:
            return f.read()

    def call(self, method, request, timeout=10):
        stub, name = method.split(".")
        rpc = getattr(getattr(self.client, stub), name)
        reply = rpc(request, metadata=self.client.metadata, timeout=timeout)
        return list(reply) if name == "Subscribe" else reply

    def stream(self, paths, list_mode=LIST.STREAM, requests=None, updates_only=False, **kwargs):
        """A Subscribe whose further requests come from the queue `requests`;
        without one, the client half-closes after its SubscriptionList."""
        first = subscribe_request(paths, list_mode, **kwargs)
        first.subscribe.updates_only = updates_only
        more = iter(requests.get, None) if requests else ()
        return self.client.gnmi.Subscribe(_chain(first, more), metadata=self.client.metadata,
                                          timeout=20)

    def test_interop_table(self):
        for name, method, request, code, check in INTEROP:
            with self.subTest(name):
                try:
                    reply, got = self.call(method, request), CODE.OK
                except grpc.RpcError as error:
                    reply, got = None, error.code()
                self.assertEqual(got, code)
                if check:
                    self.assertTrue(check(reply), reply)
        bad = Client(self.device.port, "admin", "wrong")
        with self.assertRaises(grpc.RpcError) as caught:
            bad.gnmi.Capabilities(gnmi_pb2.CapabilityRequest(), metadata=bad.metadata, timeout=5)
        bad.close()
        self.assertEqual(caught.exception.code(), CODE.UNAUTHENTICATED)
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))

    def test_subscribe_modes(self):
        # POLL: a snapshot and sync_response at the start and for each Poll.
        polls = queue.Queue()
        poll = self.stream([HOSTNAME], LIST.POLL, polls)
        for _ in range(3):
            self.assertEqual(leaves([next(poll)]), {HOSTNAME: b'"mgmtmsg-device"'})
            self.assertTrue(next(poll).sync_response)
            polls.put(gnmi_pb2.SubscribeRequest(poll=gnmi_pb2.Poll()))
        polls.put(subscribe_request([HOSTNAME], LIST.POLL))  # a second SubscriptionList
        with self.assertRaises(grpc.RpcError) as caught:
            list(poll)
        self.assertEqual(caught.exception.code(), CODE.INVALID_ARGUMENT)
        # SAMPLE goes on after the client's half-close; the counter moves.
        sample = self.stream([COUNTER], mode=gnmi_pb2.SAMPLE, sample_interval=100_000_000)
        values = [leaves([r]).get(COUNTER) for r, _ in zip(sample, range(5))]
        self.assertIsNone(values[1])  # sync_response
        self.assertLess(int(json.loads(values[2])), int(json.loads(values[4])))
        sample.cancel()
        # ON_CHANGE: the present value, sync, then each Set and the delete.
        change = self.stream([HOSTNAME], mode=gnmi_pb2.ON_CHANGE)
        only_new = self.stream([HOSTNAME], mode=gnmi_pb2.ON_CHANGE, updates_only=True)
        self.assertEqual([bool(next(change).sync_response), next(change).sync_response,
                          next(only_new).sync_response], [False, True, True])
        self.call("gnmi.Set", gnmi_pb2.SetRequest(update=[update(HOSTNAME, json_val("c1"))]))
        self.call("gnmi.Set", gnmi_pb2.SetRequest(delete=[path(HOSTNAME)]))
        for stream in (change, only_new):
            self.assertEqual(leaves([next(stream)]), {HOSTNAME: b'"c1"'})
            self.assertEqual(next(stream).update.delete[0], path(HOSTNAME))
            stream.cancel()
        # suppress_redundant: an unchanged leaf comes again only with the heartbeat.
        quiet = self.stream(["/system/state/boot-time"], mode=gnmi_pb2.SAMPLE,
                            sample_interval=50_000_000, suppress_redundant=True,
                            heartbeat_interval=600_000_000)
        next(quiet), next(quiet)
        started = time.monotonic()
        next(quiet)
        self.assertGreater(time.monotonic() - started, 0.4)
        quiet.cancel()
        # A deadline frees the call like a cancel.
        with self.assertRaises(grpc.RpcError) as caught:
            list(self.client.gnmi.Subscribe(iter([subscribe_request([HOSTNAME], LIST.STREAM)]),
                                            metadata=self.client.metadata, timeout=0.5))
        self.assertEqual(caught.exception.code(), CODE.DEADLINE_EXCEEDED)
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))

    def test_dialin_subscribe_and_cancel(self):
        dial = self.client.dialin.Subscribe(dialin_pb2.SubsArgs(
            request_id=7, encoding=gnmi_pb2.PROTO, path=[dialin_pb2.Path(path=COUNTER)],
            sample_interval=100), metadata=self.client.metadata, timeout=20)
        replies = [next(dial), next(dial)]
        self.assertEqual({(r.subscription_id, r.request_id, r.response_code) for r in replies},
                         {(replies[0].subscription_id, 7, "ok")})
        samples = [gnmi_pb2.SubscribeResponse.FromString(r.message) for r in replies]
        self.assertEqual(set(leaves(samples)), {COUNTER})
        cancel = self.call("dialin.Cancel", dialin_pb2.CancelArgs(
            request_id=7, subscription_id=replies[0].subscription_id))
        self.assertEqual((cancel.request_id, cancel.response_code), (7, "ok"))
        list(dial)  # ends OK
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))

    def sample_stream(self):
        return self.stream([HOSTNAME], mode=gnmi_pb2.SAMPLE, sample_interval=100_000_000)

    def test_service_module_killed_mid_stream(self):
        stream = self.sample_stream()
        next(stream)
        self.device.stop_service(signal.SIGKILL)
        started = time.monotonic()
        with self.assertRaises(grpc.RpcError) as caught:
            for _ in stream:
                pass
        self.assertEqual(caught.exception.code(), CODE.UNAVAILABLE)
        self.assertLess(time.monotonic() - started, 1.0)
        self.assertEqual(self.device.live_calls(), 0)
        self.device.start_service()
        self.assertEqual(self.call("gnmi.Capabilities", gnmi_pb2.CapabilityRequest()).gNMI_version,
                         "0.7.0")

    def test_front_end_killed(self):
        stream = self.sample_stream()
        next(stream)
        connected = self.device.frontend_log().count("service module connected")
        self.device.stop_frontend(signal.SIGKILL)
        with self.assertRaises(grpc.RpcError):
            for _ in stream:
                pass
        self.device.start_frontend()
        self.assertTrue(wait_for(
            lambda: self.device.frontend_log().count("service module connected") > connected))
        self.assertIn("every call freed", self.service_log())
        stream = self.sample_stream()
        self.assertEqual(len([r for r, _ in zip(stream, range(2))]), 2)
        stream.cancel()
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))


def _chain(first, more):
    yield first
    yield from more


class MalformedFrameTest(unittest.TestCase):
    """The service module behind a fake front end that sends bad frames."""

    def test_bad_frames_drop_the_connection_only(self):
        if not os.path.exists(f"{BUILD}/service/mgmtmsg-service"):
            self.skipTest("no service module built")
        with tempfile.TemporaryDirectory() as tmp:
            listener = socket.socket(socket.AF_UNIX)
            listener.bind(f"{tmp}/south.sock")
            listener.listen(1)
            listener.settimeout(10)
            self.addCleanup(listener.close)
            wrap = VALGRIND if DeviceTest.valgrind else []
            log = open(f"{tmp}/service.log", "w")
            service = subprocess.Popen(
                [*wrap, f"{BUILD}/service/mgmtmsg-service", "--south", f"{tmp}/south.sock"],
                stderr=log)
            for frame in [struct.pack("=I", 52428801), struct.pack("=I", 3) + b"\xff\xff\xff"]:
                conn, _ = listener.accept()
                conn.settimeout(10)
                conn.sendall(frame)
                self.assertEqual(conn.recv(1), b"", frame)  # dropped
                conn.close()
            conn, _ = listener.accept()  # back again; a message that is no request is ignored
            conn.sendall(struct.pack("=I", 2) + b"\x08\x01")
            conn.settimeout(0.5)
            self.assertRaises(socket.timeout, conn.recv, 1)
            service.send_signal(signal.SIGTERM)
            self.assertEqual(service.wait(30), 0)
            log.close()
            conn.close()
            with open(f"{tmp}/service.log") as f:
                text = f.read()
            self.assertIn("over the limit", text)
            self.assertIn("no SouthMsg", text)


class LoadTest(unittest.TestCase):
    """100 ON_CHANGE subscribers and 20 writers, each doing SETS Set and Get
    of its own leaf: every acknowledged Set is read back by its Get and
    reaches every subscriber, in order."""
    SETS = int(os.environ.get("DEVICE_LOAD_SETS", "50"))

    def test_subscribers_see_every_set_in_order(self):
        if not os.path.exists(f"{BUILD}/service/mgmtmsg-service"):
            self.skipTest("no service module built")
        with tempfile.TemporaryDirectory() as tmp:
            device = Device(tmp, frontend_args=["--max-queue", "100000"])
            device.start_frontend()
            device.start_service("--tick-ms", "3600000")
            client = Client(device.port)
            request = subscribe_request(["/load"], LIST.STREAM, mode=gnmi_pb2.ON_CHANGE,
                                        encoding=gnmi_pb2.PROTO).SerializeToString()
            streams = [client.raw(SUB, True)(iter([request]), metadata=client.metadata,
                                             timeout=300) for _ in range(100)]
            received = [[] for _ in streams]

            def read(i):
                for raw in streams[i]:
                    received[i].append(raw)
                    if len(received[i]) > 20 * self.SETS:
                        return

            def write(n, results):
                leaf = f"/load/writer[id={n}]/value"
                ok = True
                for seq in range(1, self.SETS + 1):
                    client.gnmi.Set(gnmi_pb2.SetRequest(update=[update(
                        leaf, gnmi_pb2.TypedValue(uint_val=seq))]), metadata=client.metadata,
                        timeout=30)
                    got = client.gnmi.Get(get([leaf], gnmi_pb2.PROTO), metadata=client.metadata,
                                          timeout=30)
                    ok = ok and leaves(got) == {leaf: seq}
                results.append(ok)

            readers = [threading.Thread(target=read, args=(i,)) for i in range(100)]
            for thread in readers:
                thread.start()
            results = []
            writers = [threading.Thread(target=write, args=(n, results)) for n in range(20)]
            for thread in writers:
                thread.start()
            for thread in writers:
                thread.join(240)
            self.assertEqual(results, [True] * 20)
            for thread in readers:
                thread.join(120)
            for raws in received:
                seen = {}
                for raw in raws:
                    for text, value in leaves([gnmi_pb2.SubscribeResponse.FromString(raw)]).items():
                        seen.setdefault(text, []).append(value)
                self.assertEqual(seen, {f"/load/writer[id={n}]/value": list(range(1, self.SETS + 1))
                                        for n in range(20)})
            for stream in streams:
                stream.cancel()
            self.assertTrue(wait_for(lambda: device.live_calls() == 0))
            client.close()
            self.assertEqual(device.stop(), (0, 0))


if __name__ == "__main__":
    unittest.main()
