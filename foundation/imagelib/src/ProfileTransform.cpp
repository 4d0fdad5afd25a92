#include "imagelib/src/ProfileTransform.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/MatrixColours.h"
#include "imagelib/src/samples.h"
#include "kivlib/hdr/KIVColour.h"

namespace {
constexpr int MOST = samples::FULL<std::uint16_t>;

/// A colour that a printer or screen can't show becomes the nearest that it can.
constexpr cmsUInt32Number INTENT = INTENT_RELATIVE_COLORIMETRIC;
constexpr cmsUInt32Number FLAGS = cmsFLAGS_BLACKPOINTCOMPENSATION;

constexpr int STEPS = 8;

/// Colours all over the cube, corners and greys included.
template <class Visit> void visit_colours(Visit visit)
{
    constexpr int STEP = MOST / STEPS;
    for (int red = 0; red <= STEPS; ++red)
        for (int green = 0; green <= STEPS; ++green)
            for (int blue = 0; blue <= STEPS; ++blue) {
                const int levels[] = {red * STEP, green * STEP, blue * STEP};
                visit(levels);
            }
}

void to_parts(const int* levels, double* parts)
{
    for (int c = 0; c < 3; ++c)
        parts[c] = static_cast<double>(levels[c]) / MOST;
}

double inq_distance(const double* a, const double* b)
{
    double most = 0.0;
    for (int c = 0; c < 3; ++c)
        most = std::max(most, std::abs(a[c] - b[c]));
    return most;
}
} // namespace

std::unique_ptr<ProfileTransform> ProfileTransform::make(const Profile& from, const Profile& to,
                                                         KIVString& reason)
{
    std::unique_ptr<ProfileTransform> made(new ProfileTransform(from, to));
    if (!from->inq_data().empty() && from->inq_data() == to->inq_data())
        return made;
    if (from->is_of_colours() && to->is_of_colours())
        made->exact = made->make_way(TYPE_RGB_DBL, 0);
    if (!made->exact) {
        reason = take_colour_words("it is not the profile of a device's red, green and blue");
        return nullptr;
    }
    made->longest_move = made->inq_longest_move();
    made->choose_matrix();
    return made;
}

ProfileTransform::ProfileTransform(const Profile& from, const Profile& to) : from(from), to(to) {}

ProfileTransform::~ProfileTransform()
{
    for (cmsHTRANSFORM way : {exact, way_8, way_16})
        if (way)
            cmsDeleteTransform(way);
}

cmsHTRANSFORM ProfileTransform::make_way(cmsUInt32Number format, cmsUInt32Number flags) const
{
    return cmsCreateTransformTHR(inq_colour_context(), from->inq_handle(), format, to->inq_handle(),
                                 format, INTENT, FLAGS | flags);
}

double ProfileTransform::inq_move(const double* colour) const
{
    double moved[3];
    cmsDoTransform(exact, colour, moved, 1);
    return inq_distance(moved, colour);
}

/// The dark greys are looked at one by one: there profiles differ that are alike elsewhere.
double ProfileTransform::inq_longest_move() const
{
    double longest = 0.0;
    double colour[3];
    for (int grey = 0; grey <= MOST; grey += MOST / 0xFF) {
        std::fill_n(colour, 3, static_cast<double>(grey) / MOST);
        longest = std::max(longest, inq_move(colour));
    }
    visit_colours([&](const int* levels) {
        to_parts(levels, colour);
        longest = std::max(longest, inq_move(colour));
    });
    return longest;
}

/// A profile may have a matrix and other tables beside it, which come first.
void ProfileTransform::choose_matrix()
{
    constexpr double HALF_A_CODE = 0.5 / 0xFF;
    std::unique_ptr<MatrixColours> found = MatrixColours::make(*from, *to);
    if (!found)
        return;
    double most = 0.0;
    visit_colours([&](const int* levels) {
        double wanted[3];
        to_parts(levels, wanted);
        cmsDoTransform(exact, wanted, wanted, 1);
        float got[3];
        found->transform(levels, got);
        for (int c = 0; c < 3; ++c)
            most = std::max(
                most, std::abs(std::clamp(wanted[c], 0.0, 1.0) - static_cast<double>(got[c])));
    });
    if (most < HALF_A_CODE)
        matrix = std::move(found);
}

/// What is no number stays as it is.
void ProfileTransform::transform(KIVColour& colour) const
{
    double parts[] = {colour.inq_red(), colour.inq_green(), colour.inq_blue()};
    if (!exact || !std::ranges::all_of(parts, [](double part) { return std::isfinite(part); }))
        return;
    cmsDoTransform(exact, parts, parts, 1);
    colour.set_rgb(parts[0], parts[1], parts[2]);
}

bool ProfileTransform::transform(KIVPixmap& picture)
{
    const int bits = picture.inq_bits_per_sample();
    const unsigned full = bits == 8 ? samples::FULL<std::uint8_t> : samples::FULL<std::uint16_t>;
    if (longest_move < 0.5 / full)
        return true;
    if (!picture.inq_alpha() || !prepare(bits))
        return false;
    if (bits == 8)
        transform_rows<std::uint8_t>(picture);
    else
        transform_rows<std::uint16_t>(picture);
    return true;
}

/// Edges are worked out at 16 bits in pictures of 8 too.
bool ProfileTransform::prepare(int bits)
{
    if (matrix)
        return true;
    if (!way_16)
        way_16 = make_way(TYPE_RGBA_16, cmsFLAGS_HIGHRESPRECALC);
    if (!way_8 && bits == 8)
        way_8 = make_way(TYPE_RGBA_8, cmsFLAGS_HIGHRESPRECALC);
    return way_16 && (way_8 || bits == 16);
}

template <class Sample> void ProfileTransform::transform_rows(KIVPixmap& picture) const
{
    for (int y = 0; y < picture.inq_height(); ++y) {
        auto* row = reinterpret_cast<Sample*>(picture.inq_row(y));
        if (matrix)
            matrix->transform_row(row, picture.inq_width());
        else
            transform_row(row, picture.inq_width());
    }
}

namespace {
constexpr int LONGEST_EDGE = 64; // in pixels; a longer one is taken in pieces

enum class Cover { NONE, PART, FULL };

template <class Sample> Cover inq_cover(const Sample* pixel)
{
    if (pixel[3] == 0)
        return Cover::NONE;
    return pixel[3] == samples::FULL<Sample> ? Cover::FULL : Cover::PART;
}
} // namespace

/// Run by run. The library's own formats of premultiplied pixels are of no use: up to its release
/// 2.14 they lose the colours at 16 bits, and those of thin edges at 8.
template <class Sample> void ProfileTransform::transform_row(Sample* row, int pixels) const
{
    const cmsHTRANSFORM whole = sizeof(Sample) == 1 ? way_8 : way_16;
    for (int x = 0; x < pixels;) {
        Sample* const first = row + std::ptrdiff_t{4} * x;
        const Cover cover = inq_cover(first);
        const int limit = cover == Cover::PART ? std::min(pixels, x + LONGEST_EDGE) : pixels;
        const int start = x;
        while (x < limit && inq_cover(row + std::ptrdiff_t{4} * x) == cover)
            ++x;
        if (cover == Cover::FULL)
            cmsDoTransform(whole, first, first, static_cast<cmsUInt32Number>(x - start));
        else if (cover == Cover::PART)
            transform_edge(first, x - start);
    }
}

template <class Sample> void ProfileTransform::transform_edge(Sample* pixels, int count) const
{
    std::uint16_t straight[4 * LONGEST_EDGE] = {};
    const Sample* pixel = pixels;
    for (int i = 0; i < 4 * count; i += 4, pixel += 4) {
        for (int c = 0; c < 3; ++c)
            straight[i + c] = samples::to_straight(pixel[c], pixel[3]);
    }
    cmsDoTransform(way_16, straight, straight, static_cast<cmsUInt32Number>(count));
    for (int i = 0; i < 4 * count; i += 4, pixels += 4)
        for (int c = 0; c < 3; ++c)
            pixels[c] =
                static_cast<Sample>((straight[i + c] * unsigned{pixels[3]} + MOST / 2) / MOST);
}
