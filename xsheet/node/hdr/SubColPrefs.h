#pragma once

class NumericSubColumn;

#include "kivlib/hdr/KIVDefaultUnitHandler.h"
#include "kivlib/hdr/StoredClass.h"

/// How a user likes to see the columns of a kind of node: kept apart from scenes, and applied to
/// new nodes.
class SubColPrefs : public KIVObject {
    KIV_STORED(SubColPrefs, KIVObject);

public:
    SubColPrefs() = default;
    explicit SubColPrefs(KIVIStream& stream) : KIVObject(stream) {}
};

class NumericSubColPrefs : public SubColPrefs {
    KIV_STORED(NumericSubColPrefs, SubColPrefs);

public:
    explicit NumericSubColPrefs(const NumericSubColumn* sub_column);
    explicit NumericSubColPrefs(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    KIVUnitType inq_units() const { return units; }

    /// Decimal places shown.
    int inq_precision() const { return precision; }

private:
    template <class Record> void record(Record& r);

    KIVUnitType units = KIV_UNIT_FIELDS;
    int precision = 2;
};
