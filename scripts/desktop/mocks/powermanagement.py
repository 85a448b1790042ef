"""A power manager that keeps suspend away, as of Xfce, for python3-dbusmock: it drops what a client that is gone held."""

import dbus

BUS_NAME = "org.freedesktop.PowerManagement"
MAIN_OBJ = "/org/freedesktop/PowerManagement/Inhibit"
MAIN_IFACE = "org.freedesktop.PowerManagement.Inhibit"
TEST_IFACE = "test.Inhibitors"
SYSTEM_BUS = False


def load(mock, parameters):
    mock.refuses = bool(parameters.get("refuses", False))
    mock.inhibitors = {}
    mock.last_cookie = 300

    def owner_changed(name, _old, new):
        if not new:
            for cookie in [c for c, (owner, _) in mock.inhibitors.items() if owner == name]:
                del mock.inhibitors[cookie]

    dbus.SessionBus().add_signal_receiver(owner_changed, "NameOwnerChanged", "org.freedesktop.DBus")


@dbus.service.method(MAIN_IFACE, in_signature="ss", out_signature="u", sender_keyword="sender")
def Inhibit(self, application, reason, sender=None):
    if self.refuses:
        raise dbus.exceptions.DBusException("not today", name="org.freedesktop.DBus.Error.AccessDenied")
    self.last_cookie += 1
    self.inhibitors[self.last_cookie] = (sender, f"{application}|{reason}")
    return self.last_cookie


@dbus.service.method(MAIN_IFACE, in_signature="u", out_signature="")
def UnInhibit(self, cookie):
    self.inhibitors.pop(int(cookie), None)


@dbus.service.method(TEST_IFACE, in_signature="", out_signature="as")
def List(self):
    return dbus.Array([text for _, text in self.inhibitors.values()], signature="s")
