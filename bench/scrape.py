#!/usr/bin/env python3
"""Runs Debian's node exporter with the sources that the probe reads, too, scrapes it over loopback and
prints the processor time of one scrape in microseconds and the bytes of its text. To be run inside a
controller in a box."""
import os
import subprocess
import sys
import time
import urllib.request

ADDRESS = "127.0.0.1:9100"
SCRAPES = 200
# Memory, interfaces with their carrier and routes, file systems, time.
COLLECTORS = ["meminfo", "netdev", "netclass", "network_route", "filesystem", "time"]


def scrape():
    with urllib.request.urlopen(f"http://{ADDRESS}/metrics", timeout=5) as answer:
        return answer.read().decode()


def first_scrape():
    for _ in range(100):
        try:
            return scrape()
        except OSError:
            time.sleep(0.1)
    sys.exit("the exporter does not answer")


def processor_time(process):
    """In seconds, user and system; the box has the kernel's own /proc beside the controller's."""
    with open(f"/.proc/{process}/stat") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def main():
    exporter = subprocess.Popen(
        ["prometheus-node-exporter", f"--web.listen-address={ADDRESS}",
         "--web.disable-exporter-metrics", "--collector.disable-defaults",
         "--collector.filesystem.mount-points-exclude=^/.+",
         *(f"--collector.{name}" for name in COLLECTORS)],
        stderr=subprocess.DEVNULL)
    try:
        text = first_scrape()
        for name in COLLECTORS:
            if f'node_scrape_collector_success{{collector="{name}"}} 1' not in text:
                sys.exit(f"the exporter's collector {name} failed")
        before = processor_time(exporter.pid)
        for _ in range(SCRAPES):
            scrape()
        print(round((processor_time(exporter.pid) - before) / SCRAPES * 1e6), len(text))
    finally:
        exporter.kill()
        exporter.wait()


if __name__ == "__main__":
    main()
