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


TIMES = {
    '5s': 5000000, '1:30': 90000000, '00:01:30.5': 90500000, '500ms': 500000, '2min': 120000000, '1h': 3600000000,
    '0.000001s': 1, '0.001ms': 1, '5000000us': 5000000, '100000': 100000, '-100000': -100000, '0': 0, '-0': 0, '-5s': -5000000,
    '-0:01.25': -1250000, '90:00': 5400000000, '99:59:59.999999': 359999999999, '0.5min': 30000000, '3000000h': 10800000000000000,
}
NO_TIMES = ['1.5us', '0.0005ms', '9223372036854775808us', '2562047789h', '18446744073709551621us', '-9223372036854775809us',
            '5S', '1h30min', '1e3s', '+5s', ' 5s', '0x10s', '.5s', '5.s', '1:2:3:4', '1:-2', '--5s', '1:30s', 'nans', 'infs', '٥s']


def test_times(mkvx, sample):
    """All of them are targets of one source, in their order."""
    found = mkvx('seek', '--track', 0, *('--to=' + time for time in TIMES), '--json', sample).json()['seeks']
    assert dict(zip(TIMES, (seek['target_us'] for seek in found))) == TIMES
    for time in NO_TIMES:
        for args in ['seek', '--to=' + time], ['late', '--track', '0', '--at', '1', '--by=' + time], ['info', '--late=' + time]:
            run = mkvx(*args, sample)
            assert (run.code, run.out, run.err.count('\n')) == (2, '', 1) and f'"{time}" is no time' in run.err, args


def test_seeks_lateness_and_index_agree(mkvx, sample):
    """Where the index says that a Cluster is, there is one; seeks land in it, and on what packets lists as a key frame."""
    index = mkvx('index', '--json', sample).json()
    clusters = {item['offset'] - 52 for item in mkvx('tree', '--depth', 2, '--json', sample).json()['items'] if item['name'] == 'Cluster'}
    assert {entry['position'] for entry in index['entries']} == clusters and len(index['entries']) == index['points']
    units = mkvx('packets', '--track', 0, '--format', 'jsonl', sample).lines()
    keys = [{name: unit[name] for name in ('time_us', 'sync', 'size', 'sha1')} for unit in units if unit['sync']]
    assert len(keys) == index['master_points']
    targets = [key['time_us'] + more for key in keys for more in (0, 1, 999999)] + [index['duration_us'] - 1, index['duration_us']]
    seeks = mkvx('seek', '--track', 0, *(f'--to={target}us' for target in targets), '--json', sample).json()['seeks']
    for target, seek in zip(targets[:-1], seeks):
        assert seek['landed'] == [key for key in keys if key['time_us'] <= target][-1], target
        assert 0 < seek['reads'] < 10 and seek['landed']['size'] < seek['read_bytes'] < 2 * seek['landed']['size']
    assert seeks[-1]['landed'] is None
    # Not late enough to jump, a player gets the unit that packets lists; behind the last one, none.
    for at in 0, 1, 49, 199, 200:
        late = mkvx('late', '--track', 0, '--at', at, '--by', '400ms', '--json', sample).json()
        due = units[at] if at < len(units) else None
        assert late['due_us'] == (due and due['time_us'])
        assert late['landed'] == (due and {name: due[name] for name in ('time_us', 'sync', 'size', 'sha1')})
    stretches = mkvx('index', '--coarse', '1999999us', '--json', sample).json()['coarse']
    assert stretches == [{'from_us': 6000000, 'to_us': 8034000}]
