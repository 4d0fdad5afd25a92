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

/// Which field of a frame is shown first: the one of rows 0, 2, 4 and so on, or that of 1, 3, 5.
enum class FieldOrder { UPPER_FIRST, LOWER_FIRST };

/// Weaves the second field of a frame into the first, which keeps the rows of its own field.
class PixOpAddInterlace : public PixOpFilter {
public:
    /// The second field stays the caller's.
    explicit PixOpAddInterlace(KIVPixmap* second_field, FieldOrder order = FieldOrder::UPPER_FIRST)
        : second_field(second_field), order(order)
    {}

    /// False, and no change, for a field of another size or layout.
    bool transform(KIVPixmap* pixmap) override;

private:
    const KIVPixmap* second_field; // not owned
    FieldOrder order;
};

/// Softens a frame from row to row, so that thin lines don't flicker when its fields are shown one
/// after the other: a quarter of the rows above and below, half of the row itself.
class PixOpInterlaceFilter : public PixOpFilter {
public:
    bool transform(KIVPixmap* pixmap) override;
};
