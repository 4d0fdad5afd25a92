#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <vector>

/// A point of an easing curve, with its two handles. Time and height run from 0 at the earlier
/// key to 1 at the later one; the handles are offsets from the point.
struct FairingCP {
    struct Place {
        double time = 0.0;
        double height = 0.0;
        bool operator==(const Place&) const = default;
    };

    Place point;
    Place before; // towards the point before
    Place after;  // towards the point behind
    bool operator==(const FairingCP&) const = default;
};

/// Easing from one key to the next: which share of the way is gone on each frame between them. Its
/// shape is a chain of cubic curves through its control points, or without them a straight ramp.
class Fairing : public KIVObject {
    KIV_STORED(Fairing, KIVObject);

public:
    /// A straight ramp over `number_between` frames between two keys.
    explicit Fairing(int number_between) : number_between(number_between) {}
    explicit Fairing(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// The share of the way, from 0 to 1, on the frame that stands `offset` behind the key.
    double get_height(int offset) const;

    void set_number_between(int frames) { number_between = frames; }

    /// Frames per step: the frames of one step share a height. Below 1 means 1.
    void set_sample_rate(int frames) { sample_rate = frames; }
    int inq_sample_rate() const { return sample_rate; }

    /// Cuts the way at `offset`, where a new key comes to stand. This keeps the earlier part and
    /// the fairing returned has the later one. Both draw the curve as it was, but for what lies
    /// beyond the values of the two keys between which they lead from now on.
    gsl::owner<Fairing*> split(int offset);

    /// Gives `other` the control points and the sample rate of this.
    void copy_into(Fairing* other) const;
    bool is_same_shape(const Fairing* other) const;

    /// In order of time; null out of range.
    FairingCP* inq_control_point(int index);
    int inq_control_point_count() const { return static_cast<int>(points.size()); }

    /// Takes the present points away; the new ones all lie at 0. A key whose fairing is edited in
    /// place is told by its `fairing_changed`.
    void create_empty_cps(int count);

    /// Whether frames are read half a frame late, for the second field of an interlaced frame. One
    /// switch for the process.
    static bool inq_half_frame() { return our_half_frame; }
    static void set_half_frame(bool on) { our_half_frame = on; }

    int number_between;

private:
    template <class Record> void record_rates(Record& r);

    inline static bool our_half_frame = false;

    int sample_rate = 1;
    std::vector<FairingCP> points;
};
