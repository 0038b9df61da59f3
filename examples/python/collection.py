#!/usr/bin/python3
"""What is in a collection, and whose it is: months, lenses and focal lengths as a picture, photos without rights and, if
wanted, with them.

    collection.py FOLDER [--plot PICTURE] [--rights TEXT]

Needs pandas and matplotlib (Debian: python3-pandas python3-matplotlib).
"""

import argparse
import pathlib

import matplotlib

matplotlib.use("Agg")  # into a file, without a screen

import pandas
from matplotlib import pyplot

import zephmetadata

COLUMNS = ["exif:DateTimeOriginal", "xmp:CreateDate", "exifEX:LensModel", "exif:FocalLength", "dc:rights"]


def read(folder: pathlib.Path) -> pandas.DataFrame:
    """A row for each file. What is no photo has an error, and is told of."""
    files = sorted(file for file in folder.rglob("*") if file.is_file() and file.suffix != ".xmp")
    table = zephmetadata.table(files, COLUMNS, frame="pandas")
    for row in table[table["error"].notna()].itertuples():
        print(f"{pathlib.Path(row.file).name}: {row.error}")
    return table[table["error"].isna()]


def month_of(row: pandas.Series) -> "str | None":
    """ "2024-05", of dates with a zone and without, of whole ones and of months alone."""
    for date in (row["exif:DateTimeOriginal"], row["xmp:CreateDate"]):
        if hasattr(date, "month"):
            return f"{date.year}-{date.month:02}"
    return None


def plot(table: pandas.DataFrame, picture: pathlib.Path) -> None:
    months = table.apply(month_of, axis=1).value_counts().sort_index()
    lenses = table["exifEX:LensModel"].value_counts().head(8).sort_values()
    lengths = table["exif:FocalLength"].dropna().astype(float)
    figure, (first, second, third) = pyplot.subplots(1, 3, figsize=(12, 3.6), layout="constrained")
    first.bar(months.index, months, color="#1d5fa8")
    first.tick_params(axis="x", rotation=60)
    first.set_title("Photos a month")
    second.barh(lenses.index, lenses, color="#1d5fa8")
    second.set_title("Lenses")
    third.hist(lengths, bins=20, color="#1d5fa8")
    third.set_title("Focal lengths (mm)")
    figure.savefig(picture, dpi=80, metadata={"Software": None})


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--plot", type=pathlib.Path, help="a PNG file to make")
    parser.add_argument("--rights", help="what photos without rights get")
    wish = parser.parse_args()
    table = read(wish.folder)
    print(f"{len(table)} photos, {table['exifEX:LensModel'].nunique()} lenses")
    if wish.plot:
        plot(table, wish.plot)

    without = table[table["dc:rights"].isna()][["file", "error"]]
    print(f"{len(without)} without rights")
    if wish.rights:
        # Written back: each file once, and only the cells that differ from what it holds.
        without = without.assign(**{"dc:rights": wish.rights, "xmpRights:Marked": True})
        for row in zephmetadata.apply(without):
            print(f"{pathlib.Path(row['file']).name}: {row['error'] or 'marked'}")
        print(f"{read(wish.folder)['dc:rights'].isna().sum()} without rights now")


if __name__ == "__main__":
    main()
