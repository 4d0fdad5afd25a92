#include "imagelib/hdr/ColourManager.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/samples.h"

namespace {
KIVString explain_refusal(const KIVString& profile)
{
    return "Colour profiles can't be used in this release: " + profile;
}

template <class Sample> std::vector<Sample> make_table(double exponent)
{
    constexpr unsigned MOST = samples::FULL<Sample>;
    std::vector<Sample> table(MOST + 1);
    for (unsigned i = 0; i <= MOST; ++i) {
        const double level = std::pow(static_cast<double>(i) / MOST, exponent);
        table[i] = static_cast<Sample>(level * MOST + 0.5);
    }
    return table;
}

/// Premultiplied samples are divided by alpha for the table, and multiplied again.
template <class Sample>
void look_up(Sample* pixel, unsigned alpha, const std::vector<Sample>& table)
{
    constexpr unsigned MOST = samples::FULL<Sample>;
    if (alpha == 0)
        return;
    for (int c = 0; c < 3; ++c) {
        const std::uint64_t straight = (std::uint64_t{pixel[c]} * MOST + alpha / 2) / alpha;
        const Sample level = table[std::min<std::uint64_t>(straight, MOST)];
        pixel[c] = static_cast<Sample>(samples::multiply(level, alpha));
    }
}

template <class Sample> void apply_table(KIVPixmap& pixmap, const std::vector<Sample>& table)
{
    const int step = pixmap.inq_samples_per_pixel();
    const bool has_alpha = pixmap.inq_alpha();
    for (int y = 0; y < pixmap.inq_height(); ++y) {
        auto* pixel = reinterpret_cast<Sample*>(pixmap.inq_row(y));
        for (int x = 0; x < pixmap.inq_width(); ++x, pixel += step)
            if (has_alpha && pixel[3] != samples::FULL<Sample>)
                look_up(pixel, pixel[3], table);
            else
                for (int c = 0; c < 3; ++c)
                    pixel[c] = table[pixel[c]];
    }
}

/// An empty table is made first.
template <class Sample>
void apply_gamma(KIVPixmap& pixmap, std::vector<Sample>& table, double exponent)
{
    if (table.empty())
        table = make_table<Sample>(exponent);
    apply_table(pixmap, table);
}
} // namespace

void ColourManager::set_output_profile_path(const KIVString& path)
{
    error = path.is_null() ? KIVString() : explain_refusal(path);
    if (path.is_null())
        output_profile = path;
}

void ColourManager::set_output_gamma(double exponent)
{
    if (!(exponent > 0.0) || !std::isfinite(exponent) || exponent == gamma)
        return;
    gamma = exponent;
    table_8.clear();
    table_16.clear();
}

void ColourManager::add_gamma(KIVPixmap* pixmap)
{
    if (!pixmap || gamma == 1.0)
        return;
    if (pixmap->inq_bits_per_sample() == 8)
        apply_gamma(*pixmap, table_8, gamma);
    else
        apply_gamma(*pixmap, table_16, gamma);
}

int ColourManager::new_transform_id(const KIVString& profile)
{
    error = explain_refusal(profile);
    return -1;
}

ColourTransform* ColourManager::lock(int /*id*/)
{
    return nullptr; // no id is ever given out
}

void ColourManager::unlock(int /*id*/) {}
void ColourManager::hold_object_id(int /*id*/) {}
void ColourManager::delete_object_id(int /*id*/) {}

ColourManager* inq_colour_manager()
{
    static auto* manager = new ColourManager;
    return manager;
}
