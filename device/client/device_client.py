"""A gNMI and dial-in client of the reference device, and the programs' runner.

Needs the Python stubs generated from proto/ on sys.path (run.sh puts them in
build/device/py) and the device build in DEVICE_BUILD (default build/device).
"""
import os
import re
import signal
import socket
import subprocess
import time

import grpc

import gnmi_pb2
import gnmi_pb2_grpc
import quorix_grpc_dialin_pb2 as dialin_pb2
import quorix_grpc_dialin_pb2_grpc as dialin_grpc

BUILD = os.environ.get("DEVICE_BUILD", "build/device")


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
    """The front end as a process on loopback; the tests play the service module."""

    def __init__(self, workdir, frontend_args=()):
        os.makedirs(workdir, exist_ok=True)
        self.workdir = workdir
        self.south = os.path.join(workdir, "south.sock")
        self.port = free_port()
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

    def frontend_log(self):
        with open(self.log) as f:
            return f.read()

    def live_calls(self):
        """The front end's live-call count (its SIGUSR1 line)."""
        before = self.frontend_log().count("live calls:")
        self.frontend.send_signal(signal.SIGUSR1)
        wait_for(lambda: self.frontend_log().count("live calls:") > before, 2)
        return int(re.findall(r"live calls: (\d+)", self.frontend_log())[-1])

    @staticmethod
    def _stop(proc, sig=signal.SIGTERM):
        if proc is None or proc.poll() is not None:
            return proc.returncode if proc else 0
        proc.send_signal(sig)
        try:
            return proc.wait(10)
        except subprocess.TimeoutExpired:
            proc.kill()
            return proc.wait()

    def stop_frontend(self, sig=signal.SIGTERM):
        status, self.frontend = self._stop(self.frontend, sig), None
        return status

    def stop(self):
        return self.stop_frontend()


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


__all__ = ["Client", "Device", "dialin_pb2", "gnmi_pb2", "wait_for"]
