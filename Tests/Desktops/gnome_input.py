"""Runs in GNOME's session: moves its pointer and presses its keys, as it is told on standard input.
https://gitlab.gnome.org/GNOME/mutter/-/blob/43.0/src/org.gnome.Mutter.RemoteDesktop.xml"""

import sys

import dbus

NAME = "org.gnome.Mutter.RemoteDesktop"
FAR = 5000.0

bus = dbus.SessionBus()
path = bus.get_object(NAME, "/org/gnome/Mutter/RemoteDesktop").CreateSession(dbus_interface=NAME)
session = dbus.Interface(bus.get_object(NAME, path), NAME + ".Session")
session.Start()
print("ready", flush=True)
for line in sys.stdin:
    command, *arguments = line.split()
    if command == "move":  # relative moves only, so by the way of the lower right corner
        x, y, width, height = map(int, arguments)
        session.NotifyPointerMotionRelative(FAR, FAR)
        session.NotifyPointerMotionRelative(x - width + 1.0, y - height + 1.0)
    elif command == "button":
        session.NotifyPointerButton(dbus.Int32(arguments[0]), arguments[1] == "1")
    elif command == "key":
        session.NotifyKeyboardKeysym(dbus.UInt32(arguments[0]), arguments[1] == "1")
    print("done", flush=True)
