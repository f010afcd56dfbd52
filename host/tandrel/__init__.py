"""The stand-in application that the sketch editor runs in."""

from pkgutil import extend_path

# The compiled modules of the package are built into a tree of their own.
__path__ = extend_path(__path__, __name__)
