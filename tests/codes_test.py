"""Checks the named codes of common/mgmtmsg_codes.h against what they name:
the enumerations of the schemas, read from the Python message modules made
from them, and gRPC's own status codes. Every constant of the header must be
one of those values, and every value must have its constant.

    codes_test.py HEADER MODULE_DIR
"""
import re
import sys

import grpc

sys.path.insert(0, sys.argv[2])
from github.com.openconfig.gnmi.proto.gnmi import gnmi_pb2 as gnmi  # noqa: E402
import quorix_grpc_ipc_pb2 as ipc  # noqa: E402

with open(sys.argv[1]) as header:
    constants = dict((name, int(value)) for name, value in
                     re.findall(r"^\s*([A-Z][A-Z0-9_]*) = (\d+)", header.read(), re.M))

members = gnmi.TypedValue.DESCRIPTOR.oneofs_by_name["value"].fields
groups = [
    ("GRPCI_", ipc.ReqType.items() + ipc.OpType.items() + ipc.MsgType.items()),
    ("GNMI_ENCODING_", gnmi.Encoding.items()),
    ("GNMI_DATATYPE_", gnmi.GetRequest.DataType.items()),
    ("GNMI_SUBSCRIPTIONLIST_", gnmi.SubscriptionList.Mode.items()),
    ("GNMI_SUBSCRIPTIONMODE_", gnmi.SubscriptionMode.items()),
    ("GNMI_UPDATERESULT_", gnmi.UpdateResult.Operation.items()),
    ("GNMI_TYPEDVALUE_", [("NONE", 0)] + [(f.name.upper(), f.number) for f in members]),
    ("MGMTMSG_STATUS_", [(code.name, code.value[0]) for code in grpc.StatusCode]),
]
expected = dict((prefix + name, number) for prefix, values in groups for name, number in values)
for name in sorted(set(constants) | set(expected)):
    if constants.get(name) != expected.get(name):
        print("%s: header %s, schema %s" % (name, constants.get(name), expected.get(name)))
sys.exit(0 if constants == expected else 1)
