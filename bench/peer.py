#!/usr/bin/env python3
"""The same work as a script of the standard library would do it: reads the same files and devices and
the same rows, makes the same kind of document, prints it as JSON. A peer to measure against."""
import fcntl
import json
import os
import re
import socket
import sqlite3
import struct

DISPLAY, ROUTER, DIAGNOSTICS = "/dev/zetdisplay", "/dev/travex", "/dev/diagnostics"


def read(path, limit=None):
    try:
        with open(path, errors="replace") as file:
            return file.read(limit) if limit else file.read()
    except OSError:
        return None


def ask(device, requests):
    try:
        file = os.open(device, os.O_RDWR)
    except OSError:
        return {}
    answers = {}
    for request in requests:
        try:
            answers[f"{request:#x}"] = fcntl.ioctl(file, request)
        except OSError:
            answers[f"{request:#x}"] = -1
    os.close(file)
    return answers


def registers(path):
    text = read(path, 2662) or ""
    return {name: int(value, 16) for name, value in re.findall(r"^([^:]+): (0x[0-9a-f]+)", text, re.M)}


def version(packages, package):
    found = re.search(rf"Package: {package}.*?Version: ([^\n]*)", packages, re.S)
    return found and found.group(1)


def interfaces():
    devices = {}
    counters = read("/proc/net/dev", 2048) or ""
    routes = [line.split() for line in (read("/proc/net/route") or "").splitlines()]
    for _, name in socket.if_nameindex():
        if name == "lo" or (read(f"/sys/class/net/{name}/carrier", 2) or "1").strip() == "0":
            continue
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as query:
            def get(request):
                try:
                    return fcntl.ioctl(query, request, struct.pack("256s", name.encode()))[18:26]
                except OSError:
                    return bytes(8)
            gateway = next((r[2] for r in routes if r[:2] == [name, "00000000"]), "00000000")
            line = re.search(rf"{name}:(.*)", counters)
            fields = [int(f) for f in line.group(1).split()] if line else [0] * 16
            devices[name] = {
                "IPv4Address": socket.inet_ntoa(get(0x8915)[2:6]),
                "Netmask": socket.inet_ntoa(get(0x891B)[2:6]),
                "Gateway": socket.inet_ntoa(struct.pack("<L", int(gateway, 16))),
                "MACAddress": ":".join(f"{b:02X}" for b in get(0x8927)[:6]),
                "Transitions": int(read(f"/dev/shm/netlink-{name}") or -1),
                "Errors": fields[2] + fields[10],
            }
    return devices


def rows():
    sensors, devices, points, scalars = {}, {}, [], {}
    database = sqlite3.connect("file:/dev/shm/status.db?mode=ro", uri=True)
    for key, value in database.execute("SELECT * FROM status ORDER BY address ASC;"):
        if key.startswith("Sensor_"):
            _, number, attribute = key.split("_", 2)
            sensors.setdefault(number, {})[attribute] = value
        elif key.startswith("DCIO_"):
            _, number, attribute = key.split("_", 2)
            devices.setdefault(number, {})[attribute] = value
        elif key.startswith("TtableDeviceNode_"):
            points.append({"Node": int(key[17:]), "Value": int(value)})
        else:
            scalars[key] = value
    return {"Scalars": scalars, "Sensors": list(sensors.values()), "DCIO": list(devices.values()),
            "Devices": points}


def main():
    frame = registers("/proc/driver/frame_control/registers")
    memory = dict(re.findall(r"^(\w+): +(\d+)", read("/proc/meminfo", 2048) or "", re.M))
    storage = os.statvfs("/")
    packages = read("/var/lib/dpkg/status") or ""
    document = {
        "GUID": read("/home/Zet/.settings/uuid", 128),
        "Serial": read("/home/Zet/.settings/serial#", 16),
        "Display": ask(DISPLAY, [0x8004DA5F, 0x8004DA65, 0x8004DA1E, 0x8004DA70, 0x8004DA50,
                                 0x8004DA5C, 0x8004DA5E, 0x8004DA5D]),
        "Router": ask(ROUTER, [0x8004DA0C, 0x8004DA55, 0x8004DA5E, 0x8004DA5F, 0x8004DA60,
                               0x8004DA61, 0x8004DA1C, 0x8004DA63, 0x8004DA65, 0x8004DA64]),
        "Diagnostics": ask(DIAGNOSTICS, [0x8004DB17]),
        "Frame": frame,
        "Multiplexer": read("/proc/driver/video_mux/registers", 2662),
        "Watchdog": os.path.exists("/var/run/wd_event"),
        "Memory": {name: int(memory.get(name, 0)) for name in ("MemTotal", "MemFree", "Cached")},
        "Storage": [storage.f_blocks * 4, storage.f_bfree * 4],
        "Firmware": version(packages, "qtm-distro"),
        "DisplayFirmware": version(packages, "display-firmware"),
        "Network": interfaces(),
        "NameServers": re.findall(r"nameserver ([0-9.]+)", read("/etc/resolv.conf", 2662) or ""),
        **rows(),
    }
    print(json.dumps(document))


if __name__ == "__main__":
    main()
