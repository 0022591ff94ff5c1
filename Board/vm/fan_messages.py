"""Messages of the fan service as bytes, in the board's byte order (little-endian)."""

import struct

TASK = 0x4AD
SET_FREQUENCY, SPEED_INDICATION, SET_SPEED = 0x2C13, 0x2C17, 0x2CF1  # the last with a period
NO_ERROR, INVALID_PARAMETER = 0, 4
FREQUENCY_1K = 3  # code of 1000 Hz


def speed_request(speeds, period):
    """Asks for speeds in per cent by fan; whoever sends it gets the indications, the first after `period` seconds."""
    items = b"".join(struct.pack("<II", fan, percent) for fan, percent in speeds.items())
    return struct.pack("<IBBHII", 1, 0, 0, 0, period, len(speeds)) + items


def frequency_request(fan, code):
    return struct.pack("<IIII", 1, 1, fan, code)


def response_status(payload):
    """The status of a whole request, from any of the responses."""
    return struct.unpack_from("<I", payload, 4)[0]


def rpm_by_fan(payload):
    """Revolutions a minute by fan, from an indication."""
    count = struct.unpack_from("<I", payload, 4)[0]
    items = (struct.unpack_from("<IIII", payload, 8 + 16 * item) for item in range(count))
    return {fan: rpm for fan, _, rpm, _ in items}
