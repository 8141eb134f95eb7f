"""A gNMI and dial-in client of the reference device, and the programs' runner.

Needs the Python stubs generated from proto/ on sys.path (run.sh puts them in
build/device/py) and the device build in DEVICE_BUILD (default build/device).
"""
import json
import os
import re
import signal
import socket
import subprocess
import sys
import time

import grpc

import gnmi_pb2
import gnmi_pb2_grpc
import quorix_grpc_dialin_pb2 as dialin_pb2
import quorix_grpc_dialin_pb2_grpc as dialin_grpc

BUILD = os.environ.get("DEVICE_BUILD", "build/device")


def path(text):
    """'/a/b[k=v]/c' as a gnmi.Path (keys without '/' or ']' in them)."""
    elems = []
    for part in [p for p in text.split("/") if p]:
        name = part.split("[", 1)[0]
        keys = dict(re.findall(r"\[([^=\]]+)=([^\]]*)\]", part))
        elems.append(gnmi_pb2.PathElem(name=name, key=keys))
    return gnmi_pb2.Path(elem=elems)


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def wait_for(predicate, timeout=5.0, step=0.05):
    """Polls until predicate() is true; False after timeout seconds."""
    end = time.monotonic() + timeout
    while time.monotonic() < end:
        if predicate():
            return True
        time.sleep(step)
    return bool(predicate())


class Device:
    """The front end and the service module as processes on loopback."""

    def __init__(self, workdir, service_wrap=(), frontend_args=()):
        os.makedirs(workdir, exist_ok=True)
        self.workdir = workdir
        self.south = os.path.join(workdir, "south.sock")
        self.port = free_port()
        self.service_wrap = list(service_wrap)
        self.frontend_args = list(frontend_args)
        self.frontend = self.service = None
        self.log = os.path.join(workdir, "frontend.log")

    def start_frontend(self):
        out = open(self.log, "a")
        self.frontend = subprocess.Popen(
            [f"{BUILD}/frontend/mgmtmsg-frontend", "--south", self.south,
             "--listen", f"127.0.0.1:{self.port}", *self.frontend_args],
            stdout=subprocess.PIPE, stderr=out, text=True)
        out.close()
        line = self.frontend.stdout.readline()
        if not line.startswith("listening on"):
            raise RuntimeError(f"front end did not start: {line!r}")

    def start_service(self, *args):
        connected = self.frontend_log().count("service module connected")
        with open(os.path.join(self.workdir, "service.log"), "a") as log:
            self.service = subprocess.Popen(
                [*self.service_wrap, f"{BUILD}/service/mgmtmsg-service", "--south", self.south,
                 *args], stderr=log)
        wait_for(lambda: self.frontend_log().count("service module connected") > connected, 15)

    def frontend_log(self):
        with open(self.log) as f:
            return f.read()

    def live_calls(self, kind="live calls"):
        """A count of the front end's SIGUSR1 line: "live calls" (served) or
        "dial-out calls"."""
        before = self.frontend_log().count("live calls:")
        self.frontend.send_signal(signal.SIGUSR1)
        wait_for(lambda: self.frontend_log().count("live calls:") > before, 2)
        return int(re.findall(kind + r": (\d+)", self.frontend_log())[-1])

    @staticmethod
    def _stop(proc, sig=signal.SIGTERM):
        if proc is None:
            return 0
        if proc.poll() is None:
            proc.send_signal(sig)
            try:
                proc.wait(30)
            except subprocess.TimeoutExpired:
                proc.kill()
                proc.wait()
        if proc.stdout:
            proc.stdout.close()
        return proc.returncode

    def stop_service(self, sig=signal.SIGTERM):
        status, self.service = self._stop(self.service, sig), None
        return status

    def stop_frontend(self, sig=signal.SIGTERM):
        status, self.frontend = self._stop(self.frontend, sig), None
        return status

    def stop(self):
        return self.stop_service(), self.stop_frontend()


class Collector:
    """device/collector/collector.py as a process, its messages recorded as
    JSON lines in a file of the work folder."""

    def __init__(self, workdir, name, port=None, *args):
        self.port = port or free_port()
        self.record = os.path.join(workdir, f"{name}.jsonl")
        here = os.path.dirname(os.path.abspath(__file__))
        self.command = [sys.executable, os.path.join(here, "..", "collector", "collector.py"),
                        "--listen", f"127.0.0.1:{self.port}", "--record", self.record, *args]
        self.proc = None

    def start(self):
        self.proc = subprocess.Popen(self.command, stdout=subprocess.PIPE, text=True)
        line = self.proc.stdout.readline()
        if not line.startswith("collector listening"):
            raise RuntimeError(f"collector did not start: {line!r}")
        return self

    def stop(self, sig=signal.SIGTERM):
        return Device._stop(self.proc, sig)

    def messages(self):
        if not os.path.exists(self.record):
            return []
        with open(self.record) as f:
            return [json.loads(line) for line in f if line.endswith("\n")]


class Client:
    """Stubs over one insecure loopback channel, credentials in metadata."""

    def __init__(self, port, user="admin", password="admin"):
        self.channel = grpc.insecure_channel(f"127.0.0.1:{port}")
        self.gnmi = gnmi_pb2_grpc.gNMIStub(self.channel)
        self.dialin = dialin_grpc.gRPCConfigOperStub(self.channel)
        self.metadata = [("username", user), ("password", password)]

    def raw(self, method, streaming=False):
        """A call of any method path on raw bytes."""
        make = self.channel.stream_stream if streaming else self.channel.unary_unary
        return make(method)

    def close(self):
        self.channel.close()


def subscribe_request(paths, list_mode, encoding=gnmi_pb2.JSON_IETF, **kwargs):
    """A SubscribeRequest with a SubscriptionList of the paths; kwargs go to the
    Subscription entries (sample_interval, mode ...)."""
    subs = [gnmi_pb2.Subscription(path=path(p), **kwargs) for p in paths]
    return gnmi_pb2.SubscribeRequest(subscribe=gnmi_pb2.SubscriptionList(
        subscription=subs, mode=list_mode, encoding=encoding))


__all__ = ["Client", "Collector", "Device", "dialin_pb2", "gnmi_pb2", "path", "subscribe_request", "wait_for"]
