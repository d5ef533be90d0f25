"""What the commands print: the stable formats, field by field, on files whose content is known byte by byte."""
import hashlib
import json
import re
import zlib

import pytest

import craft


def sha1(data):
    return hashlib.sha1(data).hexdigest()


HVCC = b'\1' + bytes(range(30))


@pytest.fixture
def film(write):
    """Video 7 (HEVC), audio 2 (MP3), an audio track that no device knows, and subtitles 4; in one cluster at 100 ms."""
    tracks = [craft.video(7, 'V_MPEGH/ISO/HEVC', craft.private(HVCC), craft.name(b'First\x1b[2J\xff!')),
              craft.audio(2, 'A_MPEG/L3', craft.private(b'\xab\xcd'), craft.text(0x22B59C, 'ger')),
              craft.audio(3, 'A_UNHEARD/OF'),
              craft.subtitle(4)]
    blocks = [craft.simple_block(7, 0, b'\0\0\0\3abc'), craft.simple_block(2, 0, b'sound'),
              craft.simple_block(3, 1, b'unheard'), craft.block_group(4, 10, b'Hello', 500),
              craft.simple_block(7, 40, b'\0\0\0\2de', key=False), craft.simple_block(2, 24, b'noise')]
    return write('film.mkv', craft.matroska(tracks, craft.cluster(100, *blocks), duration_ms=10000.0, cue_for=7))


def test_info_json(mkvx, film):
    run = mkvx('info', '--format', 'json', film)
    assert run.code == 0 and run.err == ''
    rate = film.stat().st_size * 8 // 10
    esds = run.json()['tracks'][1]['config']['esds']
    assert esds.startswith('03') and 'abcd' in esds
    flags = {'default': True, 'forced': False}
    assert run.json() == {'mkvx': 1, 'file': str(film), 'container_mime': 'video/x-matroska', 'tracks': [
        {'index': 0, 'number': 7, 'type': 'video', 'mime': 'video/hevc', 'width': 64, 'height': 48,
         'language': 'First\x1b[2J\ufffd', 'duration_us': 10000000, 'bit_rate': rate,
         'thumbnail_us': 2500000, 'config': {'hvcc': HVCC.hex()}, **flags,
         'display': {'width': 64, 'height': 48, 'unit': 'pixels'}},
        {'index': 1, 'number': 2, 'type': 'audio', 'mime': 'audio/mpeg', 'sample_rate': 48000, 'channels': 2,
         'language': 'ge', 'duration_us': 10000000, 'bit_rate': rate,
         'config': {'esds': esds}, **flags},
        {'index': 2, 'number': 4, 'type': 'subtitle', 'mime': 'text/utf-8', 'language': '', 'duration_us': 10000000, **flags},
    ]}
    assert run.out.count('\n') == 1


@pytest.mark.parametrize('date, is_told', [('2001-01-01 00:01:00', True), ('2001-01-01 00:01:01', False)])
def test_info_tells_what_the_file_says_and_what_a_pass_measures(mkvx, write, film, date, is_told):
    """Statistics count where they are this file's own."""
    def tag(name, value):
        return craft.element(0x67C8, craft.text(0x45A3, name) + craft.text(0x4487, value))
    shown = (craft.uint(0x54B0, 16) + craft.uint(0x54BA, 9) + craft.uint(0x54B2, 3) +
             craft.element(0x55B0, b''.join(craft.uint(id_, value) for id_, value in ((0x55B1, 9), (0x55BA, 16), (0x55BB, 9), (0x55B9, 1)))))
    track = craft.video(1, 'V_MPEG2', craft.uint(0x73C5, 77), craft.uint(0x88, 0), craft.uint(0x55AA, 1), craft.uint(0x23E383, 40000000), shown=shown)
    info = craft.text(0x7BA9, 'A film') + craft.text(0x5741, 'pen') + craft.text(0x4D80, 'press') + craft.element(0x4461, (60 * 10 ** 9).to_bytes(8, 'big'))
    tags = craft.element(0x1254C367, craft.element(0x7373, craft.element(0x63C0, craft.uint(0x63C5, 77)) + tag('BPS', '4321') +
                         tag('_STATISTICS_WRITING_APP', 'pen') + tag('_STATISTICS_WRITING_DATE_UTC', date)))
    media = craft.cluster(0, *(craft.simple_block(1, 40 * i, b'x' * 100) for i in range(50)))
    path = write('told.mkv', craft.matroska([track], media, led_to=[tags], info=info))
    told = mkvx('info', '--rates', '--json', path).json()
    assert [told[name] for name in ('title', 'writing_app', 'muxing_app')] == ['A film', 'pen', 'press']
    track = {name: value for name, value in told['tracks'][0].items() if name in (
        'default', 'forced', 'frame_rate', 'display', 'colour', 'statistics_bit_rate', 'payload_bytes', 'frames', 'measured_bit_rate')}
    assert track.pop('statistics_bit_rate', None) == (4321 if is_told else None)
    assert track == {'default': False, 'forced': True, 'frame_rate': 25, 'display': {'width': 16, 'height': 9, 'unit': 'aspect_ratio'},
                     'colour': {'primaries': 9, 'transfer': 16, 'matrix': 9, 'range': 1}, 'payload_bytes': 5000, 'frames': 50, 'measured_bit_rate': 20000}
    both = mkvx('info', path, film.parent / 'none.mkv', film)
    assert both.code == 1 and 'none.mkv' in both.err and both.out == f'{mkvx("info", path).out}\n{mkvx("info", film).out}'
    assert re.search(r'0 +forced +25.000 +16:9 +BT.2020, PQ, limited range' + (' +4.3 by its tags' if is_told else '$'), both.out, re.M)


def test_info_table_cannot_steer_a_terminal(mkvx, film):
    run = mkvx('info', film)
    assert run.code == 0
    assert '\x1b' not in run.out and 'First\ufffd[2J\ufffd' in run.out
    rows = run.out.splitlines()
    assert rows[0] == '%s: video/x-matroska' % film
    assert [row.split()[:4] for row in rows[2:5]] == [
        ['0', '7', 'video', 'video/hevc'], ['1', '2', 'audio', 'audio/mpeg'], ['2', '4', 'subtitle', 'text/utf-8']]
    assert '00:00:02.500' in rows[2] and 'hvcc 31 B' in rows[2]


START = b'\0\0\0\1'
UNITS = [
    {'track': 0, 'number': 7, 'time_us': 100000, 'sync': 1, 'size': 7, 'sha1': sha1(START + b'abc')},
    {'track': 0, 'number': 7, 'time_us': 140000, 'sync': 0, 'size': 6, 'sha1': sha1(START + b'de')},
    {'track': 1, 'number': 2, 'time_us': 100000, 'sync': 1, 'size': 5, 'sha1': sha1(b'sound')},
    {'track': 1, 'number': 2, 'time_us': 124000, 'sync': 1, 'size': 5, 'sha1': sha1(b'noise')},
]


def test_packets_formats(mkvx, film):
    lines = mkvx('packets', '--format', 'jsonl', film)
    assert lines.code == 0 and lines.lines() == UNITS
    assert list(lines.lines()[0]) == ['track', 'number', 'time_us', 'sync', 'size', 'sha1']

    assert mkvx('packets', '--format', 'json', film).json() == {'mkvx': 1, 'file': str(film), 'units': UNITS}

    table = mkvx('packets', '--format', 'csv', film).out.splitlines()
    assert table[0] == 'track,number,time_us,sync,size,sha1,end_us'
    assert table[1:] == [','.join(str(v) for v in unit.values()) + ',' for unit in UNITS]

    rows = [row.split() for row in mkvx('packets', film).out.splitlines()]
    assert rows[1:] == [[str(u['track']), '00:00:00.%d' % (u['time_us'] // 1000), *(['key'] if u['sync'] else []),
                         str(u['size']), u['sha1']] for u in UNITS]


def test_extraction_as_json(mkvx, film, tmp_path):
    out = tmp_path / 'film.mp3'
    assert mkvx('extract', '--track', '1', '-o', out, '--format', 'json', film).json() == {
        'mkvx': 1, 'file': str(film), 'track': 1, 'output': str(out), 'form': 'MP3', 'units': 2, 'unreadable': 0, 'bytes': 10}
    assert out.read_bytes() == b'soundnoise'


def test_packets_of_one_track_and_limit(mkvx, film):
    assert mkvx('packets', '--format', 'jsonl', '--track', '1', film).lines() == UNITS[2:]
    assert mkvx('packets', '--format', 'jsonl', '--limit', '1', film).lines() == UNITS[::2]


def subtitle_file(write, master):
    """Two subtitle tracks, 2 and 3, whose events lie around the master track's blocks."""
    tracks = [master(1, 'A_MPEG/L3'), craft.subtitle(2), craft.subtitle(3, 'S_TEXT/ASS')]
    blocks = [craft.block_group(3, 0, b'early', 10), craft.simple_block(1, 1, b'one'), craft.block_group(2, 2, b'two', 20),
              craft.simple_block(1, 3, b'three'), craft.block_group(3, 4, b'late', 30)]
    return write('subtitles.mkv', craft.matroska(tracks, craft.cluster(0, *blocks)))


def test_subtitles_come_with_their_end(mkvx, write):
    path = subtitle_file(write, craft.audio)
    for track, units in (1, [(2000, 22000, b'two')]), (2, [(0, 10000, b'early'), (4000, 34000, b'late')]):
        run = mkvx('packets', '--track', track, '--format', 'jsonl', path)
        assert run.lines() == [{'track': track, 'number': track + 1, 'time_us': at, 'sync': 1, 'size': len(event),
                                'sha1': sha1(event), 'end_us': end} for at, end, event in units]
        assert run.code == 0 and run.err == ''
    assert mkvx('packets', '--track', 2, '--limit', 1, '--format', 'csv', path).out.splitlines()[1:] == [
        '2,3,0,1,5,%s,10000' % sha1(b'early')]


def test_subtitles_without_their_master(mkvx, write):
    """An unknown video codec makes its track the master all the same."""
    run = mkvx('packets', '--format', 'jsonl', subtitle_file(write, lambda no, codec: craft.video(no, 'V_UNSEEN')))
    assert run.code == 0 and run.out == ''
    assert run.err.count('no subtitle can arrive') == 2


def test_all_goes_on_past_what_cannot_be_read(mkvx, write):
    bad_lace = craft.bad_laces(1, 1)
    blocks = [craft.simple_block(1, 0, b'good'), bad_lace, bad_lace, craft.simple_block(1, 2, b'after'), bad_lace]
    path = write('bad.mka', craft.matroska([craft.audio(1, 'A_MPEG/L3', craft.stripped(b'>'))], craft.cluster(0, *blocks)))
    plain = mkvx('packets', '--format', 'jsonl', path)
    assert [unit['sha1'] for unit in plain.lines()] == [sha1(b'>good')] and plain.code == 0
    everything = mkvx('packets', '--all', '--format', 'jsonl', path)
    assert [unit['sha1'] for unit in everything.lines()] == [sha1(b'>good'), sha1(b'>after')] and everything.code == 0
    assert '3 units could not be read' in everything.err


def test_stop_at_an_unreadable_unit_is_told(mkvx, write):
    bad_lace = craft.bad_laces(1, 1)
    blocks = [craft.simple_block(1, 0, b'good'), bad_lace, craft.simple_block(1, 2, b'after')]
    run = mkvx('packets', write('bad.mka', craft.matroska([craft.audio(1, 'A_MPEG/L3', craft.stripped(b'>'))], craft.cluster(0, *blocks))))
    assert run.code == 0 and '--all' in run.err


def test_no_track_offered(mkvx, write):
    path = write('unknown.mkv', craft.matroska([craft.video(1, 'V_UNSEEN'), craft.audio(2, 'A_UNHEARD')]))
    run = mkvx('info', '--format', 'json', path)
    assert run.code == 0 and run.json() == {'mkvx': 1, 'file': str(path), 'container_mime': 'video/x-matroska', 'tracks': []}
    assert 'none of its 2 tracks is offered' in run.err


def test_sniff(mkvx, write, film):
    webm = write('a.webm', craft.matroska([], doctype='webm'))
    other = write('b.wav', b'RIFF')
    run = mkvx('sniff', '--format', 'json', film, webm, other, '/no/such/file')
    assert run.code == 1 and run.err.count('\n') == 2 and str(other) in run.err and '/no/such/file' in run.err
    mime = 'video/x-matroska_ext'
    assert run.lines() == [{'mkvx': 1, 'file': str(film), 'claimed': True, 'mime': mime, 'confidence': 0.91},
                           {'mkvx': 1, 'file': str(webm), 'claimed': True, 'mime': mime, 'confidence': 0.5},
                           {'mkvx': 1, 'file': str(other), 'claimed': False}]
    table = mkvx('sniff', webm)
    assert table.code == 0 and table.out.splitlines()[1].split() == [mime, '0.50', str(webm)]


def test_log_is_shown_once_and_only_on_request(mkvx, film):
    assert mkvx('info', film).err == ''
    records = mkvx('--log', 'debug', 'info', film).err.splitlines()
    assert records.count('D/MatroskaExtExtractor: addTracks(mime): video/hevc') == 1
    assert records.count('D/MatroskaExtExtractor: addTracks(mime): audio/mpeg') == 1
    assert mkvx('--log', 'warn', 'info', film).err == ''


@pytest.mark.parametrize('source', ['mem', 'window', 'pread'])
def test_bench_demux_counts_every_track(mkvx, film, source):
    run = mkvx('bench', 'demux', film, '--source', source, '--crc', '--once', '--reads')
    line = json.loads(run.out.splitlines()[-1])
    assert run.code == 0 and line['ok'] and line['ms'] >= 0 and line['runs'] == 1 and line['reads'] > 0
    expected = [[b'\0\0\0\3abc', b'\0\0\0\2de'], [b'sound', b'noise'], [b'unheard'], [b'Hello']]
    keys = [1, 2, 1, 1]
    assert line['tracks'] == [[len(units), len(b''.join(units)), key, '%08x' % zlib.crc32(b''.join(units))]
                              for units, key in zip(expected, keys)]
    assert line['count'] == 6 and line['bytes'] == sum(t[1] for t in line['tracks'])
    assert line['pts_sum_us'] == (100 + 140 + 100 + 124 + 101 + 110) * 1000


def test_bench_open_and_seek(mkvx, sample):
    opened = mkvx('bench', 'open', sample, '--json').json()
    assert opened['count'] == 1 and opened['ok'] and opened['rss_kb'] >= opened['rss0_kb'] > 0
    seeks = mkvx('bench', 'seek', sample, '--once', '--json').json()
    assert seeks['count'] == 200 == seeks['keys'] and seeks['tracks'][0][0] == 200


HOSTILE = 'T\x1b]0;x\x07\r\n\x9b2J\u202egnp.<b>\t'


def test_texts_of_info_cannot_steer_a_terminal(mkvx, write):
    """JSON has them as they are; the table has each on its line."""
    names = {'Title': (0x7BA9, 'title'), 'Written by': (0x5741, 'writing_app'), 'Muxer': (0x4D80, 'muxing_app')}
    info = b''.join(craft.text(id_, HOSTILE + key) for id_, key in names.values())
    path = write('steer.mkv', craft.matroska([craft.video(1, 'V_MPEG2')], craft.cluster(0, craft.simple_block(1, 0, b'x')), info=info))
    raw = mkvx('info', '--json', path)
    assert {key: raw.json()[key] for _, key in names.values()} == {key: HOSTILE + key for _, key in names.values()}
    assert raw.out.count('\n') == 1 and not re.search(r'[\x00-\x09\x0b-\x1f\x7f]', raw.out)
    shown = mkvx('info', path).out
    assert not re.search(r'[\x00-\x09\x0b-\x1f\x7f-\x9f\u202a-\u202e]', shown)
    for label, (_, key) in names.items():
        assert re.search(f'^{label}: T.*gnp.*{key}$', shown, re.M), label


@pytest.mark.parametrize('unit, told, shown', [(0, 'pixels', '30x20'), (1, 'centimetres', '30x20 cm'), (2, 'inches', '30x20 in'),
                                               (3, 'aspect_ratio', '30:20'), (4, 'unknown', None)])
def test_display_units(mkvx, write, unit, told, shown):
    size = craft.uint(0x54B0, 30) + craft.uint(0x54BA, 20) + craft.uint(0x54B2, unit)
    path = write('shown.mkv', craft.matroska([craft.video(1, 'V_MPEG2', shown=size)], craft.cluster(0, craft.simple_block(1, 0, b'x'))))
    display = mkvx('info', '--json', path).json()['tracks'][0]['display']
    assert display['unit'] == told and (shown is None or (display['width'], display['height']) == (30, 20))
    assert shown is None or re.search(re.escape(shown) + '$', mkvx('info', path).out, re.M)


def test_rates_are_of_the_blocks_of_each_track(mkvx, sample):
    """The stored bytes, which differ from the delivered ones by no more than what stands in for lengths: nothing, in the sample."""
    units = mkvx('packets', '--format', 'jsonl', sample).lines()
    plain, rated = (mkvx('info', *more, '--json', sample).json()['tracks'] for more in ([], ['--rates']))
    for before, track in zip(plain, rated):
        own = [unit for unit in units if unit['track'] == track['index']]
        assert (track['frames'], track['payload_bytes']) == (len(own), sum(unit['size'] for unit in own))
        span = max(unit.get('end_us', unit['time_us']) for unit in own) - own[0]['time_us']
        assert track['measured_bit_rate'] == pytest.approx(track['payload_bytes'] * 8e6 / span, rel=0.01)
        assert {name: value for name, value in track.items() if name in before} == before
        assert not {'frames', 'payload_bytes', 'measured_bit_rate', 'measured_frame_rate'} & set(before)


@pytest.mark.parametrize('args, chosen', [
    (['--track', '#2', '--limit', '3'], [(1, 3)]), (['--limit', '4'], [(0, 4), (1, 4), (2, 3)]), (['--limit', '201'], [(0, 200), (1, 201), (2, 3)]),
    (['--track', '2', '--all', '--limit', '2'], [(2, 2)]), (['--limit', '18446744073709551615', '--track', '0'], [(0, 200)]),
], ids=lambda value: ' '.join(map(str, value)))
def test_packets_are_the_first_of_each_chosen_track(mkvx, sample, args, chosen):
    whole = mkvx('packets', '--format', 'jsonl', sample).lines()
    expected = [unit for track, count in chosen for unit in [u for u in whole if u['track'] == track][:count]]
    assert len(expected) == sum(count for _, count in chosen)
    for form, units in ('jsonl', lambda run: run.lines()), ('json', lambda run: run.json()['units']):
        assert units(mkvx('packets', *args, '--format', form, sample)) == expected
    assert len(mkvx('packets', *args, sample).out.splitlines()) == 1 + len(expected)


def test_sniff_lists_what_can_be_read(mkvx, write, sample, tmp_path):
    """In the order of the command line, the same file as often as it is named."""
    webm, other = write('a b.webm', craft.matroska([], doctype='webm')), write('c\x1b[1m.wav', b'RIFF')
    run = mkvx('sniff', sample, other, '/no/such', webm, tmp_path, sample)
    assert run.code == 1 and '\x1b' not in run.out + run.err
    assert [row.split(maxsplit=2)[:2] for row in run.out.splitlines()[1:]] == [
        ['video/x-matroska_ext', '0.91'], ['not', 'claimed'], ['video/x-matroska_ext', '0.50'], ['video/x-matroska_ext', '0.91']]
    assert [re.split(': (?=[A-Zi])', line)[-1].split(' (')[0] for line in run.err.splitlines()] == [
        'is no Matroska or WebM file', 'No such file or directory', 'Is a directory']
    assert mkvx('sniff', webm, sample).code == 0


def test_aac_library_is_the_one_that_was_asked_for(mkvx, sample):
    """They decode the same samples, and not to the same last bits."""
    heard = {name: mkvx('decode', '--track', '#2', *asked, '--json', sample).json()['tracks'][0]
             for name, asked in (('unless', []), ('device', ['--aac', 'device']), ('ffmpeg', ['--aac', 'ffmpeg']))}
    assert heard['unless'] == heard['device'] and (heard['device']['decoder'], heard['ffmpeg']['decoder']) == ('libfdk-aac', 'aac')
    assert heard['device']['samples'] == heard['ffmpeg']['samples'] and heard['device']['sha1'] != heard['ffmpeg']['sha1']
