# A notification server for tests, on the session bus it is started on: writes each
# Notify call as one JSON line to the file named by its argument, answers it as closed at
# once, and writes "ready" to the file named second once it owns the name. It ends with the bus.
import json
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"


class Server(dbus.service.Object):
    def __init__(self, bus, record):
        super().__init__(bus, "/org/freedesktop/Notifications")
        self.record, self.last = record, 0

    @dbus.service.method(NAME, out_signature="ssss")
    def GetServerInformation(self):
        return "stub", "kelvo-tests", "1", "1.2"

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
        self.last += 1
        with open(self.record, "a") as out:
            out.write(json.dumps({"app": app, "summary": summary, "body": body, "actions": list(actions)}) + "\n")
        GLib.idle_add(self.NotificationClosed, self.last, 3)
        return self.last

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, number, reason):
        pass


DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
server = Server(bus, sys.argv[1])
name = dbus.service.BusName(NAME, bus)
with open(sys.argv[2], "w") as ready:
    ready.write("ready")
GLib.MainLoop().run()
