#pragma once

#include "compositor/imagelib/lib/hdr/CNodeScreenBase.h"

// Screens of one colour for every frame. They have no sub-column and are not registered: without a
// record that a program registers for them they have no channels, and no file can hold them.

class CNodeBlackScreen : public CNodeScreenBase {
    KIV_NODE(CNodeBlackScreen, CNodeScreenBase);

public:
    CNodeBlackScreen() = default;
    explicit CNodeBlackScreen(KIVIStream& stream) : CNodeScreenBase(stream) {}

    KIVColour inq_colour(int) const override { return KIVColour(0.0); }
};

class CNodeWhiteScreen : public CNodeScreenBase {
    KIV_NODE(CNodeWhiteScreen, CNodeScreenBase);

public:
    CNodeWhiteScreen() = default;
    explicit CNodeWhiteScreen(KIVIStream& stream) : CNodeScreenBase(stream) {}

    KIVColour inq_colour(int) const override { return KIVColour(1.0); }
};

/// Fully transparent.
class CNodeClearScreen : public CNodeScreenBase {
    KIV_NODE(CNodeClearScreen, CNodeScreenBase);

public:
    CNodeClearScreen() = default;
    explicit CNodeClearScreen(KIVIStream& stream) : CNodeScreenBase(stream) {}

    KIVColour inq_colour(int) const override { return {0.0, 0.0, 0.0, 0.0}; }
};
