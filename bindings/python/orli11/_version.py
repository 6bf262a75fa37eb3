"""The version of the package: that of the library that it is made with."""

__version__ = "1.0.0"
