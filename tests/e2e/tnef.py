"""Files of the Transport Neutral Encapsulation Format, as Outlook sends them by the name
winmail.dat."""

import struct

MESSAGE_INTERFACE = bytes.fromhex("0703020000000000C000000000000046")
BODY, BODY_UNICODE, HTML, RICH_TEXT = 0x1000001E, 0x1000001F, 0x10130102, 0x10090102
DISPLAY_NAME, FILE_NAME, LONG_FILE_NAME = 0x3001001F, 0x3704001E, 0x3707001F
ATTACH_METHOD, ATTACH_OBJECT = 0x37050003, 0x3701000D


def properties(values):
    """A dictionary of MAPI's tags: texts, bytes and numbers."""
    out = struct.pack("<I", len(values))
    for tag, value in values.items():
        out += struct.pack("<HH", tag & 0xFFFF, tag >> 16)
        if isinstance(value, int):
            out += struct.pack("<I", value)
            continue
        if isinstance(value, str):
            value = (value + "\0").encode("utf-16-le" if tag & 1 else "cp1252")
        out += struct.pack("<II", 1, len(value)) + value + b"\0" * (-len(value) % 4)
    return out


def attribute(level, number, data):
    return (struct.pack("<BII", level, number, len(data)) + data +
            struct.pack("<H", sum(data) & 0xFFFF))


def rich_text(text):
    """As MAPI stores it, without compression."""
    return struct.pack("<II", len(text) + 12, len(text)) + b"MELA" + bytes(4) + text


def attachment(name, content):
    """`content`: the bytes of a file, or a message of message()."""
    is_message = content.startswith(struct.pack("<I", 0x223E9F78))
    values = {ATTACH_METHOD: 5 if is_message else 1}
    out = attribute(2, 0x00069002, struct.pack("<HIHHI", 1, 0xFFFFFFFF, 32, 32, 0))
    out += attribute(2, 0x00018010, name[:8].encode("cp1252", "replace") + b"\0")
    if is_message:
        values |= {DISPLAY_NAME: name, ATTACH_OBJECT: MESSAGE_INTERFACE + content}
    else:
        values |= {FILE_NAME: name[:8].encode("cp1252", "replace").decode("cp1252"),
                   LONG_FILE_NAME: name}
        out += attribute(2, 0x0006800F, content)
    return out + attribute(2, 0x00069005, properties(values))


def message(values, attachments=(), message_class="IPM.Microsoft Mail.Note"):
    """`attachments`: pairs of name and content."""
    out = struct.pack("<IH", 0x223E9F78, 1)
    out += attribute(1, 0x00089006, struct.pack("<I", 0x00010000))
    out += attribute(1, 0x00069007, struct.pack("<II", 1252, 0))
    out += attribute(1, 0x00078008, message_class.encode() + b"\0")
    out += attribute(1, 0x00069003, properties(values))
    return out + b"".join(attachment(name, content) for name, content in attachments)
