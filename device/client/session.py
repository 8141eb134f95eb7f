"""A gNMI and dial-in session against a running reference device, printed as it
goes: Capabilities, Set, Get, Subscribe ONCE, STREAM samples, ON_CHANGE after a
Set, and a dial-in Subscribe with its Cancel.
  session.py [--port N] [--user U] [--password P]   (port default GNMI_PORT or 9339)
"""
import argparse
import json
import os
import threading
import time

import grpc

from device_client import Client, dialin_pb2, gnmi_pb2, path, subscribe_request

HOSTNAME = "/system/config/hostname"
COUNTER = "/interfaces/interface[name=eth0]/state/counters/in-octets"
STATE = "/interfaces/interface[name=eth1]/state"


def show(title, message=None):
    print(f"\n== {title}")
    if message is not None:
        print(str(message).rstrip())


def value_text(value):
    kind = value.WhichOneof("value")
    data = getattr(value, kind) if kind else None
    return data.decode() if isinstance(data, bytes) else repr(data)


def updates(notification):
    prefix = "/".join(e.name for e in notification.prefix.elem)
    for update in notification.update:
        elems = [e.name + "".join(f"[{k}={v}]" for k, v in sorted(e.key.items()))
                 for e in update.path.elem]
        yield f"/{prefix + '/' if prefix else ''}{'/'.join(elems)} = {value_text(update.val)}"


def show_responses(responses, limit, title):
    show(title)
    seen = 0
    for response in responses:
        if response.sync_response:
            print("  sync_response")
        for line in updates(response.update):
            print("  " + line)
        seen += 1
        if seen >= limit:
            break


def wait_ready(client, seconds=15):
    end = time.monotonic() + seconds
    while True:
        try:
            return client.gnmi.Capabilities(gnmi_pb2.CapabilityRequest(),
                                            metadata=client.metadata, timeout=2)
        except grpc.RpcError as error:
            if time.monotonic() > end or error.code() != grpc.StatusCode.UNAVAILABLE:
                raise
            time.sleep(0.2)


def set_hostname(client, name):
    request = gnmi_pb2.SetRequest(update=[gnmi_pb2.Update(
        path=path(HOSTNAME), val=gnmi_pb2.TypedValue(json_ietf_val=json.dumps(name).encode()))])
    return client.gnmi.Set(request, metadata=client.metadata, timeout=5)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, default=int(os.environ.get("GNMI_PORT", "9339")))
    parser.add_argument("--user", default="admin")
    parser.add_argument("--password", default="admin")
    args = parser.parse_args()
    client = Client(args.port, args.user, args.password)
    md = client.metadata

    caps = wait_ready(client)
    show("Capabilities", f"gNMI {caps.gNMI_version}, encodings "
         f"{[gnmi_pb2.Encoding.Name(e) for e in caps.supported_encodings]}, models "
         f"{[m.name for m in caps.supported_models]}")

    show("Set " + HOSTNAME + ' = "edge-1"', set_hostname(client, "edge-1"))

    get = client.gnmi.Get(gnmi_pb2.GetRequest(path=[path(HOSTNAME), path(COUNTER), path(STATE)],
                                              encoding=gnmi_pb2.JSON_IETF), metadata=md, timeout=5)
    show("Get")
    for notification in get.notification:
        for line in updates(notification):
            print("  " + line)

    once = client.gnmi.Subscribe(iter([subscribe_request(["/interfaces"], gnmi_pb2.SubscriptionList.ONCE)]),
                                 metadata=md, timeout=10)
    show_responses(once, 1000, "Subscribe ONCE /interfaces")

    stream = client.gnmi.Subscribe(
        iter([subscribe_request([COUNTER], gnmi_pb2.SubscriptionList.STREAM,
                                mode=gnmi_pb2.SAMPLE, sample_interval=500_000_000)]), metadata=md)
    show_responses(stream, 4, "Subscribe STREAM SAMPLE every 0.5 s, 4 responses")
    stream.cancel()

    changes = client.gnmi.Subscribe(
        iter([subscribe_request([HOSTNAME], gnmi_pb2.SubscriptionList.STREAM,
                                mode=gnmi_pb2.ON_CHANGE)]), metadata=md)
    timer = threading.Timer(0.5, set_hostname, (client, "edge-2"))
    timer.start()
    show_responses(changes, 3, 'Subscribe STREAM ON_CHANGE, then Set hostname "edge-2"')
    timer.join()
    changes.cancel()

    dial = client.dialin.Subscribe(dialin_pb2.SubsArgs(
        request_id=7, encoding=1, path=[dialin_pb2.Path(path=COUNTER)], sample_interval=500),
        metadata=md)
    show("dial-in Subscribe, 3 replies")
    subscription = 0
    for reply, _ in zip(dial, range(3)):
        subscription = reply.subscription_id
        print(f"  subscription {reply.subscription_id} request {reply.request_id} "
              f"{reply.response_code}:")
        for line in updates(gnmi_pb2.SubscribeResponse.FromString(reply.message).update):
            print("    " + line)
    cancel = client.dialin.Cancel(dialin_pb2.CancelArgs(request_id=7, subscription_id=subscription),
                                  metadata=md, timeout=5)
    show("dial-in Cancel", cancel)
    dial.cancel()
    client.close()


if __name__ == "__main__":
    main()
