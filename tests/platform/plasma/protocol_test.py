#!/usr/bin/env python3
"""Whether our description of Plasma's protocols agrees with the packaged ones:
protocol_test.py OURS FOLDER. Messages go over the wire by their place and the types of their
arguments, so these must be alike as far as both descriptions go. Ends with 77 where no
descriptions are installed."""

import glob
import os
import sys
import xml.etree.ElementTree as ElementTree

KNOWN_LATER = {"kde_output_device_registry_v2"}


def messages(interface, kind):
    return [(message.get("name"), int(message.get("since", "1")), message.get("type"),
             [(arg.get("type"), arg.get("interface")) for arg in message.findall("arg")])
            for message in interface.findall(kind)]


def interfaces(files):
    return {interface.get("name"): interface
            for file in files for interface in ElementTree.parse(file).iter("interface")}


def compare(ours, theirs):
    """What is wrong, and how many messages were compared."""
    findings, compared = [], 0
    for name, interface in ours.items():
        if name not in theirs:
            if name not in KNOWN_LATER:
                findings.append(f"{name}: not described by the package")
            continue
        for kind in ("request", "event"):
            for place, (one, other) in enumerate(zip(messages(interface, kind),
                                                     messages(theirs[name], kind))):
                compared += 1
                if one != other:
                    findings.append(f"{name}, {kind} {place}: ours {one}, theirs {other}")
    return findings, compared


def main():
    _, ours, folder = sys.argv
    files = glob.glob(os.path.join(folder, "kde-output-*.xml"))
    if not files:
        print(f"skipped: there are no descriptions in {folder}")
        sys.exit(77)
    findings, compared = compare(interfaces([ours]), interfaces(files))
    print(*findings, sep="\n")
    print(f"{compared} messages compared")
    sys.exit(1 if findings or compared < 30 else 0)


main()
