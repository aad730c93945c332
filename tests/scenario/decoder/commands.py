"""What the receiver is told when nothing is configured: 61 commands, in their order."""

POSITION_PERIOD = "0.05"  # seconds

_FILTERS = (
    "unlogall thisport",
    "sbascontrol disable",
    "psrdiffsource none",
    "rtksource auto",
    "rtkdynamics dynamic",
    "rtknetwork auto",
    "rtkqualitylevel normal",
    "rtktimeout 60",
    "rtkcommand reset",
    "setionotype auto",
)
_PORTS = (
    "interfacemode usb1 zq2 zq2",
    "interfacemode usb2 novatel novatel",
    "interfacemode usb3 CMR none",
    "com com2 460800 n 8 1 n off on",
    "interfacemode com2 zq2 zq2",
)
_OWN_PORT = (
    "log versionb once",
    "log rxstatusb once",
    "log psrdopb ontime 10",
    "log rxstatusb onchanged",
    "log comconfigb ontime 10",
    "pdpfilter enable",
    "pdpmode relative auto",
    "dynamics air",
    f"log pdpxyzb ontime {POSITION_PERIOD}",
    f"log pdpstatb ontime {POSITION_PERIOD}",
    f"log rtkxyzb ontime {POSITION_PERIOD}",
)
_DIAGNOSTIC_PORT = tuple(f"log usb2 {each}" for each in (
    "bestposb ontime 1",
    "rangeb ontime 0.5",
    "trackstatb ontime 1",
    "cbithinta onchanged",
    "ionutcb onchanged",
    "almanacb onchanged",
    "glorawalmb onchanged",
    "gloclockb onchanged",
    "refstationb ontime 10",
    "refstationinfob onchanged",
    "rtksatsb ontime 0.5",
    "pdpsatsb ontime 0.5",
    "psrsatsb ontime 0.5",
    "versionb once",
    "passusb3b onnew",
    "rawephemb onchanged",
    "glorawephemb onchanged",
    "basestationobsb onnew",
    "psrposb ontime 0.5",
    "rtkposb ontime 0.5",
    "matchedposb onnew",
    "matchedsatsb onnew",
    "portstatsb ontime 10",
    "rxstatusb onchanged",
    "rtkdatab onnew",
    "versiona once",
    "rxconfiga once",
    f"timeb ontime {POSITION_PERIOD}",
    "gpgsv ontime 1",
    "gpgsa ontime 1",
    "gpzda ontime 1",
    "gpgst ontime 1",
))
_LISTS = ("LOG CHANCONFIGLISTB ONCE", "LOG LOGLISTB ONCE", "LOG RXCONFIGB ONCE")

CONFIGURATION = tuple(f"{each}\r\n" for each in (
    *_FILTERS, *_PORTS, *_OWN_PORT, *_DIAGNOSTIC_PORT, *_LISTS))
