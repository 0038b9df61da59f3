"""Metadata of photos, videos and documents (XMP, Exif, IPTC), read and written by path.

>>> import zephmetadata
>>> with zephmetadata.open(sample()) as photo:
...     photo["xmp:Rating"] = 5
...     photo["dc:subject"] = [*photo["dc:subject"], "pier"]
>>> photo = zephmetadata.open(photo.name)
>>> photo["dc:title"]["de"], photo["exif:FNumber"], photo["xmp:Rating"]
('Hafen im Morgengrauen', Fraction(8, 1), 5.0)
>>> photo.label("exif:ExposureTime"), photo.display("exif:ExposureTime")
('Exposure Time', '1/250 sec')

A path is a property with its prefix (``"dc:title"``), and goes on to items (``"dc:subject[1]"``) and fields
(``"exif:Flash/exif:Fired"``). ``schemas()`` lists the properties. Leaving the block saves; an exception in it does not.
"""

from ._core import __version__
from ._errors import (
    Error,
    InUse,
    MetadataWarning,
    PathError,
    ReadError,
    TypeRefused,
    ValueRefused,
    WriteError,
    WriteReport,
)
from ._files import files
from ._packages import Package, load_package, packages, remove_package
from ._panels import Panel
from ._photo import Finding, Photo, merge, open, parse
from ._schemas import Property, Schema, schemas
from ._tables import apply, table
from ._values import MIXED, PartialDate

__all__ = [
    "MIXED",
    "Error",
    "Finding",
    "InUse",
    "MetadataWarning",
    "Package",
    "Panel",
    "PartialDate",
    "PathError",
    "Photo",
    "Property",
    "ReadError",
    "Schema",
    "TypeRefused",
    "ValueRefused",
    "WriteError",
    "WriteReport",
    "__version__",
    "apply",
    "files",
    "load_package",
    "merge",
    "open",
    "packages",
    "parse",
    "remove_package",
    "schemas",
    "table",
]
