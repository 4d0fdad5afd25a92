#include "imagelib/hdr/ColourManager.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/HeldItems.h"
#include "imagelib/src/ProfileTransform.h"
#include "imagelib/src/samples.h"
#include "imagelib/src/want_of_memory.h"
#include "kivlib/hdr/file_operations.h"

#include <list>

namespace {
using Profile = ProfileTransform::Profile;
using Transform = std::unique_ptr<ProfileTransform>;

const ProfileData NO_PROFILE;

KIVString explain(const KIVString& path, const KIVString& reason)
{
    return "Can't use colour profile " + path + ": " + reason;
}

/// A way that an id has been given out for.
struct NamedTransform {
    explicit NamedTransform(const KIVString& path) : path(path) {}

    const KIVString path;
    int holds = 1;
    int locks = 0;
    int revision = 0; // of the output profile that the transform leads to
    Transform transform;
};

/// The way of pictures that hold one profile; null if it can't be used.
struct PictureTransform {
    ProfileData embedded;
    Transform transform;
};
} // namespace

struct ColourManager::Profiles {
    /// False, and no change, with a reason for the user, for one that no colours lead to.
    bool set_output(const KIVString& path, const Profile& profile, KIVString& reason);
    void clear_output();

    void refresh(NamedTransform& named, KIVString& error) const;
    ProfileTransform* find_for_picture(const ProfileData& embedded);

    KIVString output_path;
    Profile output;   // null for none
    int revision = 0; // counts the output profiles
    HeldItems<NamedTransform> named;
    Transform from_srgb;                  // null without an output profile
    std::list<PictureTransform> pictures; // the last used one first
};

bool ColourManager::Profiles::set_output(const KIVString& path, const Profile& profile,
                                         KIVString& reason)
{
    const Profile srgb = ColourProfile::make_srgb();
    Transform transform = srgb ? ProfileTransform::make(srgb, profile, reason) : nullptr;
    if (!transform)
        return false;
    output_path = path;
    if (output && output->inq_data() == profile->inq_data())
        return true;
    clear_output();
    output_path = path;
    output = profile;
    from_srgb = std::move(transform);
    ++revision;
    return true;
}

void ColourManager::Profiles::clear_output()
{
    output_path = KIVString();
    output.reset();
    from_srgb.reset();
    pictures.clear();
}

void ColourManager::Profiles::refresh(NamedTransform& wanted, KIVString& error) const
{
    if (wanted.transform && output && wanted.revision == revision)
        return;
    wanted.transform.reset();
    wanted.revision = revision;
    KIVString reason = "there is no output profile";
    try {
        if (const Profile from = output ? ColourProfile::read(wanted.path, reason) : nullptr)
            wanted.transform = ProfileTransform::make(from, output, reason);
    } catch (const std::bad_alloc&) {
        reason = WANT_OF_MEMORY;
    }
    if (!wanted.transform)
        error = explain(wanted.path, reason);
}

ProfileTransform* ColourManager::Profiles::find_for_picture(const ProfileData& embedded)
{
    constexpr std::size_t MOST_KEPT = 16;
    if (embedded.empty())
        return from_srgb.get();
    auto place = std::ranges::find(pictures, embedded, &PictureTransform::embedded);
    if (place == pictures.end()) {
        KIVString reason;
        const Profile from = ColourProfile::make_for_picture(embedded);
        pictures.push_front(
            {embedded, from ? ProfileTransform::make(from, output, reason) : nullptr});
        place = pictures.begin();
    }
    pictures.splice(pictures.begin(), pictures, place);
    if (pictures.size() > MOST_KEPT)
        pictures.pop_back();
    return place->transform ? place->transform.get() : from_srgb.get();
}

ColourManager::ColourManager() : profiles(new Profiles) {}
ColourManager::~ColourManager() = default;

const KIVString& ColourManager::inq_output_profile_path() const
{
    return profiles->output_path;
}

const ProfileData& ColourManager::inq_output_profile_data() const
{
    return profiles->output ? profiles->output->inq_data() : NO_PROFILE;
}

const ProfileData& ColourManager::inq_frame_profile_data() const
{
    return gamma == 1.0 ? inq_output_profile_data() : NO_PROFILE;
}

int ColourManager::inq_output_revision() const
{
    return profiles->output ? profiles->revision : 0;
}

void ColourManager::set_output_profile_path(const KIVString& path)
{
    error = KIVString();
    if (path.is_null())
        return profiles->clear_output();
    KIVString reason = WANT_OF_MEMORY;
    try {
        const Profile profile = ColourProfile::read(path, reason);
        if (profile && profiles->set_output(path, profile, reason))
            return;
    } catch (const std::bad_alloc&) {
        // which the reason says
    }
    error = explain(path, reason);
}

bool ColourManager::bring_to_output(KIVPixmap& picture, const ProfileData& embedded)
{
    if (!profiles->output)
        return true;
    try {
        return profiles->find_for_picture(embedded)->transform(picture);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

int ColourManager::new_transform_id(const KIVString& profile)
{
    return profiles->named.hold_path(inq_absolute_path(profile));
}

ColourTransform* ColourManager::lock(int id)
{
    error = KIVString();
    NamedTransform* named = profiles->named.find(id);
    if (!named)
        return nullptr;
    if (named->locks == 0)
        profiles->refresh(*named, error);
    ++named->locks;
    return named->transform.get();
}

void ColourManager::unlock(int id)
{
    profiles->named.unlock(id, [](const NamedTransform&) {});
}

void ColourManager::hold_object_id(int id)
{
    profiles->named.hold(id);
}

void ColourManager::delete_object_id(int id)
{
    profiles->named.let_go(id);
}

namespace {
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

ColourManager* inq_colour_manager()
{
    static auto* manager = new ColourManager;
    return manager;
}
