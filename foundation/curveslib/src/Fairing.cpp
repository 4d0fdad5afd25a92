#include "curveslib/hdr/Fairing.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(Fairing, -1);

namespace {
using Place = FairingCP::Place;
using Points = std::vector<FairingCP>;

constexpr std::size_t BYTES_PER_POINT = 6 * sizeof(double);
constexpr double MOST_FRAMES = 100'000'000; // a damaged file may hold any number
constexpr double FLAT = 1e-9;               // a part of a curve that climbs less is a straight ramp
constexpr double UPRIGHT = 1e-5;            // times per height where a curve is as good as upright

template <class Record> void record_place(Record& r, Place& place)
{
    r.value(place.time);
    r.value(place.height);
}

template <class Record> void record_point(Record& r, FairingCP& cp)
{
    record_place(r, cp.point);
    record_place(r, cp.before);
    record_place(r, cp.after);
}

Place operator+(const Place& a, const Place& b)
{
    return {a.time + b.time, a.height + b.height};
}

Place operator-(const Place& a, const Place& b)
{
    return {a.time - b.time, a.height - b.height};
}

Place mix(const Place& a, const Place& b, double share)
{
    return {std::lerp(a.time, b.time, share), std::lerp(a.height, b.height, share)};
}

/// One cubic curve between two control points.
struct Segment {
    Place p0, p1, p2, p3;

    Segment(const FairingCP& from, const FairingCP& to)
        : p0(from.point), p1(from.point + from.after), p2(to.point + to.before), p3(to.point)
    {
        if (!runs_back())
            return;
        const double longest = (1.0 - UPRIGHT) * std::max(0.0, p3.time - p0.time);
        p1.time = p0.time + std::clamp(p1.time - p0.time, 0.0, longest);
        p2.time = p3.time - std::clamp(p3.time - p2.time, 0.0, longest);
    }

    /// Handles that reach past the other point may let the curve run back in time, or so nearly
    /// stand upright that a height can't be told from its time. They need not: the halves of a
    /// curve whose handles cross have such handles.
    bool runs_back() const
    {
        const double d0 = p1.time - p0.time, d1 = p2.time - p1.time, d2 = p3.time - p2.time;
        return d0 < 0.0 || d2 < 0.0 || (d1 < 0.0 && d1 * d1 > d0 * d2 * (1.0 - UPRIGHT));
    }

    double height_at(double u) const
    {
        const double v = 1.0 - u;
        return v * v * (v * p0.height + 3.0 * u * p1.height) +
               u * u * (3.0 * v * p2.height + u * p3.height);
    }

    /// Newton's steps, kept between what is known to lie before and behind: time grows with the
    /// parameter.
    double find_parameter(double time) const
    {
        constexpr int MOST_STEPS = 100;
        constexpr double CLOSE = 1e-12; // a step: the next one would be finer than rounding
        const double linear = 3.0 * (p1.time - p0.time);
        const double square = 3.0 * (p2.time - p1.time) - linear;
        const double cubic = p3.time - p0.time - linear - square;
        const double goal = time - p0.time;
        double low = 0.0, high = 1.0;
        double u = goal / (p3.time - p0.time);
        for (int step = 0; step < MOST_STEPS; ++step) {
            const double error = u * (linear + u * (square + u * cubic)) - goal;
            (error > 0.0 ? high : low) = u;
            const double slope = linear + u * (2.0 * square + 3.0 * u * cubic);
            const double last = u;
            u -= error / slope;
            if (!(u > low && u < high))
                u = error == 0.0 ? last : (low + high) / 2.0;
            if (std::abs(u - last) < CLOSE)
                break;
        }
        return u;
    }
};

/// The index of the first point behind `time`.
std::size_t find_behind(const Points& points, double time)
{
    const auto behind = std::ranges::upper_bound(points, time, {},
                                                 [](const FairingCP& cp) { return cp.point.time; });
    return static_cast<std::size_t>(behind - points.begin());
}

Points::iterator place_at(Points& points, std::size_t index)
{
    return points.begin() + static_cast<std::ptrdiff_t>(index);
}

double height_at(const Points& points, double time)
{
    if (points.empty())
        return time;
    const std::size_t behind = find_behind(points, time);
    if (behind == 0)
        return points.front().point.height;
    if (behind == points.size() || points[behind - 1].point.time == time)
        return points[behind - 1].point.height;
    const Segment segment(points[behind - 1], points[behind]);
    return segment.height_at(segment.find_parameter(time));
}

/// Puts a point on the curve at `time`, which changes nothing of its shape. Gives its index.
std::size_t insert_point(Points& points, double time)
{
    const std::size_t behind = find_behind(points, time);
    if (behind == 0 || behind == points.size()) { // where the curve is level
        const FairingCP level{{time, height_at(points, time)}, {}, {}};
        (behind == 0 ? points.front().before : points.back().after) = {};
        points.insert(place_at(points, behind), level);
        return behind;
    }
    const Segment whole(points[behind - 1], points[behind]);
    const double u = whole.find_parameter(time);
    const Place a = mix(whole.p0, whole.p1, u), b = mix(whole.p1, whole.p2, u),
                c = mix(whole.p2, whole.p3, u);
    const Place ab = mix(a, b, u), bc = mix(b, c, u), middle = mix(ab, bc, u);
    points[behind - 1].after = a - whole.p0;
    points[behind].before = c - whole.p3;
    points.insert(place_at(points, behind), FairingCP{middle, ab - middle, bc - middle});
    return behind;
}

/// What is no number means 0.
double keep_in_range(double height)
{
    return height > 0.0 ? std::min(height, 1.0) : 0.0;
}

bool is_on_ramp(const FairingCP& cp)
{
    const auto is_level = [](const Place& place) { return place.time == place.height; };
    return is_level(cp.point) && is_level(cp.before) && is_level(cp.after);
}

/// Without points, or with such as change nothing.
bool is_ramp(const Points& points)
{
    constexpr Place START{0.0, 0.0}, END{1.0, 1.0};
    return points.empty() || (points.front().point == START && points.back().point == END &&
                              std::ranges::all_of(points, is_on_ramp));
}

/// Stretches a part of a curve so that it runs from 0 to 1 both ways.
void stretch(Points& points, const Place& from, const Place& to)
{
    const Place range = to - from;
    if (std::abs(range.height) < FLAT || range.time < FLAT) {
        points.clear();
        return;
    }
    const auto scale = [&](Place& place) {
        place = {place.time / range.time, place.height / range.height};
    };
    for (FairingCP& cp : points) {
        cp.point = cp.point - from;
        scale(cp.point);
        scale(cp.before);
        scale(cp.after);
    }
}
} // namespace

template <class Record> void Fairing::record_rates(Record& r)
{
    r.value(number_between);
    r.value(sample_rate);
}

Fairing::Fairing(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader r(stream);
    record_rates(r);
    if (std::abs(static_cast<double>(number_between)) > MOST_FRAMES)
        stream.set_error_state(KIVStream::BAD_DATA);
    points.resize(static_cast<std::size_t>(stream.read_count(BYTES_PER_POINT)));
    for (FairingCP& cp : points)
        record_point(r, cp);
}

void Fairing::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter r(stream);
    record_rates(r);
    r.value(inq_control_point_count());
    for (FairingCP& cp : points)
        record_point(r, cp);
}

double Fairing::get_height(int offset) const
{
    const double frames = 1.0 + number_between;
    if (frames <= 0.0)
        return 0.0;
    const int step = offset - offset % std::max(sample_rate, 1);
    const double time = (step + (our_half_frame ? 0.5 : 0.0)) / frames;
    return keep_in_range(height_at(points, std::clamp(time, 0.0, 1.0)));
}

gsl::owner<Fairing*> Fairing::split(int offset)
{
    auto later = std::make_unique<Fairing>(number_between - offset);
    const double time = std::clamp(offset / std::max(1.0, 1.0 + number_between), 0.0, 1.0);
    number_between = offset - 1;
    if (points.empty())
        return later.release();

    const auto cut = place_at(points, insert_point(points, time));
    const Place place{cut->point.time, keep_in_range(cut->point.height)}; // as it was drawn
    later->points.assign(cut, points.end());
    points.erase(cut + 1, points.end());
    stretch(points, {0.0, 0.0}, place);
    stretch(later->points, place, {1.0, 1.0});
    return later.release();
}

void Fairing::copy_into(Fairing* other) const
{
    other->points = points;
    other->sample_rate = sample_rate;
}

bool Fairing::is_same_shape(const Fairing* other) const
{
    return points == other->points || (is_ramp(points) && is_ramp(other->points));
}

FairingCP* Fairing::inq_control_point(int index)
{
    const auto i = static_cast<std::size_t>(index);
    return index >= 0 && i < points.size() ? &points[i] : nullptr;
}

void Fairing::create_empty_cps(int count)
{
    points.assign(static_cast<std::size_t>(std::max(count, 0)), {});
}
