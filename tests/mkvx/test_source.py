"""Where the bytes come from must not show in the result; what goes wrong on the way has to be told."""
import json
import re
import subprocess

import pytest


@pytest.fixture
def server(serve, sample):
    return serve(sample.read_bytes())


def packets(mkvx, *args):
    return mkvx('packets', '--format', 'jsonl', *args)


@pytest.fixture
def expected(mkvx, sample):
    return packets(mkvx, sample).out


@pytest.mark.parametrize('path', ['good', 'moved', 'no_total', 'small_pieces', 'whole', 'whole_broken_once', 'broken_once',
                                  'busy_once', 'sends_more'])
def test_a_url_is_as_good_as_the_file(mkvx, server, expected, path):
    run = packets(mkvx, '--url-block', '4', server.url(path))
    assert (run.code, run.out) == (0, expected), run.err
    assert ('temporary file' in run.err) == path.startswith('whole')
    assert {agent for _, agent in server.seen} == {'mkvx/' + mkvx('--version').out.split()[1]}
    if path == 'good':  # nothing is asked for twice, not even what the child process has tried
        firsts = [first for first, _ in server.seen]
        assert len(firsts) == len(set(firsts)) and all(first % 4096 == 0 for first in firsts)


def test_a_small_cache_asks_again(mkvx, server, expected):
    run = packets(mkvx, '--url-block', '128', '--url-cache', '1', server.url('good'))
    assert (run.code, run.out) == (0, expected)
    assert {first % 131072 for first, _ in server.seen} == {0}


@pytest.mark.parametrize('path, says', [
    ('stalls', 'nothing came for 1 s at byte 65636'),
    ('never_answers', 'nothing came for 1 s at byte 0'),
    ('breaks_always', 'the connection breaks at byte 65536'),
    ('breaks_at_once', 'the connection breaks at byte 0'),
    ('sends_nothing', 'the server stops sending at byte 65536, 5 times'),
    ('whole_later', 'the server sends the whole file where bytes from 65536'),
    ('other_place', 'the server sends bytes from 65537 where those from 65536'),
    ('no_place', 'the server does not say which bytes it sends'),
    ('whole_too_large', 'larger than 1 MiB (--url-spool'),
    ('missing', 'status 404'),
    ('to_a_file', 'file'),
    ('round_and_round', '10'),
    ('no_http', 'HTTP/0.9'),
])
def test_a_bad_server_is_told(mkvx, server, expected, path, says):
    run = packets(mkvx, '--url-timeout', '1', '--url-spool', '1', server.url(path))
    assert run.code == 1 and set(run.out.splitlines()) < set(expected.splitlines())
    assert says in run.err and run.err.count('\n') <= 2 and '\x1b' not in run.err
    assert run.err.splitlines()[-1].startswith('mkvx: ' + server.url(path))


@pytest.mark.parametrize('path', ['promises_more', 'promises_less'])
def test_a_wrong_length_ends_the_file_and_no_more(mkvx, server, expected, path):
    run = packets(mkvx, '--all', '--url-block', '4', server.url(path))
    assert run.code in (0, 1) and set(run.out.splitlines()) <= set(expected.splitlines())
    assert len(server.seen) < 80


def test_https_says_what_is_wrong(mkvx, server):
    run = mkvx('info', server.url('good', 'https'))
    assert run.code == 1 and 'SSL' in run.err.upper() and run.err.count('\n') == 1


def test_a_stream_gets_no_index(mkvx, server):
    run = mkvx('--log', 'debug', 'index', server.url('good'))
    assert run.code == 0 and 'Sync index: 0 entries' in run.out and 'mkv http source' in run.err


def piped(binary, data, *args):
    return subprocess.run([binary, *map(str, args)], input=data, capture_output=True, timeout=60)


def test_standard_input(binary, sample, expected, tmp_path):
    run = piped(binary, sample.read_bytes(), 'packets', '--format', 'jsonl', '-')
    assert (run.returncode, run.stdout.decode(), run.stderr) == (0, expected, b'')
    assert piped(binary, sample.read_bytes(), 'bench', 'demux', '--once', '--json', '-').returncode == 0
    assert piped(binary, b'', 'info', '-').returncode == 1
    full = subprocess.run([binary, 'info', '-'], input=b'x', capture_output=True, env={'TMPDIR': str(tmp_path / 'no')})
    assert full.returncode == 1 and b'TMPDIR' in full.stderr


def test_faults_are_met_where_they_were_asked_for(mkvx, sample, expected):
    same = packets(mkvx, '--no-size', sample)
    assert (same.code, same.out) == (0, expected)
    payloads = [json.loads(line)['sha1'] for line in expected.splitlines()]
    units = []
    for args in (['--fail-at', '1'], ['--fail-at', '400'], ['--fail-at', '400+'], ['--short-reads=500']):
        runs = [packets(mkvx, *args, '--all', sample) for _ in range(2)]
        assert (runs[0].out, runs[0].err) == (runs[1].out, runs[1].err)
        units.append([unit['sha1'] for unit in runs[0].lines()])
        assert len(units[-1]) < len(payloads) and set(units[-1]) <= set(payloads)
    # One failed read costs less than it and all that follow.
    assert units[0] == [] and 0 < len(units[2]) < len(units[1])


def test_faults_reach_every_command(mkvx, sample, tmp_path):
    for command in (['info'], ['seek', '--to', '0'], ['late', '--track', '0', '--at', '0', '--by', '1us'], ['index'],
                    ['extract', '--track', '1', '-o', tmp_path / 'x'], ['decode'], ['cost'], ['sniff'],
                    ['bench', 'open']):
        assert mkvx(*command, sample).code == 0
        run = mkvx(*command, '--fail-at', '3+', sample)
        assert run.code == 1 or command == ['sniff'], command


def test_a_read_that_fails_costs_one_unit_at_most(mkvx, sample, expected):
    """What is told of the rest stays what it was. A fault behind the last read is none."""
    whole = [json.loads(line) for line in expected.splitlines()]
    opening = mkvx('bench', 'open', '--once', '--reads', '--json', sample).json()['reads']
    for number in range(opening + 10, opening + 60, 7):
        run = packets(mkvx, '--fail-at', number, '--all', sample)
        assert run.code == 0 and set(run.out.splitlines()) <= set(expected.splitlines())
        assert len(whole) - 1 <= len(run.lines()) <= len(whole), number
        assert (len(run.lines()) < len(whole)) == ('1 units could not be read' in run.err), number
    assert packets(mkvx, '--fail-at', 10 ** 9, sample).out == expected


def test_more_short_reads_leave_less(mkvx, sample):
    """Whatever is left stands in its order, and the number of a read that is none is refused."""
    whole = [unit['sha1'] for unit in packets(mkvx, '--all', sample).lines()]
    left = []
    for every in 400, 100, 50:
        units = iter(whole)
        left.append([unit['sha1'] for unit in packets(mkvx, '--all', f'--short-reads={every}', sample).lines()])
        assert all(unit in units for unit in left[-1])
    assert len(whole) > len(left[0]) > len(left[1]) > len(left[2]) > 0
    for bad in '--fail-at=0', '--fail-at=+', '--fail-at=1++', '--fail-at=-1', '--fail-at=99999999999999999999', '--short-reads=x', '--late=11s':
        run = mkvx('info', bad, sample)
        assert (run.code, run.out, run.err.count('\n')) == (2, '', 1), bad


@pytest.mark.parametrize('args', [['info', '--json'], ['info', '--rates', '--json'], ['seek', '--to', '5s', '--json'], ['index', '--json'], ['chapters'], ['sniff'], ['tree', '--all', '--format', 'jsonl']], ids=' '.join)
def test_a_size_that_is_not_known_changes_nothing(mkvx, sample, args):
    """But the whole file's bit rate, which is told by the size, and a read more to see that a byte is there."""
    known, unknown = mkvx(*args, sample), mkvx(*args, '--no-size', sample)
    without = [re.sub(r'"(reads|read_bytes)":\d+', '', run.out) for run in (known, unknown)]
    assert unknown.code == 0 and without[1] == re.sub(r'"bit_rate":\d+', '"bit_rate":0', without[0])
