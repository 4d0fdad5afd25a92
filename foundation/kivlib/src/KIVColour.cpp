#include "kivlib/hdr/KIVColour.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(KIVColour, -1);

template <class Record> void KIVColour::record(Record& r)
{
    r.value(red);
    r.value(green);
    r.value(blue);
    r.value(alpha);
}

KIV_STORED_RECORD(KIVColour);

namespace {
struct Hsb {
    double hue, saturation, brightness;
};

// The hexcone model of Smith (1978).
Hsb to_hsb(double red, double green, double blue)
{
    const double high = std::max({red, green, blue});
    const double low = std::min({red, green, blue});
    const double range = high - low;
    if (!(range > 0.0 && std::isfinite(range)) || high <= 0.0)
        return {0.0, 0.0, high};
    double sixths = 0.0;
    if (high == red)
        sixths = (green - blue) / range;
    else if (high == green)
        sixths = 2.0 + (blue - red) / range;
    else
        sixths = 4.0 + (red - green) / range;
    return {(sixths < 0.0 ? sixths + 6.0 : sixths) / 6.0, range / high, high};
}

double interpolate(double from, double to, double factor)
{
    return from + (to - from) * factor;
}

double interpolate_hue(double from, double to, double factor)
{
    double way = to - from;
    way -= std::round(way); // the short way round
    const double hue = from + way * factor;
    return hue - std::floor(hue);
}
} // namespace

void KIVColour::inq_rgb(float* r, float* g, float* b) const
{
    *r = static_cast<float>(red);
    *g = static_cast<float>(green);
    *b = static_cast<float>(blue);
}

void KIVColour::inq_hsb(float* hue, float* saturation, float* brightness) const
{
    const Hsb hsb = to_hsb(red, green, blue);
    *hue = static_cast<float>(hsb.hue);
    *saturation = static_cast<float>(hsb.saturation);
    *brightness = static_cast<float>(hsb.brightness);
}

void KIVColour::inq_cmyk(float* cyan, float* magenta, float* yellow, float* black) const
{
    const double k = 1.0 - std::max({red, green, blue});
    *cyan = static_cast<float>(1.0 - red - k);
    *magenta = static_cast<float>(1.0 - green - k);
    *yellow = static_cast<float>(1.0 - blue - k);
    *black = static_cast<float>(k);
}

void KIVColour::set_rgb(double r, double g, double b)
{
    red = r;
    green = g;
    blue = b;
}

void KIVColour::set_hsb(double hue, double saturation, double brightness)
{
    const double sixths = std::isfinite(hue) ? (hue - std::floor(hue)) * 6.0 : 0.0;
    const int sector = static_cast<int>(sixths) % 6;
    const double part = sixths - std::floor(sixths);
    const double low = brightness * (1.0 - saturation);
    const double falling = brightness * (1.0 - saturation * part);
    const double rising = brightness * (1.0 - saturation * (1.0 - part));
    const double reds[] = {brightness, falling, low, low, rising, brightness};
    const double greens[] = {rising, brightness, brightness, falling, low, low};
    const double blues[] = {low, low, rising, brightness, brightness, falling};
    set_rgb(reds[sector], greens[sector], blues[sector]);
}

void KIVColour::set_cmyk(double cyan, double magenta, double yellow, double black)
{
    set_rgb(1.0 - cyan - black, 1.0 - magenta - black, 1.0 - yellow - black);
}

void KIVColour::interpolate_hsb_to(const KIVColour& target, float factor)
{
    Hsb from = to_hsb(red, green, blue);
    Hsb to = to_hsb(target.red, target.green, target.blue);
    if (from.saturation == 0.0)
        from.hue = to.hue;
    if (to.saturation == 0.0)
        to.hue = from.hue;
    const auto f = static_cast<double>(factor);
    set_hsb(interpolate_hue(from.hue, to.hue, f), interpolate(from.saturation, to.saturation, f),
            interpolate(from.brightness, to.brightness, f));
    alpha = interpolate(alpha, target.alpha, f);
}
