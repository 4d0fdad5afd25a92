#pragma once

// The parts of a Targa file: a head, the pixels, an extension area and a foot, all little-endian.
namespace targa {

constexpr int HEAD_BYTES = 18;
constexpr int ID_LENGTH = 0; // places in the head
constexpr int MAP_TYPE = 1;
constexpr int IMAGE_TYPE = 2;
constexpr int MAP_FIRST = 3;
constexpr int MAP_LENGTH = 5;
constexpr int MAP_DEPTH = 7;
constexpr int WIDTH = 12;
constexpr int HEIGHT = 14;
constexpr int DEPTH = 16;
constexpr int DESCRIPTOR = 17;

constexpr int MAPPED = 1; // image types
constexpr int TRUE_COLOUR = 2;
constexpr int GREY = 3;
constexpr int COMPRESSED = 8; // added to one of them

constexpr int ALPHA_BITS = 0x0F; // of the descriptor
constexpr int FROM_RIGHT = 0x10;
constexpr int FROM_TOP = 0x20;

constexpr int EXTENSION_BYTES = 495;
constexpr int ALPHA_KIND = 494; // its place there
constexpr int NO_ALPHA = 0;
constexpr int STRAIGHT = 3;
constexpr int PREMULTIPLIED = 4;

constexpr int FOOT_BYTES = 26;
constexpr int SIGNATURE_AT = 8;
constexpr char SIGNATURE[] = "TRUEVISION-XFILE."; // and its zero

} // namespace targa
