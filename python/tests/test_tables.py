"""Tables: a row for each file, whatever it is, and back."""

import os
import pathlib

import pytest

import zephmetadata as z


def test_has_a_row_for_each_file_and_writes_changed_cells_alone(fixture):
    names = [fixture(to=f"{number}.jpg") for number in range(150)] + ["missing.jpg", fixture("broken-packet.jpg")]
    rows = z.table(names, ["xmp:Rating", "dc:subject"], workers=3)
    assert [row["file"] for row in rows] == names
    assert rows[149] == {"file": names[149], "xmp:Rating": 4.0, "dc:subject": rows[0]["dc:subject"], "error": None}
    assert [row["error"] is None for row in rows[149:]] == [True, False, False]

    rows[0]["xmp:Rating"], rows[1]["dc:subject"], rows[2]["xmp:Rating"] = 1, ["new"], 9
    rows[3]["dc:subject"] = None
    written = z.apply(rows, workers=2)
    assert [row["changed"] for row in written[:5]] == [True, True, False, False, False]
    assert written[2]["error"] == 'xmp:Rating: "9" is more than 5' and written[150]["error"] == "no such file"
    assert not any(row["changed"] for row in z.apply(rows))
    texts = [{"file": names[5], "xmp:Rating": "4.0", "xmp:CreateDate": "2024-05-18T05:42:10+02:00"}]
    assert not z.apply(texts)[0]["changed"], "4 is 4.0 where all cells are texts"
    assert z.apply([{**texts[0], "xmp:CreateDate": "2024-05-18T03:42:10Z"}])[0]["changed"]
    assert z.apply(rows[3:4], delete_missing=True)[0]["changed"]
    assert [row["dc:subject"] for row in z.table(names[:4:2] + names[1:4:2], ["dc:subject"])][2:] == [["new"], None]

    [row] = z.table(names[4:5], ["xmp:Rating", "tiff:Make"], view="camera")
    assert list(row)[:4] == ["file", "xmp:Rating", "tiff:Make", "tiff:Model"]
    assert (row["corvid:ShutterSpeed"], row["exif:FNumber"], row["exif:Flash/exif:Fired"]) == ("1/250 sec", 8, False)
    assert z.apply([row])[0] == {"file": names[4], "changed": False, "error": None}, "what is made is not written"


@pytest.mark.parametrize(
    ("paths", "files"),
    [
        ("a.jpg", ["a.jpg"]),
        (pathlib.Path("a.jpg"), ["a.jpg"]),
        ("lost[1].jpg", ["lost[1].jpg"]),
        ("*/h*.jpg", ["photos/harbour.jpg"]),
        (pathlib.Path("B.JPG"), ["B.JPG/c.jpg", "B.JPG/d/e.PNG"]),
        (["a.jpg", "B.JPG", "a.jpg"], ["a.jpg", "B.JPG/c.jpg", "B.JPG/d/e.PNG", "a.jpg"]),
    ],
)
def test_takes_files_folders_and_patterns(fixture, paths, files):
    pathlib.Path("B.JPG/d").mkdir(parents=True)
    for name in ("a.jpg", "B.JPG/c.jpg", "B.JPG/c.jpg.xmp", "B.JPG/.hidden.jpg", "B.JPG/notes.txt", "B.JPG/d/e.PNG"):
        fixture(to=name)
    os.symlink("..", "B.JPG/link.jpg")
    rows = z.table(paths, "xmp:Rating")
    assert [row["file"] for row in rows] == files
    assert {row["file"] for row in rows if row["xmp:Rating"] != 4} == {name for name in files if "lost" in name}


def test_frames_have_the_types_of_the_definitions_and_go_back(fixture):
    pandas = pytest.importorskip("pandas")
    names = [fixture(), fixture("plain.jpg"), "missing.jpg"]
    columns = ["xmp:Rating", "tiff:Orientation", "xmpRights:Marked", "xmp:Label", "dc:subject", "xmp:CreateDate"]
    frame = z.table(names, columns, frame="pandas")
    assert [str(frame[column].dtype) for column in columns] == ["Float64", "Int64", "boolean", "string", "object", "object"]
    assert not any(row["changed"] for row in z.apply(frame))
    with z.open(names[0]) as photo:
        photo["tiff:Orientation"] = pandas.Series([3])[0]
    frame.loc[0, "tiff:Orientation"] = 6
    frame.loc[1, "xmp:Label"] = "Red"
    frame.loc[0, "xmp:CreateDate"] = pandas.Timestamp("2024-05-18T05:42:11+02:00")
    assert [row["changed"] for row in z.apply(frame)] == [True, True, False]
    assert z.open(names[0])["tiff:Orientation"] == 6 and z.open(names[1])["xmp:Label"] == "Red"
    assert z.open(names[0])["xmp:CreateDate"].second == 11
