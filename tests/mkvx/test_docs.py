"""docs/formats.md: the bytes in its tables are those of the sample and of the records that the plug-in makes."""
import re
from pathlib import Path

PAGE = (Path(__file__).parents[2] / 'docs/formats.md').read_text()
ROW = re.compile(r'^\| (\d+) \| ((?:[0-9A-F]{2} ?)+)\|', re.M)


def tables():
    """The heading of each table's first column, and its rows of (offset, bytes)."""
    for table in re.findall(r'(?:^\|.*\n)+', PAGE, re.M):
        yield table.split('|')[1].strip(), [(int(at), bytes.fromhex(hexes)) for at, hexes in ROW.findall(table)]


def test_offsets_of_the_sample(sample):
    data = sample.read_bytes()
    rows = [row for title, table in tables() if title == 'Offset' for row in table]
    assert len(rows) > 30
    for at, expected in rows:
        assert data[at:at + len(expected)] == expected, at


def test_records(mkvx, sample):
    tracks = mkvx('info', '--format', 'json', sample).json()['tracks']
    described = [(*title.split(' of track '), table) for title, table in tables() if ' of track ' in title]
    assert [(key, track) for key, track, _ in described] == [('avcc', '0'), ('esds', '1')]
    for key, track, table in described:
        whole = b''
        for at, part in table:
            assert at == len(whole)
            whole += part
        assert whole.hex() == tracks[int(track)]['config'][key]
