"""The device build compiles exactly the sources that the host build compiles, and exports by the same list. Its include
path, where extractor/ comes first, hides none of the system's headers."""
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


def test_no_attribute_is_newer_than_the_standard():
    """gnu++11 has one that is used here; compilers of the time warn about all others, today's g++ about none."""
    sources = [p for p in (ROOT / "extractor").rglob("*") if p.suffix in (".h", ".cpp")]
    attributes = {name for p in sources for name in re.findall(r"\[\[(\w+)", p.read_text())}
    assert attributes == {"noreturn"}


# Of <utils/...> in the Lollipop line, those that today's package no longer has.
GONE_SINCE = ("BasicHashtable.h", "BlobCache.h", "GenerationCache.h", "LinearTransform.h", "SharedBuffer.h", "Static.h")


def test_no_header_hides_one_of_the_system():
    """A source's <utils/Log.h> is looked for below extractor/ first; upper and lower case are one on some disks."""
    systems = {p.name.lower() for p in pathlib.Path("/usr/include/android/utils").glob("*.h")}
    assert "refbase.h" in systems
    ours = {p.name.lower() for p in (ROOT / "extractor" / "utils").glob("*.h")}
    assert not ours & (systems | {name.lower() for name in GONE_SINCE})
