"""Every codec that the muxers can store: which are offered, and that their units arrive whole."""
import ebml
import pytest
import rules

# Streams that go into one file -> the CodecIDs that are offered of it.
OFFERED = [
    (['h264', 'aac'], ['V_MPEG4/ISO/AVC', 'A_AAC']),
    (['hevc', 'mp3'], ['V_MPEGH/ISO/HEVC', 'A_MPEG/L3']),
    (['mpeg4', 'ac3'], ['V_MPEG4/ISO/ASP', 'A_AC3']),
    (['mpeg2', 'mp2'], ['V_MPEG2', 'A_MPEG/L2']),
    (['mpeg1', 'dts'], ['V_MPEG1', 'A_DTS']),
    (['flac', 'pcm_s16le', 'pcm_s24le'], ['A_FLAC', 'A_PCM/INT/LIT', 'A_PCM/INT/LIT']),
    (['vorbis'], ['A_VORBIS']),
]
FFMPEG_ONLY = [
    (['vp9', 'vorbis'], ['V_VP9', 'A_VORBIS']),
    (['pcm_s16be'], ['A_PCM/INT/BIG']),
    (['wmv2', 'pcm_alaw', 'pcm_mulaw'], ['V_MS/VFW/FOURCC', 'A_MS/ACM', 'A_MS/ACM']),
    (['flv1', 'adpcm_ms', 'adpcm_ima'], ['V_MS/VFW/FOURCC', 'A_MS/ACM', 'A_MS/ACM']),
    (['msmpeg4v2', 'wmav2'], ['V_MS/VFW/FOURCC', 'A_MS/ACM']),
    # What no decoder of the device takes is absent, and the tracks behind it move up.
    (['opus', 'eac3', 'pcm_f32le', 'alac', 'wavpack', 'tta', 'mp3'], ['A_MPEG/L3']),
    (['av1', 'theora', 'mjpeg', 'vp8', 'h264', 'opus', 'aac'], ['V_MPEG4/ISO/AVC', 'A_AAC']),
]


def offered_ids(doc):
    return [t.codec_id.split('/LC')[0] for t in rules.offered(doc)]


def names(table):
    return ['+'.join(streams) for streams, _ in table]


@pytest.mark.parametrize('streams, ids', OFFERED + FFMPEG_ONLY, ids=names(OFFERED + FFMPEG_ONLY))
def test_muxed_by_ffmpeg(mux, check, streams, ids):
    doc = check(mux.ffmpeg('f-%s.mkv' % '-'.join(streams), streams))
    assert offered_ids(doc) == ids


@pytest.mark.parametrize('streams, ids', OFFERED, ids=names(OFFERED))
def test_muxed_by_mkvmerge(mux, check, streams, ids):
    doc = check(mux.mkvmerge('m-%s.mkv' % '-'.join(streams), streams))
    assert [i.replace('V_MPEG4/ISO/ASP', 'V_MS/VFW/FOURCC') for i in ids] == [
        i.replace('V_MPEG4/ISO/ASP', 'V_MS/VFW/FOURCC') for i in offered_ids(doc)]


def test_webm(mux, check):
    doc = check(mux.ffmpeg('vp9-vorbis.webm', ['vp9', 'vorbis'], '-f', 'webm'))
    assert doc.doc_type == 'webm'


def test_webm_of_codecs_that_are_not_offered(mux, check):
    doc = check(mux.ffmpeg('vp8-opus.webm', ['vp8', 'opus']))
    assert len(doc.tracks) == 2 and not rules.offered(doc)


def test_mpeg4_headers_in_the_first_frame_become_configuration(mux, check):
    doc = check(mux.mkvmerge('vfw-xvid.mkv', ['xvid']))
    track = doc.tracks[0]
    first = next(b for b in doc.blocks if b.track == track.number).frames[0]
    assert track.codec_id == 'V_MS/VFW/FOURCC' and rules.m4v_headers(first) > 0


def test_h264_with_start_codes_in_a_bitmap_track(mux, check):
    mux.run('ffmpeg', '-v', 'error', '-y', '-i', mux.stream('h264_start_codes'), '-c', 'copy', '-vtag', 'H264',
            mux.path('stream.avi'))
    doc = check(mux.mkvmerge('vfw-h264.mkv', [mux.path('stream.avi')], '--engage', 'allow_avc_in_vfw_mode'))
    assert doc.tracks[0].codec_id == 'V_MS/VFW/FOURCC'
    assert doc.blocks[0].frames[0].startswith(b'\0\0\0\1\x67')


def test_single_audio_track_makes_an_audio_file(mux, check):
    doc = check(mux.mkvmerge('single.mka', ['mp3']))
    assert rules.container_mime(doc) == 'audio/x-matroska' and doc.tracks[0].type == ebml.AUDIO
