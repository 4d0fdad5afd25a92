#include "curveslib/hdr/SquidgeSet.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(SquidgeSet, -1);

SquidgeSet::SquidgeSet(const SquidgeSet& other) : KIVObject(other), label(other.label)
{
    for (const auto& squidge : other.squidges)
        add_squidge(new Squidge(*squidge));
}

SquidgeSet::SquidgeSet(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader reader(stream);
    reader.value(label);
    const int count = stream.read_count();
    for (int i = 0; i < count; ++i) {
        std::unique_ptr<Squidge> squidge;
        reader.owned(squidge);
        if (squidge)
            squidges.push_back(std::move(squidge));
    }
}

void SquidgeSet::storer(KIVOStream& stream)
{
    Base::storer(stream);
    stream << label << static_cast<int>(squidges.size());
    for (const auto& squidge : squidges)
        stream.insert_with_class_hdr(squidge.get());
}

Squidge* SquidgeSet::add_squidge(gsl::owner<Squidge*> squidge)
{
    squidges.emplace_back(squidge);
    return squidges.back().get();
}

void SquidgeSet::add_to_table(SquidgeTable& table) const
{
    for (const auto& squidge : squidges) {
        for (const auto& knot : squidge->inq_knots())
            table.add(label, knot.get());
        for (const auto& bead : squidge->inq_beads())
            table.add(label, bead.get());
    }
}

void SquidgeTable::add(unsigned long set_label, BaseBeadKnot* bead_knot)
{
    if (bead_knot->inq_label() != 0)
        bead_knots[{set_label, bead_knot->inq_label()}] = bead_knot;
}

BaseBeadKnot* SquidgeTable::lookup_bead_knot(unsigned long set_label, unsigned long label) const
{
    const auto found = bead_knots.find({set_label, label});
    return found == bead_knots.end() ? nullptr : found->second;
}
