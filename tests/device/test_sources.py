"""The device build compiles exactly the sources that the host build compiles, and exports by the same list."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def listed(path, pattern):
    return re.findall(pattern, (ROOT / path).read_text(), re.MULTILINE)


def test_the_device_build_has_the_same_sources():
    host = listed("extractor/sources.cmake", r"^\s+(\S+\.cpp)$")
    device = listed("Android.mk", r"^\s+extractor/(\S+\.cpp)")
    assert sorted(device) == sorted(host)
    assert len(set(host)) == len(host)


def test_every_source_is_in_the_list():
    host = set(listed("extractor/sources.cmake", r"^\s+(\S+\.cpp)$"))
    on_disk = {str(p.relative_to(ROOT / "extractor")) for p in (ROOT / "extractor").rglob("*.cpp")}
    assert on_disk == host


def test_the_device_build_keeps_the_export_list():
    makefile = (ROOT / "Android.mk").read_text()
    for flag in ("-Bsymbolic", "extractor/exports.map", "-fvisibility=hidden", "-fno-rtti", "-fno-exceptions"):
        assert flag in makefile, flag
