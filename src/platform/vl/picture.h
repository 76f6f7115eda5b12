// The one raw picture of this system: QCIF, planes Y, U, V, colour at half size.
#pragma once

constexpr int QD_PICTURE_WIDTH = 176;
constexpr int QD_PICTURE_HEIGHT = 144;
constexpr int QD_CHROMA_WIDTH = QD_PICTURE_WIDTH / 2;
constexpr int QD_CHROMA_HEIGHT = QD_PICTURE_HEIGHT / 2;

/// Bytes of the luminance plane and of one of the two behind it; rows follow without gaps.
constexpr int QD_LUMA_SIZE = QD_PICTURE_WIDTH * QD_PICTURE_HEIGHT;
constexpr int QD_CHROMA_SIZE = QD_CHROMA_WIDTH * QD_CHROMA_HEIGHT;
constexpr int QD_PICTURE_SIZE = QD_LUMA_SIZE + 2 * QD_CHROMA_SIZE;
static_assert(QD_PICTURE_SIZE == 38016);

/// Where the second and the third plane begin.
constexpr int QD_U_OFFSET = QD_LUMA_SIZE;
constexpr int QD_V_OFFSET = QD_LUMA_SIZE + QD_CHROMA_SIZE;

/// What both recommendations allow a coded QCIF picture (64 Kbit); ours are never longer.
constexpr int QD_CODED_SIZE = 8192;
