"""Photos as mappings: what is read, what an assignment does to the file, and how failures show."""

import datetime
import html
import io
import os
import pathlib
import pickle
import threading
from fractions import Fraction

import pytest

import zephmetadata as z

ZONE = datetime.timezone(datetime.timedelta(hours=2))


def content(path):
    with open(path, "rb") as file:
        return file.read()


@pytest.mark.parametrize(
    ("path", "value"),
    [
        ("dc:subject", ["harbour", "boats", "dawn; early", "sea"]),
        ("dc:title", {"x-default": "Harbour at dawn", "de": "Hafen im Morgengrauen", "fr": "Le port à l’aube"}),
        ("dc:creator[2]", "Tomas Wren"),
        ('dc:title[?xml:lang="de"]', "Hafen im Morgengrauen"),
        ("xmpRights:Marked", True),
        ("tiff:Orientation", 1),
        ("exif:ExposureTime", Fraction(1, 250)),
        ("xmp:CreateDate", datetime.datetime(2024, 5, 18, 5, 42, 10, tzinfo=ZONE)),
        ("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity", "Marlhaven"),
    ],
)
def test_reads_python_values(fixture, path, value):
    photo = z.open(fixture())
    assert photo[path] == value and type(photo[path]) is type(value)
    assert path in photo


@pytest.mark.parametrize(
    ("path", "value", "stored"),
    [
        ("dc:title", "New", {"x-default": "New", "de": "Hafen im Morgengrauen", "fr": "Le port à l’aube"}),
        ("dc:title", {"x-default": "A", "fr": "B"}, {"x-default": "A", "fr": "B"}),
        ("dc:title", {"en": "A", "DE": "B"}, {"x-default": "Harbour at dawn", "en": "A", "de": "B"}),
        ("dc:subject", ["harbour", "a; b"], ["harbour", "a; b"]),
        ("dc:subject", {"sea", "pier", "harbour", "jetty"}, ["harbour", "sea", "jetty", "pier"]),
        ("dc:subject", ["new", "harbour", "boats", "dawn; early", "sea"], None),
        ("dc:creator", ["Ines Calder", "Tomas Wren", "Ada Quay"], None),
        ("xmp:Rating", 5, 5.0),
        ("xmpRights:Marked", False, None),
        ("exif:FNumber", 2.8, Fraction(14, 5)),
        ("xmpDM:shotDate", z.PartialDate(1999, 7), None),
        ("xmpDM:shotDate", datetime.date(1999, 7, 31), None),
        ("xmpDM:shotDate", datetime.datetime(1999, 7, 31, 23, 59, 58), None),
        ("Iptc4xmpCore:CreatorContactInfo", {"Iptc4xmpCore:CiAdrCity": "Elsewhere"}, None),
        ("xmpMM:Ingredients", [{"stRef:documentID": "one"}, {"stRef:documentID": "two"}], None),
    ],
)
def test_writes_what_reads_back(fixture, path, value, stored):
    name = fixture()
    others = {other: z.open(name)[other] for other in z.open(name) if other != path}
    with z.open(name) as photo:
        photo[path] = value
    again = z.open(name)
    assert again[path] == (value if stored is None else stored)
    kept = {other: again[other] for other in others}
    for stamp in ("xmp:MetadataDate", "xmp:ModifyDate", "xmpMM:InstanceID", "xmpMM:History"):
        others.pop(stamp, None), kept.pop(stamp, None)
    assert kept == others
    again[path] = value
    assert not again.changed


@pytest.mark.parametrize(
    ("held", "assigned", "default"),
    [
        ({}, {"en": "A", "de": "B"}, "A"),
        ({"x-default": "A"}, {"de": "B"}, "A"),
        ({"x-default": "A", "de-AT": "B"}, {"de-at": "C"}, "A"),
        ({"x-default": "A", "de": "B", "en": "A"}, {"de": "D", "en": "E"}, "E"),
        ({"x-default": "A", "de": "B", "en": "A"}, {"de": "D"}, "A"),
        ({"x-default": "A", "de": "B"}, {}, None),
    ],
)
def test_keeps_the_default_language(fixture, held, assigned, default):
    photo = z.open(fixture("plain.jpg"))
    for texts in (held, assigned, assigned):
        photo["dc:title"] = texts
    stored = photo.get("dc:title", {})
    assert stored.pop("x-default", None) == default and {tag.lower(): text for tag, text in stored.items()} == assigned


@pytest.mark.parametrize(
    ("path", "left"),
    [
        ('dc:title[?xml:lang="FR"]', {"x-default": "Harbour at dawn", "de": "Hafen im Morgengrauen"}),
        ("dc:title[1]", {"de": "Hafen im Morgengrauen", "fr": "Le port à l’aube"}),
        ("dc:subject[2]", ["harbour", "dawn; early", "sea"]),
        ("dc:rights[1]", None),
    ],
)
def test_deletes_parts(fixture, path, left):
    name = fixture()
    with z.open(name) as photo:
        del photo[path]
    assert z.open(name).get(path.partition("[")[0]) == left


def test_writes_once_and_only_when_something_differs(fixture):
    name = fixture()
    before, stamp = content(name), os.stat(name)
    with z.open(name) as photo:
        for path in list(photo):
            photo[path] = photo[path]
        assert not photo.changed
        photo["xmp:Label"] = "Red"
        photo["xmp:Label"] = "Green"
        assert photo.changed and not photo.save().changed
    with pytest.raises(RuntimeError), z.open(name) as photo:
        photo["xmp:Label"] = "Red"
        raise RuntimeError
    assert content(name) == before and os.stat(name).st_mtime_ns == stamp.st_mtime_ns
    with z.open(name) as photo:
        del photo["dc:subject"]
    assert "dc:subject" not in z.open(name)


@pytest.mark.parametrize(
    ("path", "value", "error", "message"),
    [
        ("xmp:Rating", 9, z.ValueRefused, '"9" is more than 5'),
        ("dc:subject", "text", z.TypeRefused, "takes list, not str"),
        ("dc:title", 7, z.TypeRefused, "takes str or dict, not int"),
        ("xmpRights:Marked", 1, z.TypeRefused, "takes bool or str, not int"),
        ("tiff:Orientation", 1.5, z.TypeRefused, "takes int or str, not float"),
        ("photoshop:DateCreated", "soon", z.ValueRefused, "soon"),
        ("Iptc4xmpCore:CreatorContactInfo", "text", z.TypeRefused, "takes dict, not str"),
        ("dc:subject", None, z.TypeRefused, "del removes"),
        ("xmp:Label", "a\udc80", z.ValueRefused, "surrogates"),
        ("dc:title", {"de": "a\0"}, z.ValueRefused, "control characters"),
        ("exif:FNumber", float("nan"), z.ValueRefused, "nan is not a number"),
        ("dc:\udc80", "text", z.PathError, "no such path"),
        ("nowhere:property", "text", z.PathError, "no such path"),
        ("dc:nothing", "text", z.ValueRefused, "no definition"),
        ("dc:titel", 7, z.ValueRefused, "did you mean dc:title?"),
        ("keywords", ["text"], z.PathError, "did you mean dc:subject?"),
        ("dc:title", ["text"], z.TypeRefused, "takes str or dict, not list"),
        ("dc:title", {"Deutsch!": "text"}, z.ValueRefused, '"Deutsch!" is not a language tag such as de, en-US'),
        ("dc:title", {"": "text"}, z.ValueRefused, "language tag"),
        ('dc:title[?xml:lang="en--US"]', "text", z.ValueRefused, "language tag"),
    ],
)
def test_refuses_with_reason_file_and_path(fixture, path, value, error, message):
    name = fixture()
    photo = z.open(name)
    with pytest.raises(error, match="") as caught:
        photo.update({"xmp:Nickname": "Red", path: value})
    assert message in str(caught.value) and (caught.value.file, caught.value.path) == (name, path)
    assert isinstance(caught.value, z.Error) and not photo.changed, "of one update all or nothing"
    copy = pickle.loads(pickle.dumps(caught.value))
    assert (type(copy), str(copy), vars(copy)) == (error, str(caught.value), vars(caught.value))


def closed():
    file = io.BytesIO()
    file.close()
    return file


@pytest.mark.parametrize(
    ("call", "kind", "message"),
    [
        (lambda photo: z.open("nowhere.jpg"), OSError, "nowhere.jpg: no such file"),
        (lambda photo: z.open(photo.name, sidecar="beside"), ValueError, "never, auto, always, not 'beside'"),
        (lambda photo: z.open(7), TypeError, "not int"),
        (lambda photo: z.open(open(photo.name, encoding="utf-8")), TypeError, 'open it with "rb"'),
        (lambda photo: z.open(closed()), OSError, "its source cannot be read (I/O"),
        (lambda photo: photo[7], TypeError, "not int"),
        (lambda photo: photo["dc:titel"], KeyError, "there is no value; did you mean dc:title?"),
        (lambda photo: photo.panel("camara"), ValueError, "photo.jpg: there is no view 'camara'; did you mean camera?"),
        (lambda photo: z.table([], view="nowhere"), ValueError, "no view 'nowhere'; there are overview, "),
        (lambda photo: z.table([], frame="polars"), ValueError, "pandas, arrow, not 'polars'"),
        (lambda photo: z.table([], ["dc:title", "title"]), KeyError, "did you mean dc:title?"),
        (lambda photo: z.table([b"photo.jpg"]), TypeError, "not bytes"),
        (lambda photo: z.merge([]), ValueError, "at least one"),
        (lambda photo: z.apply([{"xmp:Rating": 3}]), ValueError, 'no "file"'),
        (lambda photo: z.apply("photo.jpg"), TypeError, "not str"),
        (lambda photo: z.apply([{"file": "photo.jpg"}] * 2), ValueError, "photo.jpg: it has more than one row"),
        (lambda photo: photo.save(io.BytesIO()), TypeError, "a target is for"),
        (lambda photo: pickle.dumps(z.merge([photo.name])), TypeError, "cannot be pickled"),
        (lambda photo: z.load_package("nowhere"), z.Error, "nowhere: "),
    ],
)
def test_errors_are_of_one_family(call, kind, message):
    with pytest.raises(z.Error) as caught:
        call(z.open(pathlib.Path("photo.jpg")))
    assert isinstance(caught.value, kind) and message in str(caught.value)
    assert str(pickle.loads(pickle.dumps(caught.value))) == str(caught.value)


def test_warns_of_what_is_probably_mistyped(fixture):
    photo = z.open(fixture())
    for language in ({"german": "text"}, {"zz": "text"}):
        with pytest.warns(z.MetadataWarning, match="is no language that is known") as caught:
            photo["dc:title"] = language
        assert caught[0].filename == __file__
    with pytest.warns(z.MetadataWarning, match="did you mean xmp:Rating"):
        z.table(photo.name, "xmp:Ratin")


def test_is_for_one_thread_at_a_time(fixture):
    class Target:
        def write(self, data):
            with pytest.raises(z.InUse, match="another thread"):
                photo.get("xmp:Label")

    photo = z.open(pathlib.Path(fixture()).read_bytes())
    photo.save(Target())


def test_tells_of_files_that_cannot_be_read_or_written(fixture, tmp_path):
    for name, status in [("nowhere.jpg", "no-file"), (tmp_path, "not-a-file"), (fixture("broken-packet.jpg"), "damaged-xmp")]:
        with pytest.raises(z.ReadError) as caught:
            z.open(name)
        assert caught.value.status == status and caught.value.file == str(name)
    with pytest.warns(z.MetadataWarning, match="truncated.jpg: the file is damaged"):
        photo = z.open(fixture("truncated.jpg"))
    name = fixture()
    photo = z.open(name)
    photo["xmp:Label"] = "Red"
    with z.open(name) as other:
        other["xmp:Label"] = "Blue"
    for _ in range(2):
        with pytest.raises(z.WriteError) as caught:
            photo.save()
        assert caught.value.report.status == "changed"
    assert z.open(name)["xmp:Label"] == "Blue"
    missing = z.open(fixture("plain.jpg"))
    missing["xmp:Label"] = "Red"
    os.rename(missing.name, missing.name + ".away")
    with pytest.raises(z.WriteError):
        missing.save()


class Remote(io.BytesIO):
    """Counts what is read of it, and may fail."""

    def __init__(self, data, fails=False):
        super().__init__(data)
        self.count, self.fails = 0, fails

    def read(self, size=-1):
        if self.fails:
            raise OSError("the line is dead")
        part = super().read(size)
        self.count += len(part)
        return part


def test_reads_bytes_and_objects_of_which_only_ranges(fixture):
    data = content(fixture())
    large = Remote(data + bytes(64 << 20))
    for source in (data, memoryview(data), Remote(data), large):
        photo = z.open(source)
        assert photo["xmp:Label"] == "Green" and photo.name is None
    assert large.count < 1 << 20
    photo["xmp:Label"] = "Red"
    for _ in range(2):
        with pytest.raises(z.WriteError, match="only read"):
            photo.save()
    assert b"Red" in photo.packet() and z.parse(photo.packet())["xmp:Label"] == "Red"
    with pytest.raises(z.ReadError, match="OSError: the line is dead$"):
        z.open(Remote(data, fails=True))
    with pytest.raises(z.ReadError):
        z.parse(b"<no packet>")


class Narrow(io.BytesIO):
    """Takes little at a time, as raw files may, and up to a size."""

    def __init__(self, space=1 << 30):
        super().__init__()
        self.space = space

    def write(self, data):
        if self.tell() >= self.space:
            raise OSError("the store is full")
        return super().write(data[:5000])


def test_writes_bytes_and_objects_as_files(fixture):
    name = fixture()
    data = content(name)
    photo = z.open(data)
    assert photo.data == data and not photo.save().changed
    for label in ("Red", "A longer label " * 3000, "Red"):
        with photo:
            photo["xmp:Label"] = label
        for other in (photo.data, io.BytesIO(photo.data)):
            assert z.open(other)["xmp:Label"] == label and z.open(other)["dc:subject"] == z.open(name)["dc:subject"]
        assert photo.data[photo.data.rindex(b"\xff\xda") :] == data[data.rindex(b"\xff\xda") :]

    photo["xmp:Label"], target = "Blue", Narrow()
    assert photo.save(target).changed and target.getvalue() == photo.data and not photo.save().changed

    remote, target = z.open(io.BytesIO(data)), Narrow()
    assert not remote.save(target).changed and target.getvalue() == data
    remote["xmp:Label"] = "Red"
    with pytest.raises(z.WriteError, match="the store is full"):
        remote.save(Narrow(6000))
    target = Narrow()
    assert remote.save(target).changed and z.open(target.getvalue())["xmp:Label"] == remote["xmp:Label"] == "Red"
    remote["xmp:Label"] = "Blue"
    with pytest.raises(z.WriteError, match="written elsewhere"):
        remote.save(Narrow())
    packet = z.parse(photo.packet())
    packet["xmp:Label"] = "Green"
    with pytest.raises(z.WriteError, match="it is a packet"):
        packet.save()


def test_keeps_to_the_sidecar_policy(fixture):
    for policy, is_sidecar in [("auto", False), ("never", False), ("always", True)]:
        name = fixture(to=f"{policy}.jpg")
        before = content(name)
        with z.open(name, sidecar=policy) as photo:
            photo["xmp:Label"] = "Red"
        assert (content(name) == before) == is_sidecar
        assert os.path.exists(name + ".xmp") == is_sidecar
    with z.open(name + ".xmp") as sidecar:
        sidecar["xmp:Label"] = "Blue"
    assert z.open(name)["xmp:Label"] == "Blue"


def test_takes_several_files_for_one(fixture):
    names = [fixture(to="a.jpg"), fixture(to="b.jpg")]
    with z.open(names[0]) as photo:
        photo["xmp:Label"] = "Red"
        photo["dc:subject"] = ["own", "two"]
        photo["dc:creator"] = ["one"]
        photo["dc:description"] = {"x-default": "One", "de": "Eins"}
    with z.merge([*names, names[0]]) as both:
        assert both["xmp:Label"] is z.MIXED and both["dc:subject"] is z.MIXED and both["xmp:Rating"] == 4
        both["xmp:Label"] = "Blue"
        with pytest.raises(z.ValueRefused, match="name what x-default is to be"):
            both["dc:description"] = {"de": "Alle"}
        both.update({"dc:creator": ["Ada Quay"], "dc:description": {"x-default": "All"}})
        assert both["dc:creator"] == ["Ada Quay"]
    for name, subject in zip(names, (["own", "two"], ["harbour", "boats", "dawn; early", "sea"])):
        photo = z.open(name)
        assert photo["dc:description"] == {"x-default": "All"}
        assert (photo["xmp:Label"], photo["dc:creator"], photo["dc:subject"]) == ("Blue", ["Ada Quay"], subject)
    with pytest.raises(z.WriteError) as caught, z.merge(names) as both:
        both["xmp:Label"] = "Green"
        with z.open(names[0]) as other:
            other["xmp:Rating"] = 1
    assert caught.value.report.files == {names[0]: "the file was changed by another program meanwhile"}
    assert z.open(names[1])["xmp:Label"] == "Green"


def test_pickles_path_and_packet(fixture):
    name = fixture()
    photo = z.open(name)
    photo["xmp:Label"] = "Red"
    copy = pickle.loads(pickle.dumps(photo))
    assert copy.name == name and dict(copy) == dict(photo)
    copy.save()
    assert z.open(name)["xmp:Label"] == "Red"
    assert pickle.loads(pickle.dumps(z.parse(photo.packet())))["xmp:Label"] == "Red"


def test_serves_different_threads(fixture):
    names = [fixture(to=f"{number}.jpg") for number in range(8)]
    failures = []

    def work(name):
        try:
            for rating in (1, 2, 3):
                with z.open(name) as photo:
                    photo["xmp:Rating"] = rating
                    photo.validate()
        except Exception as error:
            failures.append(error)

    threads = [threading.Thread(target=work, args=(name,)) for name in names]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures and {z.open(name)["xmp:Rating"] for name in names} == {3.0}


def test_shows_panels_with_what_is_not_saved_yet(fixture):
    photo = z.open(fixture())
    photo["dc:title"] = "</iframe><b>&"
    panel = photo.panel()
    assert repr(panel) + "\n" == panel.text and "</iframe><b>&" in panel.text and "&lt;/iframe&gt;&lt;b&gt;&amp;" in panel.page
    shown = panel._repr_html_()
    assert shown.count("<iframe") == shown.count("</iframe>") == 1 and html.escape(panel.page) in shown
    assert [panel.values[name] for name in ("view", "files")] == ["overview", [photo.name]]
    german = photo.panel("camera", lang="de")
    assert "Belichtung        1/250 s, f/8, ISO 200, Zeitautomatik (Blendenvorwahl)" in german.text and 'lang="de"' in german.page
    assert "different values" in z.merge([photo.name, fixture("exif-only.jpg")]).panel("basic").text
    assert z.open(fixture("plain.jpg")).panel("camera").text == "Camera Data: nothing recorded\n"


def test_finds_what_the_definitions_do_not_allow():
    photo = z.parse(
        b'<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">'
        b'<rdf:Description rdf:about="" xmlns:xmp="http://ns.adobe.com/xap/1.0/" xmp:Rating="many"'
        b' xmp:CreateDate="2024-02-31"/></rdf:RDF></x:xmpmeta>'
    )
    assert photo["xmp:Rating"] == "many" and photo["xmp:CreateDate"] == "2024-02-31"
    assert ("xmp:Rating", "error", "type") in [(found.path, found.severity, found.rule) for found in photo.validate()]


def test_loads_packages_and_takes_them_out(fixture):
    folder = pathlib.Path(__file__).parents[2] / "examples" / "packages" / "tide-table"
    documents = {str(file.relative_to(folder)): file.read_bytes() for file in folder.rglob("*.*")}
    photo = z.open(fixture())
    for source in (folder, documents):
        with pytest.raises(z.Error):
            photo["tides:height"] = 3.5
        package = z.load_package(source)
        assert (package.name, package.schemas) == ("Tide Table", ["http://example.org/tides/1.0/"])
        assert package in z.packages() and not package.bundled and package.folder == str(source if source is folder else "")
        photo["tides:height"] = 3.5
        assert photo["tides:height"] == 3.5 and "3.5" in photo.panel(package.views[0]).text
        assert photo.label("tides:gauge", lang="de") == ("Pegel" if source is folder else "Tide Gauge")
        with pytest.raises(z.Error, match="Tide Table"):
            z.load_package(source)
        assert z.remove_package("Tide Table") and not z.remove_package("Tide Table")
    with pytest.raises(z.Error):
        z.load_package(folder / "nowhere")
    with pytest.warns(z.MetadataWarning):
        z.load_package({"manifest.xml": documents["manifest.xml"], "schema/broken.xml": "<xmp_definitions>"})
    assert z.remove_package("Tide Table")
