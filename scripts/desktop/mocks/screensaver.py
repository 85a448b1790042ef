"""The desktop's screen-saver service for python3-dbusmock."""

import dbus
import inhibitors
from inhibitors import List, lend, take_back  # noqa: F401 (List is called over the bus)

BUS_NAME = "org.freedesktop.ScreenSaver"
MAIN_OBJ = "/org/freedesktop/ScreenSaver"
MAIN_IFACE = "org.freedesktop.ScreenSaver"
SYSTEM_BUS = False


def load(mock, parameters):
    inhibitors.load(mock, parameters, last_cookie=100)


@dbus.service.method(MAIN_IFACE, in_signature="ss", out_signature="u", sender_keyword="sender")
def Inhibit(self, application, reason, sender=None):
    return lend(self, sender, application, reason)


@dbus.service.method(MAIN_IFACE, in_signature="u", out_signature="")
def UnInhibit(self, cookie):
    take_back(self, cookie)
