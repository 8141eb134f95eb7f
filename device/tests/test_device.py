"""The front end and the service module together, through a real gNMI client:
the interoperability table, then the faults of either program."""
import json
import os
import signal
import tempfile
import time
import unittest

import grpc

from device_client import (BUILD, Client, Device, dialin_pb2, gnmi_pb2, path,
                           subscribe_request, wait_for)

CODE = grpc.StatusCode
HOSTNAME = "/system/config/hostname"
VALGRIND = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full",
            "--errors-for-leak-kinds=definite,indirect", "--show-leak-kinds=definite,indirect"]


def json_val(value):
    return gnmi_pb2.TypedValue(json_ietf_val=json.dumps(value).encode())


def first_n(n):
    return lambda responses: [r for r, _ in zip(responses, range(n))]


def once(paths):
    return iter([subscribe_request(paths, gnmi_pb2.SubscriptionList.ONCE)])


# (name, stub method, request, expected code, check of the reply or None).
# A streaming call's reply is the list of its responses.
INTEROP = [
    ("capabilities", "gnmi.Capabilities", gnmi_pb2.CapabilityRequest(), CODE.OK,
     lambda r: r.gNMI_version == "0.7.0" and gnmi_pb2.JSON_IETF in r.supported_encodings),
    ("set hostname", "gnmi.Set",
     gnmi_pb2.SetRequest(update=[gnmi_pb2.Update(path=path(HOSTNAME), val=json_val("t1"))]),
     CODE.OK, lambda r: len(r.response) == 1),
    ("get hostname", "gnmi.Get",
     gnmi_pb2.GetRequest(path=[path(HOSTNAME)], encoding=gnmi_pb2.JSON_IETF), CODE.OK,
     lambda r: b"t1" in r.notification[0].update[0].val.json_ietf_val),
    ("get missing path", "gnmi.Get",
     gnmi_pb2.GetRequest(path=[path("/no/such/leaf")], encoding=gnmi_pb2.JSON_IETF),
     CODE.NOT_FOUND, None),
    ("subscribe once", "gnmi.Subscribe", once([HOSTNAME]), CODE.OK,
     lambda rs: rs[-1].sync_response and any(r.update.update for r in rs)),
]


class DeviceTest(unittest.TestCase):
    def setUp(self):
        if not os.path.exists(f"{BUILD}/service/mgmtmsg-service"):
            self.skipTest("no service module built")
        self.tmp = tempfile.TemporaryDirectory()
        wrap = VALGRIND if os.environ.get("DEVICE_VALGRIND") else ()
        self.device = Device(self.tmp.name, service_wrap=wrap)
        self.device.start_frontend()
        self.device.start_service()
        self.client = Client(self.device.port)

    def tearDown(self):
        self.client.close()
        self.assertEqual(self.device.stop(), (0, 0), open(f"{self.tmp.name}/service.log").read())
        self.tmp.cleanup()

    def call(self, method, request, timeout=10):
        stub, name = method.split(".")
        rpc = getattr(getattr(self.client, stub), name)
        reply = rpc(request, metadata=self.client.metadata, timeout=timeout)
        return list(reply) if name == "Subscribe" else reply

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

    def sample_stream(self):
        return self.client.gnmi.Subscribe(iter([subscribe_request(
            [HOSTNAME], gnmi_pb2.SubscriptionList.STREAM, mode=gnmi_pb2.SAMPLE,
            sample_interval=100_000_000)]), metadata=self.client.metadata)

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
        stream = self.sample_stream()
        self.assertEqual(len(first_n(2)(stream)), 2)
        stream.cancel()
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))


if __name__ == "__main__":
    unittest.main()
