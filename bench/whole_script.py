#!/usr/bin/env python3
"""Fills all eight tables with libhivex's Python binding, which maps each hive, once: the script that
one would write instead of artifact_host, as a peer for scripts/bench.
Usage: whole_script.py SOURCE/ DATABASE ACCOUNT, where the database has the tables."""

import os
import sqlite3
import struct
import sys

import hivex

UNINSTALL = r"Microsoft\Windows\CurrentVersion\Uninstall"
EXPLORER = r"SOFTWARE\Microsoft\Windows\CurrentVersion\Explorer"
USER_ASSIST = EXPLORER + r"\UserAssist"
HIDDEN_ICONS = EXPLORER + r"\HideDesktopIcons"
NAME_SPACE = EXPLORER + r"\Desktop\NameSpace"
STORE = (r"SOFTWARE\Microsoft\Windows NT\CurrentVersion\AppCompatFlags"
         r"\Compatibility Assistant\Store")
APPLICATION_VALUES = ("DisplayName", "DisplayVersion", "Publisher", "InstallLocation",
                      "InstallSource", "URLInfoAbout", "UninstallString")
APPLICATION = ("parent_name,display_name,display_version,publisher,install_location,install_source,"
               "url,uninstall_string,reg_file,node_name,reg_path,install_date,modified_timestamp")
ENTRY = ("system_account,class_id,exename,entry_index,runcount,reg_file,node_name,reg_path,"
         "lastruntime")
SOURCE = ",source_file,os_scheme_display,source_count_name"
NO_TIMES = ("0", "0", "0")
ROTATED = str.maketrans("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz",
                        "NOPQRSTUVWXYZABCDEFGHIJKLMnopqrstuvwxyzabcdefghijklm")


class Hive:
    """A mapped hive, with the names by which rows tell of it."""

    def __init__(self, root, place):
        self.hive = hivex.Hivex(root + place)
        self.tail = ("/" + place, "Windows", "Source1")

    def find(self, path):
        node = self.hive.root()
        for name in filter(None, path.split("\\")):
            node = node and self.hive.node_get_child(node, name)
        return node

    def subkeys(self, node):
        return sorted((self.hive.node_name(key), key) for key in self.hive.node_children(node)) \
            if node else []

    def values(self, node):
        """Names and data."""
        for value in self.hive.node_values(node) if node else []:
            yield self.hive.value_key(value), self.hive.value_value(value)[1]

    def values_below(self, node):
        yield from self.values(node)
        for _, key in self.subkeys(node):
            yield from self.values_below(key)


def text(data):
    return data.replace(b"\0", b"").decode(errors="replace")


def unix_seconds(filetime):
    return (filetime - 116444736000000000) // 10000000


def number(data, offset, form):
    length = struct.calcsize(form)
    return struct.unpack_from(form, data, offset)[0] if len(data) >= offset + length else 0


def times_of(path):
    """Creation, modification and last access; Python has no creation times on Linux."""
    try:
        found = os.stat(path)
    except OSError:
        return NO_TIMES
    return str(int(found.st_ctime)), str(int(found.st_mtime)), str(int(found.st_atime))


def applications(hive, path):
    for name, key in hive.subkeys(hive.find(path)):
        values = {known: text(data) for known, data in hive.values(key)}
        date = values.get("InstallDate", "")
        yield (name, *(values.get(known, "") for known in APPLICATION_VALUES), "SOFTWARE",
               "Uninstall", path, date and f"{date[6:8]}/{date[4:6]}/{date[:4]}",
               str(unix_seconds(hive.hive.node_timestamp(key))), *hive.tail)


def registered(hive):
    for name, data in hive.values(hive.find("RegisteredApplications")):
        yield (name, text(data), "SOFTWARE", "RegisteredApplications", r"\RegisteredApplications",
               *hive.tail)


def executed(hive, account):
    """The entries of both UserAssist tables, in one walk."""
    index = 0
    for class_id, key in hive.subkeys(hive.find(USER_ASSIST)):
        for _, entries in hive.subkeys(key):
            for name, data in hive.values_below(entries):
                filetime = number(data, 60, "<q")
                yield name.translate(ROTATED), (
                    str(index), str(number(data, 4, "<i")), "NTUSER.DAT", "UserAssist", USER_ASSIST,
                    str(unix_seconds(filetime) if filetime > 0 else 0), *hive.tail), \
                    (account, class_id)
                index += 1


def stored(hive, root, account):
    for name, _ in hive.values(hive.find(STORE)):
        path = name.replace("\\", "/")[2:]
        yield (account, name, path, "NTUSER.DAT", "Store", STORE, *times_of(root + path[1:]),
               *hive.tail)


def icons(hive, account):
    names = {}
    for _, key in hive.subkeys(hive.find(HIDDEN_ICONS)):
        for class_id, data in hive.values(key):
            if class_id not in names:
                icon = hive.find(f"{NAME_SPACE}\\{class_id}")
                names[class_id] = [text(name) for _, name in hive.values(icon)]
            hidden = "YES" if number(data, 0, "<i") == 1 else "NO"
            for name in names[class_id]:
                yield (account, name, hidden, "NTUSER.DAT", "HideDesktopIcons", HIDDEN_ICONS,
                       *hive.tail)


def packages(root, account):
    place = f"Users/{account}/AppData/Local/Packages/"
    for name in os.listdir(root + place) if os.path.isdir(root + place) else []:
        windows_path = "C:\\" + (place + name).replace("/", "\\")
        yield (account, name, root + place + name, windows_path, *NO_TIMES, "/" + place, "Windows",
               "Source1")


def insert(database, table, columns, rows):
    columns += SOURCE
    marks = ",?" * (columns.count(",") + 1)
    database.executemany(f"INSERT INTO {table}(bookmark,{columns}) VALUES(0{marks})", rows)


def main(root, database_file, account):
    software = Hive(root, "Windows/System32/config/SOFTWARE")
    user = Hive(root, f"Users/{account}/NTUSER.DAT")
    entries = list(executed(user, account))
    with sqlite3.connect(database_file) as database:
        insert(database, "install_apps_64", APPLICATION, applications(software, UNINSTALL))
        insert(database, "install_apps_32", APPLICATION,
               applications(software, "WOW6432Node\\" + UNINSTALL))
        insert(database, "uninstall_apps", ENTRY,
               ((*head, name, *rest) for name, rest, head in entries if "uninstall" in name))
        insert(database, "registered_apps", "key_name,value,reg_file,node_name,reg_path",
               registered(software))
        insert(database, "metro_apps",
               "system_account,filename,file_path,windows_path,creation_timestamp,"
               "modification_timestamp,last_access_timestamp", packages(root, account))
        insert(database, "previously_executed_apps", ENTRY,
               ((*head, name.replace("\\", "/"), *rest) for name, rest, head in entries
                if name != "UEME_CTLSESSION"))
        insert(database, "third_party_applications",
               "system_account,windows_path,file_path,reg_file,node_name,reg_path,"
               "creation_timestamp,modification_timestamp,last_access_timestamp",
               stored(user, root, account))
        insert(database, "hidden_desktop_icons_app",
               "system_account,app_name,hidden,reg_file,node_name,reg_path", icons(user, account))


main(*sys.argv[1:])
