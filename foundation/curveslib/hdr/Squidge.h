#pragma once

class ArcLengthTable;
class Knot;
class Squidge;

#include "kivlib/hdr/StoredClass.h"
#include "kivlib/hdr/Vector.h"

#include <memory>
#include <vector>

/// A place on a squidge: a knot, and how far on from it towards the next, from 0 to 1.
struct CurvePosition {
    const Knot* knot = nullptr; // not owned
    double parameter = 0.0;
};

/// What lies on a squidge under a label: one of its knots, or a bead between them.
class BaseBeadKnot : public KIVObject {
public:
    explicit BaseBeadKnot(unsigned long label) : label(label) {}

    virtual CurvePosition inq_curve_position() const = 0;

    /// A knot stays where it is.
    virtual void set_curve_position(const CurvePosition&) {}

    unsigned long inq_label() const { return label; }
    Vector2 calc_position() const;

    /// The curve that it lies on.
    Squidge* inq_squidge() const;

private:
    unsigned long label; // 0 for none
};

/// A point that a squidge goes through, with the handles that bend it there.
class Knot : public BaseBeadKnot {
public:
    /// The handles are offsets from `place`.
    Knot(Squidge* squidge, const Knot* prev, const Vector2& place, const Vector2& before,
         const Vector2& after, unsigned long label);

    CurvePosition inq_curve_position() const override { return {this, 0.0}; }

    Squidge* inq_squidge() const { return squidge; }

    /// Null for the first knot, of a closed squidge as well.
    const Knot* inq_prev() const { return prev; }

    /// The knot that the curve goes on to: null behind the end of an open one.
    const Knot* inq_next() const;
    const Vector2& inq_place() const { return place; }
    const Vector2& inq_handle_before() const { return before; }
    const Vector2& inq_handle_after() const { return after; }

    /// On the way from this knot, at 0, to the next one, at 1.
    Vector2 calc_at_param(double parameter) const;

private:
    friend class Squidge;

    std::size_t index;          // among the knots of the squidge
    Squidge* squidge;           // not owned
    const Knot* prev;           // not owned
    const Knot* next = nullptr; // not owned
    Vector2 place;
    Vector2 before;
    Vector2 after;
};

/// A bead: it can slide along its squidge.
class Bead : public BaseBeadKnot {
public:
    Bead(const CurvePosition& position, unsigned long label);

    CurvePosition inq_curve_position() const override { return position; }

    /// A parameter outside 0 to 1 means its nearer end.
    void set_curve_position(const CurvePosition& to) override;

    const Knot* inq_knot() const { return position.knot; }
    double inq_parameter() const { return position.parameter; }

private:
    CurvePosition position;
};

/// A drawn curve, open or closed, that goes through its knots in order. It owns them, and the
/// beads on it.
class Squidge : public KIVObject {
    KIV_STORED(Squidge, KIVObject);

public:
    explicit Squidge(bool closed);
    Squidge(const Squidge& other);
    explicit Squidge(KIVIStream& stream);
    ~Squidge() override;

    void storer(KIVOStream& stream) override;

    virtual void move_bead(BaseBeadKnot* bead, const CurvePosition& to);

    bool is_closed() const { return closed; }

    /// At the end.
    Knot* add_knot(const Vector2& place, const Vector2& handle_before, const Vector2& handle_after,
                   unsigned long label = 0);
    Bead* add_bead(const CurvePosition& position, unsigned long label);

    /// Null without knots.
    const Knot* inq_first_knot() const { return knots.empty() ? nullptr : knots.front().get(); }
    const std::vector<std::unique_ptr<Knot>>& inq_knots() const { return knots; }
    const std::vector<std::unique_ptr<Bead>>& inq_beads() const { return beads; }

    double calc_length() const;

    /// The way from one point to another; `direction` is 1 or -1. On an open squidge it is the
    /// same both ways.
    double distance_along_curve(const BaseBeadKnot* from, const BaseBeadKnot* to,
                                int direction) const;

    /// 1 or -1: the way from one point to another on an open squidge.
    int direction_to_go(const BaseBeadKnot* from, const BaseBeadKnot* to) const;

    /// Where one comes to by going `distance` from `start`: round a closed squidge as often as
    /// that takes, on an open one to its end at most.
    CurvePosition find_position_along(const CurvePosition& start, int direction,
                                      double distance) const;

private:
    const ArcLengthTable& inq_lengths() const;
    double calc_distance_from_start(const BaseBeadKnot* bead_knot) const;
    double calc_distance_from_start(const CurvePosition& position) const;
    void read_knots(KIVIStream& stream);
    void read_beads(KIVIStream& stream);

    bool closed;
    std::vector<std::unique_ptr<Knot>> knots;
    std::vector<std::unique_ptr<Bead>> beads;
    mutable std::unique_ptr<ArcLengthTable> lengths; // null until asked for
};
