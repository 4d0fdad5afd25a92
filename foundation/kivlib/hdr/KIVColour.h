#pragma once

#include "kivlib/hdr/StoredClass.h"

/// A colour with its alpha. Components run from 0 to 1 and alpha is not multiplied in; values
/// outside are kept as they are.
class KIVColour : public KIVObject {
    KIV_STORED(KIVColour, KIVObject);

public:
    /// Opaque black.
    KIVColour() = default;

    /// An opaque grey.
    explicit KIVColour(double grey) : KIVColour(grey, grey, grey) {}
    KIVColour(double red, double green, double blue) : KIVColour(red, green, blue, 1.0) {}
    KIVColour(double red, double green, double blue, double alpha)
        : red(red), green(green), blue(blue), alpha(alpha)
    {}
    explicit KIVColour(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    double inq_red() const { return red; }
    double inq_green() const { return green; }
    double inq_blue() const { return blue; }
    double inq_alpha() const { return alpha; }
    void inq_rgb(float* red, float* green, float* blue) const;

    /// Hue, saturation and brightness, each from 0 to 1; a grey has hue 0.
    void inq_hsb(float* hue, float* saturation, float* brightness) const;

    /// With the grey part taken out as black: at least one of the first three is 0.
    void inq_cmyk(float* cyan, float* magenta, float* yellow, float* black) const;

    void set_rgb(double red, double green, double blue);
    void set_hsb(double hue, double saturation, double brightness);
    void set_cmyk(double cyan, double magenta, double yellow, double black);
    void set_alpha(double a) { alpha = a; }

    /// Goes the share `factor` of the way to `target`, the short way round the circle of hues. A
    /// grey has no hue of its own and takes the other's.
    void interpolate_hsb_to(const KIVColour& target, float factor);

    friend bool operator==(const KIVColour& a, const KIVColour& b)
    {
        return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
    }

private:
    template <class Record> void record(Record& r);

    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;
};
