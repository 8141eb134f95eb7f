"""The front end against a scripted service module on its south socket: what it
puts on the channel, flow control, cancels and faults."""
import os
import socket
import struct
import tempfile
import threading
import time
import unittest
from concurrent import futures

import grpc

import quorix_grpc_ipc_pb2 as ipc
from device_client import Client, Device, free_port, wait_for

GET, SUB = "/gnmi.gNMI/Get", "/gnmi.gNMI/Subscribe"


class FakeService(threading.Thread):
    """Echoes a Get's request as its reply. On a Subscribe whose first message
    is b"n:N", streams N numbered replies and ends; b"idle", nothing; else
    1 KiB replies until cancelled. Keeps what it received."""

    def __init__(self, south):
        super().__init__(daemon=True)
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.connect(south)
        self.sock.settimeout(0.2)
        self.received, self.cancelled, self.lock = [], set(), threading.Lock()
        self.closed = False
        self.start()

    def send(self, rpc_id, **fields):
        fields.setdefault("req_type", ipc.REQTYPE_RESPONSE)
        data = ipc.SouthMsg(rpc_id=rpc_id, **fields)
        frame = data.SerializeToString()
        with self.lock:
            self.sock.sendall(struct.pack("=I", len(frame)) + frame)

    def reply(self, rpc_id, data):
        self.send(rpc_id, op_type=ipc.OPTYPE_NOTIFY, msg_type=ipc.MSGTYPE_RPC_DATA,
                  rpc_data=ipc.RpcData(data=data))

    def stream(self, rpc_id, count):
        """count numbered replies then the end, or 1 KiB ones until cancelled."""
        try:
            for seq in range(count):
                self.reply(rpc_id, b"%d" % seq)
            if count:
                self.send(rpc_id, op_type=ipc.OPTYPE_DELETE, msg_type=ipc.MSGTYPE_SERVER_RPC)
            while not count and rpc_id not in self.cancelled and not self.closed:
                self.reply(rpc_id, b"\x00" * 1024)
                time.sleep(0.001)
        except OSError:
            pass

    def run(self):
        buf = b""
        while not self.closed:
            try:
                chunk = self.sock.recv(65536)
            except socket.timeout:
                continue
            except OSError:
                break
            if not chunk:
                break
            buf += chunk
            while len(buf) >= 4 and len(buf) >= 4 + struct.unpack("=I", buf[:4])[0]:
                size = struct.unpack("=I", buf[:4])[0]
                msg = ipc.SouthMsg.FromString(buf[4:4 + size])
                buf = buf[4 + size:]
                self.handle(msg)
        self.closed = True

    def handle(self, msg):
        self.received.append(msg)
        if msg.req_type == ipc.REQTYPE_RESPONSE:
            pass  # on a client call of the module's
        elif msg.op_type == ipc.OPTYPE_DELETE:
            self.cancelled.add(msg.rpc_id)
        elif msg.op_type == ipc.OPTYPE_CREATE and msg.server_rpc.rpc_name == GET:
            self.reply(msg.rpc_id, msg.server_rpc.rpc_parament)
            self.send(msg.rpc_id, op_type=ipc.OPTYPE_DELETE, msg_type=ipc.MSGTYPE_SERVER_RPC)
        elif msg.op_type == ipc.OPTYPE_CREATE and msg.server_rpc.rpc_parament != b"idle":
            count = int(msg.server_rpc.rpc_parament[2:] or 0)
            threading.Thread(target=self.stream, args=(msg.rpc_id, count), daemon=True).start()

    def cancel_codes(self):
        return sorted(m.result for m in self.received if m.op_type == ipc.OPTYPE_DELETE)

    def close(self):
        self.closed = True
        self.sock.close()
        self.join(2)


class FrontEndTest(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.device = Device(self.tmp.name, frontend_args=["--max-queue", "64"])
        self.device.start_frontend()
        self.fake = self.connect()
        self.client = Client(self.device.port, "alice", "secret")

    def tearDown(self):
        self.client.close()
        self.fake.close()
        self.assertEqual(self.device.stop_frontend(), 0)
        self.tmp.cleanup()

    def connect(self):
        count = self.device.frontend_log().count("service module connected")
        fake = FakeService(self.device.south)
        self.assertTrue(wait_for(
            lambda: self.device.frontend_log().count("service module connected") > count))
        return fake

    def test_calls_on_the_channel(self):
        request = b"\x0a\x00request\x00bytes"
        reply = self.client.raw(GET)(request, metadata=self.client.metadata, timeout=5)
        self.assertEqual(reply, request)
        opened = self.fake.received[0]
        self.assertEqual((opened.req_type, opened.op_type, opened.msg_type, opened.trans_num),
                         (ipc.REQTYPE_REQUEST, ipc.OPTYPE_CREATE, ipc.MSGTYPE_SERVER_RPC, 1))
        rpc = opened.server_rpc
        self.assertEqual((rpc.rpc_name, rpc.peer_address, rpc.my_address, rpc.my_port),
                         (GET, "127.0.0.1", "127.0.0.1", self.device.port))
        self.assertTrue(0 < rpc.deadline <= 5000 and rpc.peer_port > 0)
        self.assertEqual((opened.login.user_name, opened.login.password), ("alice", "secret"))
        self.assertEqual((opened.connect_id, opened.rpc_id), (1, 1))
        self.assertTrue(wait_for(lambda: len(self.fake.received) == 2))
        over = self.fake.received[1]
        self.assertEqual((over.op_type, over.msg_type, over.trans_num, over.rpc_data.is_over),
                         (ipc.OPTYPE_MODIFY, ipc.MSGTYPE_RPC_DATA, 2, True))
        for method, code in [("/gnmi.gNMI/Other", grpc.StatusCode.UNIMPLEMENTED),
                             ("/x.Y/Get", grpc.StatusCode.UNIMPLEMENTED)]:
            with self.assertRaises(grpc.RpcError) as caught:
                self.client.raw(method)(b"", timeout=5)
            self.assertEqual(caught.exception.code(), code, method)
        second = socket.socket(socket.AF_UNIX)
        second.connect(self.device.south)
        second.settimeout(2)
        self.assertEqual(second.recv(1), b"", "a second service module is refused")
        second.close()

    def test_client_call_on_the_channel(self):
        publish = "/quorix_dialout.gRPCDataservice/dataPublish"

        def echo(requests, context):
            for request in requests:
                if request == b"end":
                    return
                yield request
        collector = grpc.server(futures.ThreadPoolExecutor(2), handlers=[
            grpc.method_handlers_generic_handler("quorix_dialout.gRPCDataservice", {
                "dataPublish": grpc.stream_stream_rpc_method_handler(echo)})])
        port = collector.add_insecure_port("127.0.0.1:0")
        collector.start()
        self.addCleanup(collector.stop, 0)

        def request(rpc_id, trans_num, **fields):
            self.fake.send(rpc_id, connect_id=3, trans_num=trans_num, req_type=ipc.REQTYPE_REQUEST,
                           **fields)

        def open_call(rpc_id, port):
            request(rpc_id, 1, op_type=ipc.OPTYPE_CREATE, msg_type=ipc.MSGTYPE_CLIENT_RPC,
                    client_rpc=ipc.ClientRpc(peer_address="127.0.0.1", peer_port=port,
                                             no_tls=True, rpc_name=publish))

        def said(rpc_id):
            """What the front end said of the call: identity, kinds, result, data."""
            return [(m.connect_id, m.req_type, m.op_type, m.msg_type, m.trans_num, m.result,
                     m.rpc_data.data) for m in list(self.fake.received) if m.rpc_id == rpc_id]

        def notices(rpc_id, count):
            self.assertTrue(wait_for(lambda: len(said(rpc_id)) >= count), said(rpc_id))
            return said(rpc_id)[:count]

        R, CLIENT, DATA = ipc.REQTYPE_RESPONSE, ipc.MSGTYPE_CLIENT_RPC, ipc.MSGTYPE_RPC_DATA
        open_call(7, port)
        open_call(7, port)
        self.assertEqual(sorted(notices(7, 2)), [(3, R, ipc.OPTYPE_CREATE, CLIENT, 1, 0, b""),
                                                 (3, R, ipc.OPTYPE_CREATE, CLIENT, 1, 6, b"")])
        request(7, 2, op_type=ipc.OPTYPE_MODIFY, msg_type=DATA, rpc_data=ipc.RpcData(data=b"a\0b"))
        self.assertEqual(sorted(notices(7, 4)[2:]), [(3, R, ipc.OPTYPE_MODIFY, DATA, 2, 0, b""),
                                                     (3, R, ipc.OPTYPE_NOTIFY, DATA, 2, 0, b"a\0b")])
        request(7, 3, op_type=ipc.OPTYPE_MODIFY, msg_type=DATA, rpc_data=ipc.RpcData(data=b"end"))
        self.assertTrue(wait_for(lambda: any(n[2] == ipc.OPTYPE_DELETE for n in said(7))))
        self.assertEqual([n[2:6] for n in said(7) if n[2] == ipc.OPTYPE_DELETE],
                         [(ipc.OPTYPE_DELETE, CLIENT, 3, 14)])  # ended by the collector
        self.assertTrue(wait_for(lambda: self.device.live_calls("dial-out calls") == 0))
        open_call(8, free_port())
        self.assertEqual(notices(8, 1)[0][2:6], (ipc.OPTYPE_CREATE, CLIENT, 1, 14))

    def test_slow_reader_ends_alone(self):
        slow = self.client.raw(SUB, True)(iter([b"a"]), metadata=self.client.metadata)
        fast = self.client.raw(SUB, True)(iter([b"b"]), metadata=self.client.metadata)
        next(slow)
        for _ in range(3000):
            next(fast)
        self.assertTrue(wait_for(lambda: 8 in self.fake.cancel_codes()))
        with self.assertRaises(grpc.RpcError) as caught:
            for _ in slow:
                pass
        self.assertEqual(caught.exception.code(), grpc.StatusCode.RESOURCE_EXHAUSTED)
        for _ in range(500):
            next(fast)
        fast.cancel()
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))

    def test_cancel_and_deadline_free_the_call(self):
        stream = self.client.raw(SUB, True)(iter([b"idle"]), metadata=self.client.metadata)
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 1))
        stream.cancel()
        late = self.client.raw(SUB, True)(iter([b"idle"]), metadata=self.client.metadata,
                                         timeout=0.5)
        with self.assertRaises(grpc.RpcError) as caught:
            for _ in late:
                pass
        self.assertEqual(caught.exception.code(), grpc.StatusCode.DEADLINE_EXCEEDED)
        self.assertTrue(wait_for(lambda: self.fake.cancel_codes() == [1, 4]), self.fake.cancel_codes())
        self.assertEqual(self.device.live_calls(), 0)

    def test_service_module_gone_and_back(self):
        stream = self.client.raw(SUB, True)(iter([b"a"]), metadata=self.client.metadata)
        next(stream)
        self.fake.close()
        started = time.monotonic()
        with self.assertRaises(grpc.RpcError) as caught:
            for _ in stream:
                pass
        self.assertEqual(caught.exception.code(), grpc.StatusCode.UNAVAILABLE)
        self.assertLess(time.monotonic() - started, 1.0)
        with self.assertRaises(grpc.RpcError) as caught:
            self.client.raw(GET)(b"x", timeout=5)
        self.assertEqual(caught.exception.code(), grpc.StatusCode.UNAVAILABLE)
        self.assertEqual(self.device.live_calls(), 0)
        self.fake = self.connect()
        self.assertEqual(self.client.raw(GET)(b"x", timeout=5), b"x")

    def test_load_keeps_every_call_in_order(self):
        def subscriber(results):
            stream = self.client.raw(SUB, True)(iter([b"n:50"]), metadata=self.client.metadata,
                                               timeout=60)
            results.append([int(r) for r in stream] == list(range(50)))

        def getter(results, n):
            get = self.client.raw(GET)
            results.append(all(get(b"%d:%d" % (n, i), timeout=30) == b"%d:%d" % (n, i)
                               for i in range(50)))

        results = []
        threads = [threading.Thread(target=subscriber, args=(results,)) for _ in range(100)]
        threads += [threading.Thread(target=getter, args=(results, n)) for n in range(20)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(90)
        self.assertEqual(results, [True] * 120)
        self.assertTrue(wait_for(lambda: self.device.live_calls() == 0))

    def test_malformed_frames_drop_the_connection(self):
        for frame in [struct.pack("=I", 52428801), struct.pack("=I", 3) + b"\xff\xff\xff",
                      struct.pack("=I", 1) + b"\x08"]:
            if self.fake.closed:
                self.fake = self.connect()
            with self.fake.lock:
                self.fake.sock.sendall(frame)
            self.assertTrue(wait_for(lambda: self.fake.closed), frame)
        self.assertIn("over the limit", self.device.frontend_log())
        self.assertIn("no SouthMsg", self.device.frontend_log())
        self.fake = self.connect()
        self.assertEqual(self.client.raw(GET)(b"y", timeout=5), b"y")


if __name__ == "__main__":
    unittest.main()
