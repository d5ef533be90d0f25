"""The device build compiles exactly the sources that the host build compiles, and exports by the same list. Its include
path, where extractor/ comes first, hides none of the system's headers."""
import os
import pathlib
import re
import subprocess

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


def test_the_device_build_keeps_its_flags():
    makefile = (ROOT / "Android.mk").read_text()
    for flag in ("-Bsymbolic", "extractor/exports.map", "-fvisibility=hidden", "-fno-rtti", "-fno-exceptions",
                 "-std=gnu++11", "LOCAL_MULTILIB := 32"):
        assert flag in makefile, flag


def test_no_attribute_is_newer_than_the_standard():
    """gnu++11 has one that is used here; compilers of the time warn about all others, today's g++ about none."""
    sources = [p for p in (ROOT / "extractor").rglob("*") if p.suffix in (".h", ".cpp")]
    attributes = {name for p in sources for name in re.findall(r"\[\[(\w+)", p.read_text())}
    assert attributes == {"noreturn"}


# Of <utils/...> in the Lollipop line, those that today's package no longer has.
GONE_SINCE = ("BasicHashtable.h", "BlobCache.h", "LinearTransform.h", "SharedBuffer.h")


def test_no_header_hides_one_of_the_system():
    """A source's <utils/Log.h> is looked for below extractor/ first; upper and lower case are one on some disks."""
    systems = {p.name.lower() for p in pathlib.Path("/usr/include/android/utils").glob("*.h")}
    assert "refbase.h" in systems
    ours = {p.name.lower() for p in (ROOT / "extractor" / "utils").glob("*.h")}
    assert not ours & (systems | {name.lower() for name in GONE_SINCE})


def exports():
    """What lollipop-exports.txt lists: by library, the names."""
    sections = {}
    for line in (pathlib.Path(__file__).parent / "lollipop-exports.txt").read_text().splitlines():
        if line.startswith("["):
            names = sections.setdefault(line.strip("[]"), set())
        elif line and not line.startswith("#"):
            assert line not in names
            names.add(line)
    return sections


def wanted(library):
    """Names of the framework that the library takes from elsewhere, as a 32-bit library spells them."""
    table = subprocess.run(["readelf", "--dyn-syms", "--wide", "--demangle", library], capture_output=True, text=True, check=True)
    names = {row[7] for line in table.stdout.splitlines()
             if len(row := line.split(maxsplit=7)) == 8 and row[6] == "UND" and "android::" in row[7]}
    if library.read_bytes()[4] == 1:  # ELFCLASS32
        return names
    # Of the two eight-byte types of a 64-bit library one is size_t, the other int64_t.
    names = {re.sub(r"\bunsigned long\b", "unsigned int", name) for name in names}
    return {re.sub(r"\blong\b", "long long", name) for name in names}


def test_a_device_has_what_the_plugin_wants():
    """Nothing newer than Lollipop, nothing of the host platform's own, and no type information."""
    sections = exports()
    host_only = sections.pop("host only")
    found = wanted(pathlib.Path(os.environ["MKVX_BUILD"]) / "lib" / "libmatroska_ext.so")
    assert found - host_only - set().union(*sections.values()) == set()
    assert host_only - found == set(), "listed as the host's alone, and no longer wanted"
