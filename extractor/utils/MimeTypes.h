// The MIME types by which the extractor and its framework name containers and codecs.
//
// 103 variables that the plug-in exports: each points at its own text for the life of the library, nothing
// here frees or changes one. They are pointers that can be written, because that is how the platform's own
// <media/stagefright/MediaDefs.h> declares the names that both have in common; the two headers may be
// included together, in either order. Several names share one text, so compare texts and not pointers.
#pragma once

#pragma GCC visibility push(default)

namespace android {

extern const char* MEDIA_MIMETYPE_VIDEO_AVC;
extern const char* MEDIA_MIMETYPE_VIDEO_DIVX;
extern const char* MEDIA_MIMETYPE_VIDEO_DIVX311;
extern const char* MEDIA_MIMETYPE_VIDEO_DIVX4;
extern const char* MEDIA_MIMETYPE_VIDEO_FFMPEG;
extern const char* MEDIA_MIMETYPE_VIDEO_FLV1;
extern const char* MEDIA_MIMETYPE_VIDEO_H263;
extern const char* MEDIA_MIMETYPE_VIDEO_HEVC;
extern const char* MEDIA_MIMETYPE_VIDEO_MIX;
extern const char* MEDIA_MIMETYPE_VIDEO_MJPEG;
extern const char* MEDIA_MIMETYPE_VIDEO_MPEG1;
extern const char* MEDIA_MIMETYPE_VIDEO_MPEG2;
extern const char* MEDIA_MIMETYPE_VIDEO_MPEG4;
extern const char* MEDIA_MIMETYPE_VIDEO_RAW;
extern const char* MEDIA_MIMETYPE_VIDEO_REALVIDEO;
extern const char* MEDIA_MIMETYPE_VIDEO_RV;
extern const char* MEDIA_MIMETYPE_VIDEO_VC1;
extern const char* MEDIA_MIMETYPE_VIDEO_VP8;
extern const char* MEDIA_MIMETYPE_VIDEO_VP9;
extern const char* MEDIA_MIMETYPE_VIDEO_WMV;

extern const char* MEDIA_MIMETYPE_AUDIO_AAC;
extern const char* MEDIA_MIMETYPE_AUDIO_AAC_ADTS;
extern const char* MEDIA_MIMETYPE_AUDIO_AC3;
extern const char* MEDIA_MIMETYPE_AUDIO_ADPCM;
extern const char* MEDIA_MIMETYPE_AUDIO_ALAC;
extern const char* MEDIA_MIMETYPE_AUDIO_AMR_NB;
extern const char* MEDIA_MIMETYPE_AUDIO_AMR_WB;
extern const char* MEDIA_MIMETYPE_AUDIO_APE;
extern const char* MEDIA_MIMETYPE_AUDIO_DSD;
extern const char* MEDIA_MIMETYPE_AUDIO_DTS;
extern const char* MEDIA_MIMETYPE_AUDIO_EXT_AC3;
extern const char* MEDIA_MIMETYPE_AUDIO_EXT_APE;
extern const char* MEDIA_MIMETYPE_AUDIO_EXT_DTS;
extern const char* MEDIA_MIMETYPE_AUDIO_EXT_FLAC;
extern const char* MEDIA_MIMETYPE_AUDIO_EXT_MP3;
extern const char* MEDIA_MIMETYPE_AUDIO_FFMPEG;
extern const char* MEDIA_MIMETYPE_AUDIO_FLAC;
extern const char* MEDIA_MIMETYPE_AUDIO_G711_ALAW;
extern const char* MEDIA_MIMETYPE_AUDIO_G711_MLAW;
extern const char* MEDIA_MIMETYPE_AUDIO_LPCM;
extern const char* MEDIA_MIMETYPE_AUDIO_MPEG;
extern const char* MEDIA_MIMETYPE_AUDIO_MPEG_LAYER_I;
extern const char* MEDIA_MIMETYPE_AUDIO_MPEG_LAYER_II;
extern const char* MEDIA_MIMETYPE_AUDIO_MSGSM;
extern const char* MEDIA_MIMETYPE_AUDIO_PCM;
extern const char* MEDIA_MIMETYPE_AUDIO_QCELP;
extern const char* MEDIA_MIMETYPE_AUDIO_RA;
extern const char* MEDIA_MIMETYPE_AUDIO_RAW;
extern const char* MEDIA_MIMETYPE_AUDIO_REALAUDIO;
extern const char* MEDIA_MIMETYPE_AUDIO_VORBIS;
extern const char* MEDIA_MIMETYPE_AUDIO_WMA;

extern const char* MEDIA_MIMETYPE_IMAGE_JPEG;

extern const char* MEDIA_MIMETYPE_CONTAINER_AAC;
extern const char* MEDIA_MIMETYPE_CONTAINER_APE;
extern const char* MEDIA_MIMETYPE_CONTAINER_ASF;
extern const char* MEDIA_MIMETYPE_CONTAINER_AVI;
extern const char* MEDIA_MIMETYPE_CONTAINER_DIVX;
extern const char* MEDIA_MIMETYPE_CONTAINER_DTS;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXI_AIFF;  // Deliberate: the name is spelt so in the interface.
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_ASF;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_AVI;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_DSDIFF;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_DSF;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_MPEG;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_MPEG2TS;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_MPEG4;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_REALAUDIO;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_REALVIDEO;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_SACDISO;
extern const char* MEDIA_MIMETYPE_CONTAINER_EXT_WAV;
extern const char* MEDIA_MIMETYPE_CONTAINER_FFMPEG;
extern const char* MEDIA_MIMETYPE_CONTAINER_FLAC;
extern const char* MEDIA_MIMETYPE_CONTAINER_FLV;
extern const char* MEDIA_MIMETYPE_CONTAINER_HEVC;
extern const char* MEDIA_MIMETYPE_CONTAINER_MATROSKA;
extern const char* MEDIA_MIMETYPE_CONTAINER_MATROSKA_EXT;
extern const char* MEDIA_MIMETYPE_CONTAINER_MKA;
extern const char* MEDIA_MIMETYPE_CONTAINER_MOV;
extern const char* MEDIA_MIMETYPE_CONTAINER_MP2;
extern const char* MEDIA_MIMETYPE_CONTAINER_MPEG;
extern const char* MEDIA_MIMETYPE_CONTAINER_MPEG2PS;
extern const char* MEDIA_MIMETYPE_CONTAINER_MPEG2TS;
extern const char* MEDIA_MIMETYPE_CONTAINER_MPEG4;
extern const char* MEDIA_MIMETYPE_CONTAINER_MPG;
extern const char* MEDIA_MIMETYPE_CONTAINER_OGG;
extern const char* MEDIA_MIMETYPE_CONTAINER_RA;
extern const char* MEDIA_MIMETYPE_CONTAINER_REALAUDIO;
extern const char* MEDIA_MIMETYPE_CONTAINER_REALVIDEO;
extern const char* MEDIA_MIMETYPE_CONTAINER_RM;
extern const char* MEDIA_MIMETYPE_CONTAINER_TS;
extern const char* MEDIA_MIMETYPE_CONTAINER_VC1;
extern const char* MEDIA_MIMETYPE_CONTAINER_WAV;
extern const char* MEDIA_MIMETYPE_CONTAINER_WEBM;
extern const char* MEDIA_MIMETYPE_CONTAINER_WMA;
extern const char* MEDIA_MIMETYPE_CONTAINER_WMV;
extern const char* MEDIA_MIMETYPE_CONTAINER_WVM;

extern const char* MEDIA_MIMETYPE_TEXT_3GPP;
extern const char* MEDIA_MIMETYPE_TEXT_SUBASS;
extern const char* MEDIA_MIMETYPE_TEXT_SUBRIP;
extern const char* MEDIA_MIMETYPE_TEXT_SUBSSA;

extern const char* MEDIA_MIMETYPE_SUBTITLE_ASS;
extern const char* MEDIA_MIMETYPE_SUBTITLE_ASS2;
extern const char* MEDIA_MIMETYPE_SUBTITLE_UTF8;

}  // namespace android

#pragma GCC visibility pop
