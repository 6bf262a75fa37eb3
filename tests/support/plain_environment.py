"""The environment of the programs that tests run: the same on every machine."""

import os

SETTINGS = ("LANG", "LC_", "LOCPATH", "TZ", "QT_", "XDG_", "KDE_", "FONTCONFIG_", "DESKTOP_",
            "SESSION_MANAGER", "WAYLAND_DISPLAY")


def plain_environment(**variables):
    """This process's variables without its user's settings of language and desktop, and with these."""
    kept = {name: value for name, value in os.environ.items() if not name.startswith(SETTINGS)}
    return dict(kept, XDG_CONFIG_HOME="/nonexistent", **variables)
