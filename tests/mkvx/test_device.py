"""mkvx check --device: a device's codec list, its limits, and what is no codec list."""
import json
import re
from pathlib import Path

import jsonschema
import pytest

import craft

SCHEMA = json.loads((Path(__file__).parents[2] / 'docs/schemas/profiles.schema.json').read_text())

AVC = '<MediaCodec name="avc" type="video/avc">%s</MediaCodec>'
AAC = '<MediaCodec name="aac"><Type name="audio/mp4a-latm">%s</Type></MediaCodec>'
ALL = AVC % '' + AAC % ''


def listed(decoders, extra=''):
    return '<MediaCodecs>%s<Decoders>%s</Decoders></MediaCodecs>' % (extra, decoders)


def limit(name, **attributes):
    return '<Limit name="%s" %s/>' % (name, ' '.join('%s="%s"' % item for item in attributes.items()))


@pytest.fixture
def judged(mkvx, sample, tmp_path):
    """judged(list, profiles) -> {kind: decoder, or (code, sentence)} of the sample: 320x180 at 25 fps, High 1.2; 44100 Hz, 2 channels."""
    def judge(codecs, profiles=None):
        (tmp_path / 'media_codecs.xml').write_text(codecs)
        options = ['--device', tmp_path / 'media_codecs.xml']
        if profiles is not None:
            jsonschema.validate({'decoders': profiles}, SCHEMA)
            (tmp_path / 'profiles.json').write_text(json.dumps({'decoders': profiles}))
            options += ['--profiles', tmp_path / 'profiles.json']
        tracks = mkvx('check', *options, '--format', 'jsonl', sample).json()['tracks']
        found = {t['kind']: [(f['code'], f['sentence']) for f in t['findings'] if f['weight'] == 'mute'] for t in tracks}
        assert all(('decoder' in t) != bool(found[t['kind']]) for t in tracks[:2])
        return {t['kind']: t.get('decoder') or found[t['kind']][0] for t in tracks[:2]}
    return judge


LIMITS = [
    ('video', limit('size', min='2x2', max='320x180'), None), ('video', limit('size', max='319x180'), '320x180 is more than 319x180'),
    ('video', limit('size', min='2x240', max='9x9'), 'is more than 9x9'), ('video', limit('size', min='321x2'), '320x180 is less than 321x2'),
    ('video', limit('alignment', value='2x4'), None), ('video', limit('alignment', value='16x16'), '320x180 is no multiple of 16x16'),
    ('video', limit('blocks', range='1-240'), None), ('video', limit('block-count', max='239'), '240 blocks of 16x16, the most is 239'),
    ('video', limit('block-size', value='8x8') + limit('blocks', range='1-919'), '920 blocks of 8x8, the most is 919'),
    ('video', limit('blocks-per-second', min='1', max='6000'), None),
    ('video', limit('blocks-per-second', range='1-5999'), '6000 blocks of 16x16 a second (320x180 at 25 fps), the most is 5999'),
    ('video', limit('frame-rate', range='1-24'), '25 fps, the most is 24'), ('video', limit('bitrate', range='1-1000'), 'bits a second, the most is 1000'),
    ('video', limit('bitrate', range='900000-900001'), None), ('video', limit('concurrent-instances', max='x'), None),
    ('audio', limit('channel-count', max='2'), None), ('audio', limit('channel-count', max='1'), '2 channels, the most is 1'),
    ('audio', limit('sample-rate', ranges='8000, 44100'), None),
    ('audio', limit('sample-rate', ranges='8000,22050-32000'), '44100 Hz is none of its sample rates (8000, 22050-32000)'),
    ('video', limit('size', min='320x180', max='320x180'), None), ('video', limit('size', max='320x179'), '320x180 is more than 320x179'),
    ('video', limit('blocks', range='240-241'), None), ('video', limit('blocks', range='241-999'), '240 blocks of 16x16, the least is 241'),
    ('video', limit('frame-rate', range='25-25'), None), ('video', limit('frame-rate', range='26-60'), None),
    ('video', limit('alignment', value='64x4'), None), ('video', limit('alignment', value='64x8'), '320x180 is no multiple of 64x8'),
    ('audio', limit('channel-count', range='2-2'), None), ('audio', limit('channel-count', range='3-8'), '2 channels, the least is 3'),
    ('audio', limit('sample-rate', ranges='8000-44100'), None), ('audio', limit('sample-rate', ranges='44101-48000'), '44100 Hz is none of'),
    ('audio', limit('sample-rate', ranges='8000-44099'), '44100 Hz is none of its sample rates (8000-44099)'),
]


@pytest.mark.parametrize('kind, limits, broken', LIMITS)
def test_limits(judged, kind, limits, broken):
    found = judged(listed(AVC % (limits if kind == 'video' else '') + AAC % (limits if kind == 'audio' else '')))
    if broken is None:
        assert found == {'video': 'avc', 'audio': 'aac'}
    else:
        code, sentence = found[kind]
        assert code == 'decoder_limit' and broken in sentence


def test_order_and_mime_types(judged):
    small = AVC.replace('"avc"', '"small"') % limit('size', max='64x64')
    assert judged(listed(small + ALL))['video'] == 'avc'
    assert judged(listed(small + AAC % ''))['video'][1].startswith('no decoder of the device takes it: small: 320x180')
    assert judged(listed(AAC % ''))['video'] == ('no_decoder', "the device's list has no decoder for video/avc")
    assert judged(listed(AAC % '').replace('</Decoders>', '</Decoders><Encoders>%s</Encoders>' % (AVC % '')))['video'][0] == 'no_decoder'


@pytest.mark.parametrize('entry, broken', [
    ({'profiles': [{'name': 'High'}]}, None), ({'profiles': [{'name': 'High', 'level': '1.2'}], 'bits': 8, 'chroma': ['4:2:0']}, None),
    ({'profiles': [{'name': 'Main'}]}, 'the profile High is not among Main'), ({'chroma': ['4:4:4']}, 'the chroma format 4:2:0 is not 4:4:4'),
    ({'profiles': [{'name': 'High', 'level': '1.1'}]}, 'level 1.2 is above 1.1'), ({'bits': 7}, '8 bits are more than 7'),
])
def test_profiles(judged, entry, broken):
    for name in ('video/avc', 'avc'):
        found = judged(listed(ALL), {'video/avc': {'bits': 1}, name: entry})['video']
        assert found == 'avc' if broken is None else found == ('decoder_profile', 'no decoder of the device takes it: avc: ' + broken)


def test_without_a_list_it_is_the_software_of_the_era(mkvx, sample, tmp_path):
    (tmp_path / 'p').write_text('{"decoders": {"video/avc": {"profiles": [{"name": "Main"}]}}}')
    checked = mkvx('check', '--profiles', tmp_path / 'p', '--format', 'jsonl', sample).json()
    assert checked['verdict'] == 'plays' and 'decoder' not in checked['tracks'][0]
    assert [(f['code'], f['weight']) for f in checked['tracks'][0]['findings']] == [('decoder_profile', 'note')]


def test_bit_rate_at_the_limit(judged):
    """What the refusal tells is the most that is needed."""
    said = judged(listed(AVC % limit('bitrate', range='1-2') + AAC % ''))['video'][1]
    rate = int(re.search(r'(\d+) bits a second', said)[1])
    for most, decoder in (rate, 'avc'), (rate - 1, 'small'):
        small = AVC.replace('"avc"', '"small"') % ''
        assert judged(listed(AVC % limit('bitrate', range='1-%d' % most) + small + AAC % ''))['video'] == decoder


def test_decoders_beyond_the_fourth_are_counted(judged):
    for count, end in (4, 'd4: 320x180 is more than 9x9'), (6, 'd4: 320x180 is more than 9x9; and 2 more'):
        small = [AVC.replace('"avc"', '"d%d"' % i) % limit('size', max='9x9') for i in range(1, count + 1)]
        assert judged(listed(''.join(small)))['video'][1].endswith(end)


@pytest.mark.parametrize('codec, mime, code, ending', [('A_DTS', 'audio/dts', 'vendor_mime', ', a MIME type that only some vendors have'),
                                                       ('A_AC3', 'audio/ac3', 'no_decoder', '')])
def test_types_of_no_software_decoder(mkvx, write, tmp_path, codec, mime, code, ending):
    """A note of the era, which a device's list makes grave or settles."""
    blocks = craft.cluster(0, craft.simple_block(1, 0, b'\x0b\x77' + bytes(9)))
    path = write('sound.mka', craft.matroska([craft.audio(1, codec)], blocks, cue_for=1))

    def said(*options):
        checked = mkvx('check', '--format', 'jsonl', *options, path).json()
        return checked['verdict'], [(f['code'], f['weight']) for f in checked['tracks'][0]['findings']], checked['reason']
    assert said() == ('plays', [(code, 'note')], '')
    device = tmp_path / 'media_codecs.xml'
    device.write_text(listed(ALL))
    verdict, found, reason = said('--device', device)
    assert (verdict, found) == ('nothing_plays', [('no_decoder', 'mute')]) and reason.endswith('no decoder for ' + mime + ending)
    device.write_text(listed('<MediaCodec name="own" type="%s"/>' % mime))
    assert said('--device', device) == ('plays', [], '')


def test_profiles_take_the_place_of_the_table(mkvx, write, tmp_path):
    """The table has no entry for AC-3; an empty one takes all, and one for another type changes nothing."""
    block = craft.cluster(0, craft.simple_block(1, 0, b'\x0b\x77' + bytes(9)))
    path = write('sound.mka', craft.matroska([craft.audio(1, 'A_AC3')], block, cue_for=1))
    for entries, codes in ({'audio/ac3': {}}, []), ({'video/avc': {}}, ['no_decoder']):
        (tmp_path / 'p').write_text(json.dumps({'decoders': entries}))
        checked = mkvx('check', '--profiles', tmp_path / 'p', '--format', 'jsonl', path).json()
        assert [f['code'] for f in checked['tracks'][0]['findings']] == codes


LAUGHS = '<!DOCTYPE x [<!ENTITY a "ha">%s]>' % ''.join('<!ENTITY %s "%s">' % (c, '&%s;' % chr(ord(c) - 1) * 20) for c in 'bcdefgh')


@pytest.mark.parametrize('codecs, said', [
    (None, 'cannot be read: No such file'), ('', 'is no XML'), ('<MediaCodecs>', 'is no XML'), ('<a/>', 'its root is <a> and not <MediaCodecs>'),
    ('<MediaCodecs/>', 'names no decoder'), (LAUGHS + listed(AVC % '&h;'), 'declares a document type'),
    (listed(ALL, '<Include href="missing.xml"/>'), 'missing.xml: cannot be read'),
    (listed(ALL, '<Include href="media_codecs.xml"/>'), 'includes itself'), (listed(ALL, '<Include href="a.xml"/>'), 'a.xml -> '),
    (listed(ALL, '<Include href="b.xml"/>' * 65), 'the 64th file'), (listed(ALL, '<Include href="../x"/>'), 'no name of a file beside it'),
    (listed(AVC % limit('size', max='1' * 40 + 'x1')), 'which is not a size such as 1920x1088'),
    (listed(AVC % limit('size', max='-1x1')), 'which is not a size'), (listed(AVC % limit('alignment', value='0x2')), 'a size above 0'),
    (listed(AVC % limit('blocks', range='9-1')), 'which is not a range'), (listed(AVC % limit('bitrate', range='1-1e99')), 'which is not a range'),
    (listed(AVC % limit('bitrate')), 'has neither range nor max'), (listed(AVC % limit('sample-rate', ranges='8000,,1')), 'which is not a list'),
    (listed('<MediaCodec type="video/avc"/>'), 'without a name'), ('<a>' * 100000, 'is no XML'), (' ' * (1 << 20) + ' ', 'too many for a codec list'),
], ids=lambda text: str(text)[-40:])
def test_what_is_no_codec_list_is_said(mkvx, sample, tmp_path, codecs, said):
    (tmp_path / 'a.xml').write_text(listed(ALL, '<Include href="media_codecs.xml"/>'))
    (tmp_path / 'b.xml').write_text(listed(ALL))
    if codecs is not None:
        (tmp_path / 'media_codecs.xml').write_text(codecs)
    run = mkvx('check', '--device', tmp_path / 'media_codecs.xml', sample)
    assert (run.code, run.out) == (1, '') and said in run.err and run.err.count('\n') == 1


@pytest.mark.parametrize('profiles, said', [
    ('', 'is no table of profiles'), ('[]', 'is no table'), ('{"decoders": {"a": {"bits": "x"}}}', 'is no table'),
    ('{"decoders": {"a": {"profile": []}}}', 'a member "profile", which means nothing'), ('[' * 100000, 'is no table'),
], ids=lambda text: str(text)[-40:])
def test_what_is_no_table_of_profiles_is_said(mkvx, sample, tmp_path, profiles, said):
    (tmp_path / 'p').write_text(profiles)
    run = mkvx('check', '--profiles', tmp_path / 'p', sample)
    assert (run.code, run.out) == (1, '') and said in run.err and run.err.count('\n') == 1
