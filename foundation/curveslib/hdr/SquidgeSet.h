#pragma once

#include "curveslib/hdr/Squidge.h"

#include <map>

class SquidgeTable;

/// The curves of one path, which it owns.
class SquidgeSet : public KIVObject {
    KIV_STORED(SquidgeSet, KIVObject);

public:
    SquidgeSet() = default;
    SquidgeSet(const SquidgeSet& other);
    explicit SquidgeSet(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    virtual gsl::owner<SquidgeSet*> duplicate_make_base() const { return new SquidgeSet(*this); }

    /// Enters all knots and beads that have a label. They must be there as long as the table is
    /// asked for them.
    virtual void add_to_table(SquidgeTable& table) const;

    unsigned long inq_label() const { return label; }
    Squidge* add_squidge(gsl::owner<Squidge*> squidge);
    const std::vector<std::unique_ptr<Squidge>>& inq_squidges() const { return squidges; }

private:
    unsigned long label = 1;
    std::vector<std::unique_ptr<Squidge>> squidges;
};

/// Finds knots and beads by the labels of their set and of their own.
class SquidgeTable : public KIVObject {
public:
    void add(unsigned long set_label, BaseBeadKnot* bead_knot);

    /// Null on a miss.
    virtual BaseBeadKnot* lookup_bead_knot(unsigned long set_label, unsigned long label) const;

private:
    std::map<std::pair<unsigned long, unsigned long>, BaseBeadKnot*> bead_knots; // not owned
};
