"""mkvx seek, late and index as commands; where seeks land in muxed files is judged in tests/interop."""
import pytest

import craft


@pytest.mark.parametrize('args, told', [
    (['late', '--track', '2', '--at', '0', '--by', '1us'], 'index 2 is a subtitle track, which skips nothing'),
    (['late', '--track', '0', '--at', '201', '--by', '1us'], 'has only 200 units'),
    (['late', '--track', '3', '--at', '0', '--by', '1us'], 'there is no index 3'),
    (['seek', '--track', '3', '--to', '0'], 'there is no index 3'), (['seek', '--to', 'noon'], 'noon'),
    (['seek', '--to', '90'], '90s are seconds, 90us microseconds'), (['index', '--coarse', '-5s'], '0 or more'),
], ids=lambda value: ' '.join(value) if isinstance(value, list) else '')
def test_what_cannot_be_asked(mkvx, sample, args, told):
    run = mkvx(*args, sample)
    assert run.code == 2 and run.out == '' and told in run.err and run.err.count('\n') == 1


def landed(run):
    return [(line['track'], line['landed'] and line['landed']['time_us']) for line in run.lines()]


def test_seeks_of_one_source_follow_each_other(mkvx, sample):
    """Forwards, back, and from behind the end back again; subtitles have no seeks of their own."""
    targets = [word for target in ('3s', '00:00:00', '8034ms', '-1us', '0:07.999999') for word in ('--to', target)]
    lines = mkvx('seek', *targets, '--format', 'jsonl', sample)
    assert landed(lines) == [(0, 2000000), (0, 0), (0, None), (0, None), (0, 6000000),
                             (1, 2020000), (1, 0), (1, None), (1, None), (1, 6014000)]
    assert mkvx('seek', *targets, '--format', 'json', sample).json() == {
        'mkvx': 1, 'file': str(sample), 'seeks': [{k: v for k, v in line.items() if k != 'mkvx'} for line in lines.lines()]}
    run = mkvx('seek', '--track', 2, '--to', 0, '--format', 'jsonl', sample)
    assert run.code == 0 and landed(run) == [(2, None)] and 'follow the seeks of the master track' in run.err


@pytest.mark.parametrize('by, expected', [(400000, 1560000), (400001, 2000000), (339999, 1560000), (1000000, 2000000)])
def test_late_skips_above_400_ms(mkvx, sample, by, expected):
    line = mkvx('late', '--track', 0, '--at', 40, '--by', by, '--format', 'json', sample).json()
    assert (line['due_us'], line['landed']['time_us']) == (1560000, expected)


def test_index_of_a_film_without_cues(mkvx, write):
    """The Clusters are visited in their place."""
    tracks = [craft.video(1, 'V_MPEG2')]
    clusters = [craft.cluster(1000 * i, craft.simple_block(1, 0, b'picture')) for i in range(4)]
    data = craft.matroska(tracks, *clusters, duration_ms=9000.0)
    found = mkvx('index', '--coarse', '0.999999s', '--format', 'json', write('film.mkv', data)).json()
    start = data.index(craft.number(0x18538067)) + 12
    places = [at - start for at in range(len(data)) if data.startswith(craft.number(0x1F43B675), at)]
    assert found['source'] == 'scan' and found['duration_us'] == 3000000 and found['master_points'] == 4
    assert found['entries'] == [{'time_us': 1000000 * i, 'position': at} for i, at in enumerate(places)]
    assert found['coarse'] == [{'from_us': 1000000 * i, 'to_us': 1000000 * (i + 1)} for i in range(3)]
    none = mkvx('index', '--format', 'json', write('head.mkv', craft.matroska(tracks))).json()
    assert none['source'] == 'scan' and none['entries'] == []
