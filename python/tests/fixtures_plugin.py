import pathlib
import shutil

import pytest

import zephmetadata

FIXTURES = pathlib.Path(__file__).parents[2] / "tests" / "data"


@pytest.fixture
def fixture(tmp_path):
    """Copies a fixture into the test's own folder."""

    def copy(name="harbour.jpg", to=None):
        return str(shutil.copy(FIXTURES / name, tmp_path / (to or name)))

    return copy


@pytest.fixture(autouse=True)
def sample(doctest_namespace, tmp_path, monkeypatch):
    """What the examples of the documentation call a sample, and their photo.jpg and folder of photos."""
    monkeypatch.chdir(tmp_path)
    shutil.copy(FIXTURES / "harbour.jpg", "photo.jpg")
    (tmp_path / "photos" / "2024").mkdir(parents=True)
    for name, fixture in [("harbour.jpg", "harbour"), ("2024/boats.JPG", "plain"), ("2024/torn.jpg", "broken-packet")]:
        shutil.copy(FIXTURES / f"{fixture}.jpg", tmp_path / "photos" / name)

    def sample():
        return str(shutil.copy(FIXTURES / "harbour.jpg", tmp_path / "sample.jpg"))

    doctest_namespace["sample"] = sample
    doctest_namespace["zephmetadata"] = zephmetadata
    doctest_namespace["pathlib"] = pathlib
