"""logind's inhibitors for python3-dbusmock: each lasts as long as its descriptor is open somewhere."""

import os

import dbus
from gi.repository import GLib

BUS_NAME = "org.freedesktop.login1"
MAIN_OBJ = "/org/freedesktop/login1"
MAIN_IFACE = "org.freedesktop.login1.Manager"
TEST_IFACE = "test.Inhibitors"
SYSTEM_BUS = True


def load(mock, parameters):
    mock.refuses = bool(parameters.get("refuses", False))
    mock.inhibitors = {}


@dbus.service.method(MAIN_IFACE, in_signature="ssss", out_signature="h")
def Inhibit(self, what, who, why, mode):
    if self.refuses:
        raise dbus.exceptions.DBusException("not today", name="org.freedesktop.DBus.Error.AccessDenied")
    reading, writing = os.pipe()
    self.inhibitors[reading] = f"{what}|{who}|{why}|{mode}"

    def closed(*_):
        self.inhibitors.pop(reading, None)
        os.close(reading)
        return False

    GLib.io_add_watch(reading, GLib.IO_HUP, closed)
    descriptor = dbus.types.UnixFd(writing)
    os.close(writing)
    return descriptor


@dbus.service.method(TEST_IFACE, in_signature="", out_signature="as")
def List(self):
    return dbus.Array(list(self.inhibitors.values()), signature="s")
