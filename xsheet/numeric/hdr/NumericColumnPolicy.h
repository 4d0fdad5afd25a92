#pragma once

class NumericInbetweenCell;
class NumericKeyCell;
class NumericSubColumn;

#include "kivlib/hdr/StoredClass.h"
#include "kivlib/hdr/Vector.h"

/// How the values of a numeric sub-column come about. The sub-column owns it.
class NumericColumnPolicy : public KIVObject {
    KIV_STORED_ABSTRACT(NumericColumnPolicy, KIVObject);

public:
    explicit NumericColumnPolicy(NumericSubColumn* sub_column) : sub_column(sub_column) {}
    explicit NumericColumnPolicy(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    virtual Vector update_inbetween_value(NumericInbetweenCell* cell) = 0;

    /// Empty if the value of a key is what the key says.
    virtual Vector update_key_value(NumericKeyCell* key) = 0;

    /// A copy for another sub-column.
    virtual gsl::owner<NumericColumnPolicy*> duplicate(NumericSubColumn* copy_owner) const = 0;

    /// The whole scene is in.
    virtual void load_finished() {}

    NumericSubColumn* inq_sub_column() const { return sub_column; }
    void set_sub_column(NumericSubColumn* owner) { sub_column = owner; }

private:
    template <class Record> void record(Record& r);

    NumericSubColumn* sub_column = nullptr; // not owned
};

/// Goes straight from key to key, at the pace of the earlier key's fairing.
class NormalNumericColumnPolicy : public NumericColumnPolicy {
    KIV_STORED(NormalNumericColumnPolicy, NumericColumnPolicy);

public:
    using NumericColumnPolicy::NumericColumnPolicy;

    Vector update_inbetween_value(NumericInbetweenCell* cell) override;
    Vector update_key_value(NumericKeyCell*) override { return {}; }
    gsl::owner<NumericColumnPolicy*> duplicate(NumericSubColumn* copy_owner) const override;
};
