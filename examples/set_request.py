#!/usr/bin/python3
"""Writes the bytes of a gNMI SetRequest as a client would send it, made with
the Python message classes generated from the installed schemas; the Set
handler example answers it.

    set_request.py MODULE_DIR OUT_FILE

MODULE_DIR holds the generated modules (github/com/openconfig/gnmi/proto/
gnmi/gnmi_pb2.py). One update per member of TypedValue, in field number
order, under /values/<member>; text and bytes hold NULs where they may, and
the last two updates hold an empty string_val and no member at all.
"""
import sys

sys.path.insert(0, sys.argv[1])
from github.com.openconfig.gnmi.proto.gnmi import gnmi_pb2  # noqa: E402


def leaf_list():
    values = gnmi_pb2.ScalarArray()
    values.element.add().int_val = 7
    values.element.add().string_val = "x\0y"
    return values


def any_value():
    value = gnmi_pb2.TypedValue()
    value.any_val.type_url = "type.googleapis.com/gnmi.Path"
    value.any_val.value = b"\x12\x00"
    return value


VALUES = [
    ("string", gnmi_pb2.TypedValue(string_val="eth\0" + "0")),
    ("int", gnmi_pb2.TypedValue(int_val=-9000000000)),
    ("uint", gnmi_pb2.TypedValue(uint_val=2**64 - 1)),
    ("bool", gnmi_pb2.TypedValue(bool_val=True)),
    ("bytes", gnmi_pb2.TypedValue(bytes_val=b"\x00\xff\x00")),
    ("float", gnmi_pb2.TypedValue(float_val=-2.5)),
    ("decimal", gnmi_pb2.TypedValue(decimal_val=gnmi_pb2.Decimal64(digits=-12345, precision=3))),
    ("leaflist", gnmi_pb2.TypedValue(leaflist_val=leaf_list())),
    ("any", any_value()),
    ("json", gnmi_pb2.TypedValue(json_val=b'{"mtu":1500}')),
    ("json_ietf", gnmi_pb2.TypedValue(json_ietf_val=b'{"a:b":"c\0d"}')),
    ("ascii", gnmi_pb2.TypedValue(ascii_val="up\0down")),
    ("proto_bytes", gnmi_pb2.TypedValue(proto_bytes=b"\x08\x00")),
    ("empty_string", gnmi_pb2.TypedValue(string_val="")),
    ("none", gnmi_pb2.TypedValue()),
]

request = gnmi_pb2.SetRequest()
for name, value in VALUES:
    update = request.update.add()
    update.path.elem.add(name="values")
    update.path.elem.add(name=name)
    update.val.CopyFrom(value)
with open(sys.argv[2], "wb") as out:
    out.write(request.SerializeToString())
