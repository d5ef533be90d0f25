# The device build: libmatroska_ext.so inside an Android source tree of the Lollipop line.
# The list of sources is the one of extractor/sources.cmake; a test holds the two together. docs/device.md says more.
LOCAL_PATH := $(call my-dir)

include $(CLEAR_VARS)

LOCAL_MODULE := libmatroska_ext
LOCAL_MODULE_TAGS := optional
# The media process is a 32-bit one, on 64-bit products too.
LOCAL_MULTILIB := 32

LOCAL_SRC_FILES := \
    extractor/utils/MimeTypes.cpp \
    extractor/utils/CodecTags.cpp \
    extractor/utils/OptionalCodecLibrary.cpp \
    extractor/utils/CodecConfig.cpp \
    extractor/utils/NalRewrite.cpp \
    extractor/utils/PictureCopy.cpp \
    extractor/utils/FixedByteOrder.cpp \
    extractor/utils/HexDump.cpp \
    extractor/utils/DebugAids.cpp \
    extractor/utils/MeasureTime.cpp \
    extractor/matroska/AacProbe.cpp \
    extractor/matroska/CodecPrivate.cpp \
    extractor/matroska/ElementaryStream.cpp \
    extractor/matroska/FatalCheck.cpp \
    extractor/matroska/SubtitleMerge.cpp \
    extractor/matroska/reader/Attachments.cpp \
    extractor/matroska/reader/Block.cpp \
    extractor/matroska/reader/BlockHead.cpp \
    extractor/matroska/reader/BlockRuns.cpp \
    extractor/matroska/reader/Chapters.cpp \
    extractor/matroska/reader/ContentEncodings.cpp \
    extractor/matroska/reader/Cues.cpp \
    extractor/matroska/reader/Document.cpp \
    extractor/matroska/reader/ElementIds.cpp \
    extractor/matroska/reader/File.cpp \
    extractor/matroska/reader/Inflate.cpp \
    extractor/matroska/reader/Node.cpp \
    extractor/matroska/reader/Pieces.cpp \
    extractor/matroska/reader/PlainCues.cpp \
    extractor/matroska/reader/Resync.cpp \
    extractor/matroska/reader/SeekIndex.cpp \
    extractor/matroska/reader/Segment.cpp \
    extractor/matroska/reader/SubtitleQueue.cpp \
    extractor/matroska/reader/TrackFacts.cpp \
    extractor/matroska/reader/Tracks.cpp \
    extractor/matroska/reader/Values.cpp \
    extractor/matroska/BlockCursor.cpp \
    extractor/matroska/FrameInspection.cpp \
    extractor/matroska/IteratorSeek.cpp \
    extractor/matroska/MatroskaExtExtractor.cpp \
    extractor/matroska/MatroskaExtIterator.cpp \
    extractor/matroska/MatroskaExtSource.cpp \
    extractor/matroska/PluginExports.cpp \
    extractor/matroska/SubtitleCollection.cpp \
    extractor/matroska/TrackDiscovery.cpp

LOCAL_C_INCLUDES := \
    $(LOCAL_PATH)/extractor \
    $(TOP)/frameworks/av/include \
    $(TOP)/frameworks/av/media/libstagefright \
    $(TOP)/external/aac/libAACdec/include \
    $(TOP)/external/aac/libSYS/include \
    $(TOP)/external/zlib

LOCAL_SHARED_LIBRARIES := libstagefright libstagefright_foundation libutils liblog libz libdl
LOCAL_STATIC_LIBRARIES := libFraunhoferAAC

LOCAL_CLANG := true
LOCAL_CPPFLAGS := -std=gnu++11 -fno-exceptions -fno-rtti -fvisibility=hidden -fvisibility-inlines-hidden
LOCAL_CFLAGS := -Wall -Wextra -Wno-multichar -Wno-unused-parameter -Wno-mismatched-tags
LOCAL_LDFLAGS := -Wl,-Bsymbolic -Wl,--version-script=$(LOCAL_PATH)/extractor/exports.map

include external/libcxx/libcxx.mk
include $(BUILD_SHARED_LIBRARY)
