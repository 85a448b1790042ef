"""A GNOME-like session manager's inhibitors for python3-dbusmock."""

import dbus
import inhibitors
from inhibitors import List, lend, take_back  # noqa: F401 (List is called over the bus)

BUS_NAME = "org.gnome.SessionManager"
MAIN_OBJ = "/org/gnome/SessionManager"
MAIN_IFACE = "org.gnome.SessionManager"
SYSTEM_BUS = False


def load(mock, parameters):
    inhibitors.load(mock, parameters, last_cookie=200)


@dbus.service.method(MAIN_IFACE, in_signature="susu", out_signature="u", sender_keyword="sender")
def Inhibit(self, application, _window, reason, flags, sender=None):
    return lend(self, sender, application, reason, flags)


@dbus.service.method(MAIN_IFACE, in_signature="u", out_signature="")
def Uninhibit(self, cookie):
    take_back(self, cookie)
