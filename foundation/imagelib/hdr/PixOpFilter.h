#pragma once

class KIVPixmap;

/// A change to all of a pixmap.
class PixOpFilter {
public:
    virtual ~PixOpFilter() = default;

    /// False if the pixmap could not be changed.
    virtual bool transform(KIVPixmap* pixmap) = 0;
};

/// Brings a pixmap to a number of samples per pixel and of bits per sample. Alpha that goes away
/// leaves the colours as they look over black.
class PixOpConvertType : public PixOpFilter {
public:
    /// The third argument has no effect: values are always rounded.
    PixOpConvertType(int samples, int bits, bool) : samples(samples), bits(bits) {}

    bool transform(KIVPixmap* pixmap) override;

private:
    int samples;
    int bits;
};
