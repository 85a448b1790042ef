"""What the services have in common that lend inhibitors by cookies, for python3-dbusmock: as real ones do, they drop what a
client that is gone held."""

import dbus
import dbus.service

TEST_IFACE = "test.Inhibitors"


def load(mock, parameters, last_cookie):
    """Each service counts from elsewhere, so that no cookie is good for two."""
    mock.refuses = bool(parameters.get("refuses", False))
    mock.inhibitors = {}
    mock.last_cookie = last_cookie

    def owner_changed(name, _old, new):
        if not new:
            for cookie in [c for c, (owner, _) in mock.inhibitors.items() if owner == name]:
                del mock.inhibitors[cookie]

    dbus.SessionBus().add_signal_receiver(owner_changed, "NameOwnerChanged", "org.freedesktop.DBus")


def lend(mock, sender, *words):
    if mock.refuses:
        raise dbus.exceptions.DBusException("not today", name="org.freedesktop.DBus.Error.AccessDenied")
    mock.last_cookie += 1
    mock.inhibitors[mock.last_cookie] = (sender, "|".join(map(str, words)))
    return mock.last_cookie


def take_back(mock, cookie):
    mock.inhibitors.pop(int(cookie), None)


@dbus.service.method(TEST_IFACE, in_signature="", out_signature="as")
def List(self):
    return dbus.Array([text for _, text in self.inhibitors.values()], signature="s")
