"""mgmtmsg-collector: receives dial-out telemetry on both publish services,
quorix_dialout.gRPCDataservice/dataPublish and dialout.Dialout/Dialout, and
prints each message decoded (or records it as a JSON line with --record).

Needs the Python stubs of the schemas on sys.path (run.sh puts them in
build/device/py).
"""
import argparse
import json
import signal
import sys
import threading
import time
from concurrent import futures

import grpc

import dialout_pb2
import dialout_pb2_grpc
import gnmi_pb2
import quorix_grpc_dialout_pb2 as publish_pb2
import quorix_grpc_dialout_pb2_grpc as publish_grpc


def path_text(path):
    parts = []
    for elem in path.elem:
        keys = "".join(f"[{k}={elem.key[k]}]" for k in sorted(elem.key))
        parts.append(elem.name + keys)
    return "/" + "/".join(parts)


def value_of(typed):
    kind = typed.WhichOneof("value")
    return getattr(typed, kind) if kind else None


def decode(service, req_id, notification_bytes, errors, peer, ids_only=False):
    """One received message as a plain record; ids_only leaves out what the
    notification holds."""
    if ids_only:
        return {"service": service, "peer": peer, "req_id": req_id, "errors": errors}
    note = gnmi_pb2.Notification.FromString(notification_bytes)
    prefix = path_text(note.prefix) if note.prefix.elem else ""
    return {
        "service": service,
        "peer": peer,
        "req_id": req_id,
        "errors": errors,
        "timestamp": note.timestamp,
        "updates": {prefix + path_text(u.path): value_of(u.val) for u in note.update},
    }


class Sink:
    """Where records go: stdout as text, or a file as JSON lines."""

    def __init__(self, record, delay, ids_only):
        self.ids_only = ids_only
        self.lock = threading.Lock()
        self.record = open(record, "a", buffering=1) if record else None
        self.delay = delay

    def put(self, rec):
        with self.lock:
            if self.record:
                self.record.write(json.dumps(rec) + "\n")
            else:
                errors = f"  [{rec['errors']}]" if rec["errors"] else ""
                updates = rec.get("updates", {})
                print(f"{rec['service']} ReqId {rec['req_id']}: {len(updates)} updates"
                      f"{errors}", flush=True)
                for text, value in list(updates.items())[:4]:
                    print(f"    {text} = {value}", flush=True)
        if self.delay:
            time.sleep(self.delay)


class DataPublish(publish_grpc.gRPCDataserviceServicer):
    def __init__(self, sink):
        self.sink = sink

    def dataPublish(self, request_iterator, context):
        for args in request_iterator:
            self.sink.put(decode("dataPublish", args.ReqId, args.data, args.errors, context.peer(),
                                 self.sink.ids_only))
        return iter(())


class Dialout(dialout_pb2_grpc.DialoutServicer):
    def __init__(self, sink):
        self.sink = sink

    def Dialout(self, request_iterator, context):
        for args in request_iterator:
            note = gnmi_pb2.Notification()
            if not args.data.Unpack(note):
                context.abort(grpc.StatusCode.INVALID_ARGUMENT, "data is no gnmi.Notification")
            self.sink.put(decode("Dialout", args.ReqId, args.data.value, args.errors,
                                 context.peer(), self.sink.ids_only))
        return iter(())


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--listen", default="127.0.0.1:57500", help="HOST:PORT to serve")
    parser.add_argument("--tls-cert", help="certificate chain (PEM), with --tls-key")
    parser.add_argument("--tls-key", help="private key (PEM)")
    parser.add_argument("--record", help="append each message as a JSON line to this file")
    parser.add_argument("--delay-ms", type=int, default=0,
                        help="pause after each message (a slow collector)")
    parser.add_argument("--ids-only", action="store_true",
                        help="keep ReqId and errors only, not the notification")
    parser.add_argument("--seconds", type=float, default=0, help="stop after this long")
    args = parser.parse_args()

    sink = Sink(args.record, args.delay_ms / 1000, args.ids_only)
    # A slow collector keeps its receive window at its first size, so that
    # the sender feels its pace at once.
    options = [("grpc.http2.bdp_probe", 0)] if args.delay_ms else []
    server = grpc.server(futures.ThreadPoolExecutor(max_workers=8), options=options)
    publish_grpc.add_gRPCDataserviceServicer_to_server(DataPublish(sink), server)
    dialout_pb2_grpc.add_DialoutServicer_to_server(Dialout(sink), server)
    if args.tls_cert:
        with open(args.tls_key, "rb") as key, open(args.tls_cert, "rb") as cert:
            creds = grpc.ssl_server_credentials([(key.read(), cert.read())])
        port = server.add_secure_port(args.listen, creds)
    else:
        port = server.add_insecure_port(args.listen)
    if port == 0:
        sys.exit(f"mgmtmsg-collector: cannot listen on {args.listen}")
    server.start()
    print(f"collector listening on {args.listen}", flush=True)
    stop = threading.Event()
    for sig in (signal.SIGINT, signal.SIGTERM):
        signal.signal(sig, lambda *_: stop.set())
    stop.wait(args.seconds or None)
    server.stop(0.5).wait()


if __name__ == "__main__":
    main()
