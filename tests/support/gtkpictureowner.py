#!/usr/bin/python3
# gtkpictureowner.py PICTURE: owns the CLIPBOARD with the picture as a GTK 3
# program does (set_image: fourteen formats, each encoded when asked), prints
# "owner" once it owns it, and serves until killed. Needs python3-gi, gir1.2-gtk-3.0.
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GdkPixbuf, Gtk  # noqa: E402

clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
clipboard.set_image(GdkPixbuf.Pixbuf.new_from_file(sys.argv[1]))
print("owner", flush=True)
Gtk.main()
