#!/usr/bin/env python3
"""Fills install_apps_64 with libhivex's Python binding: the script that one would write instead of
the plug-in, as a peer for scripts/bench. Usage: uninstall_script.py SOFTWARE DATABASE"""

import sqlite3
import sys

import hivex

KEY = r"Microsoft\Windows\CurrentVersion\Uninstall"
VALUES = ("DisplayName", "DisplayVersion", "Publisher", "InstallLocation", "InstallSource",
          "URLInfoAbout", "UninstallString")
COLUMNS = ("bookmark", "parent_name", "display_name", "display_version", "publisher",
           "install_location", "install_source", "url", "uninstall_string", "reg_file",
           "node_name", "reg_path", "install_date", "modified_timestamp", "source_file",
           "os_scheme_display", "source_count_name")
TAIL = ("/Windows/System32/config/SOFTWARE", "Windows", "Source1")


def text(data):
    return data.replace(b"\0", b"").decode(errors="replace")


def unix_seconds(filetime):
    return str((filetime - 116444736000000000) // 10000000)


def rows(path):
    hive = hivex.Hivex(path)
    node = hive.root()
    for name in KEY.split("\\"):
        node = hive.node_get_child(node, name)
    for name, key in sorted((hive.node_name(key), key) for key in hive.node_children(node)):
        values = {hive.value_key(value): text(hive.value_value(value)[1])
                  for value in hive.node_values(key)}
        date = values.get("InstallDate", "")
        yield (0, name, *(values.get(known, "") for known in VALUES), "SOFTWARE", "Uninstall", KEY,
               date and f"{date[6:8]}/{date[4:6]}/{date[:4]}",
               unix_seconds(hive.node_timestamp(key)), *TAIL)


with sqlite3.connect(sys.argv[2]) as database:
    database.execute(f"CREATE TABLE install_apps_64({', '.join(COLUMNS)})")
    database.executemany(f"INSERT INTO install_apps_64 VALUES({', '.join('?' * len(COLUMNS))})",
                         rows(sys.argv[1]))
