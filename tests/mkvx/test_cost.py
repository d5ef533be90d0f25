"""The ledger of reads, held against reads and requests that others have counted."""
import pytest

import craft

OPENING = ['head', 'tracks', 'cues', 'other', 'clusters', 'scan', 'configuration']


def ledgers(mkvx, *args):
    run = mkvx('cost', '--format', 'json', *args)
    assert run.code == 0, run.err
    result = run.json()
    assert result['mkvx'] == 1
    for ledger in result['ledgers']:
        ledger['stages'] = {stage['stage']: stage for stage in ledger['stages']}
    return {ledger['source']: ledger for ledger in result['ledgers']}


def opening_reads(ledger):
    return sum(ledger['stages'][name]['reads'] for name in OPENING)


def bench_reads(mkvx, path):
    return mkvx('bench', 'open', '--once', '--reads', '--json', path).json()['reads']


CLUSTERS = [craft.cluster(100 * i, craft.simple_block(1, 0, b'\0\0\0\3abc')) for i in range(20)]
TRACKS = [craft.video(1, 'V_MPEGH/ISO/HEVC', craft.private(b'\1' + bytes(30)))]


@pytest.mark.parametrize('kind', ['sample', 'no cues', 'seek head', 'cues'])
def test_every_read_is_in_one_stage(mkvx, sample, write, kind):
    tags = [craft.element(0x1254C367, b'')] if kind == 'seek head' else []
    path = sample if kind == 'sample' else write('film.mkv', craft.matroska(
        TRACKS, *CLUSTERS, duration_ms=2000.0, cue_for=1 if kind == 'cues' else None, led_to=tags))
    found = ledgers(mkvx, path)
    plain, caching = found['uncached'], found['caching']
    assert opening_reads(plain) == bench_reads(mkvx, path)
    # Without the third element that ends the search for the head it passes over the Clusters, and no scan is needed. A scan
    # visits every Cluster, but not for a network stream.
    reads = {name: stage['reads'] for name, stage in plain['stages'].items()}
    assert (reads['clusters'] >= len(CLUSTERS)) == (kind in ('no cues', 'cues'))
    assert reads['scan'] >= len(CLUSTERS) if kind == 'seek head' else reads['scan'] == 0
    assert caching['stages']['scan']['reads'] == 0
    assert (reads['cues'] > 0) == (kind in ('sample', 'cues'))
    for ledger in found.values():
        total = ledger['total']
        assert total['distinct_bytes'] + total['reread_bytes'] == total['bytes'] > 0
        assert total['distinct_bytes'] <= path.stat().st_size
        assert total['ms'] == pytest.approx(total['requests'] * 50 + total['requested_bytes'] / 1e4)
    assert plain['total']['requests'] == plain['total']['reads']


def test_every_unit_is_every_byte(mkvx, sample):
    units = sum(unit['size'] for unit in mkvx('packets', '--format', 'jsonl', sample).lines() if unit['track'] < 2)
    demux = ledgers(mkvx, '--demux', sample)['uncached']['stages']['demux']
    assert demux['bytes'] >= units and demux['largest'] > 1000 and demux['smallest'] < 100


@pytest.mark.parametrize('block', [4, 64])
def test_requests_are_those_that_a_server_sees(mkvx, serve, sample, block):
    server = serve(sample.read_bytes())
    asked = ('--demux', '--url-block', str(block))
    over_network = ledgers(mkvx, *asked, server.url('good'))
    assert set(over_network) == {'caching'}  # no device reads a URL without a cache
    assert over_network['caching']['total']['requests'] == len(server.seen)
    assert over_network['caching']['stages'] == ledgers(mkvx, *asked, sample)['caching']['stages']


@pytest.mark.parametrize('latency, bandwidth', [(0, 0.5), (80, 2), (0.25, 1000)])
def test_time_is_of_the_medium_that_was_described(mkvx, sample, latency, bandwidth):
    """What is read is the same on every medium."""
    usual = ledgers(mkvx, sample)
    for source, ledger in ledgers(mkvx, '--latency', str(latency), '--bandwidth', str(bandwidth), sample).items():
        for name, stage in [*ledger['stages'].items(), ('total', ledger['total'])]:
            other = usual[source]['total'] if name == 'total' else usual[source]['stages'][name]
            assert {**stage, 'ms': 0} == {**other, 'ms': 0}
            assert stage['ms'] == pytest.approx(stage['requests'] * latency + stage['requested_bytes'] / bandwidth / 1000, abs=0.002)
