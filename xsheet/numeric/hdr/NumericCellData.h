#pragma once

class NumericInbetweenCell;
class NumericKeyCell;

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/Vector.h"
#include "xsheet/cell/hdr/CellData.h"

/// What a frame of a numeric sub-column holds: one or more numbers. It has no text.
class BaseNumericCellData : public CellData {
    KIV_STORED_ABSTRACT(BaseNumericCellData, CellData);

public:
    explicit BaseNumericCellData(BaseCell* cell);
    explicit BaseNumericCellData(KIVIStream& stream);
    BaseNumericCellData(const BaseNumericCellData& other) = default;

    /// All elements.
    virtual Vector inq_value() const = 0;
    virtual double inq_element(int i) const = 0;

    /// Keeps the value of a key within the limits of its sub-column.
    virtual void set_element(int i, double value) = 0;
    virtual int inq_order() const = 0;

    KIVString* inq_string() const override { return nullptr; }
    void set_string(const KIVString&) override {}

    /// Moves `value` to the nearer limit of element `index`; false if it had to. Only the data of
    /// a key has limits.
    bool check_number_in_limits(double* value, int index) const;

    /// Sets the leading elements, as many as `value` has.
    void set_value(const Vector& value);

protected:
    /// The value of an in-between: from its key's ratio data, or from the column's policy.
    static Vector construct_elements(NumericInbetweenCell* cell);

    /// What element `i` of a key is before anyone sets it: 0 without a sub-column.
    static double inq_blank_element(const NumericKeyCell& key, int i);
};

class Numeric1CellData : public BaseNumericCellData {
    KIV_STORED(Numeric1CellData, BaseNumericCellData);

public:
    explicit Numeric1CellData(NumericKeyCell* key);
    explicit Numeric1CellData(NumericInbetweenCell* cell);
    explicit Numeric1CellData(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<CellData*> duplicate() const override { return new Numeric1CellData(*this); }

    Vector inq_value() const override { return Vector(1, element); }

    /// The one element, whatever the index.
    double inq_element(int) const override { return element; }
    void set_element(int i, double value) override;
    int inq_order() const override { return 1; }

private:
    template <class Record> void record(Record& r);

    double element = 0.0;
};

/// The members that the data of two, three and four elements have in common.
template <class Elements> class FixedNumericCellData : public BaseNumericCellData {
public:
    using BaseNumericCellData::BaseNumericCellData;
    explicit FixedNumericCellData(KIVIStream& stream)
        : BaseNumericCellData(stream), elements(stream)
    {}

    void storer(KIVOStream& stream) override
    {
        BaseNumericCellData::storer(stream);
        stream.insert_without_class_hdr(&elements);
    }

    Vector inq_value() const override { return elements; }
    double inq_element(int i) const override { return elements.elem(i); }
    void set_element(int i, double value) override
    {
        check_number_in_limits(&value, i);
        elements.elem(i) = value;
        data_changed();
    }
    int inq_order() const override { return elements.size(); }
    const Elements& inq_vector() const { return elements; }

protected:
    Elements elements;
};

class Numeric2CellData : public FixedNumericCellData<Vector2> {
    KIV_STORED(Numeric2CellData, BaseNumericCellData);

public:
    explicit Numeric2CellData(NumericKeyCell* key);
    explicit Numeric2CellData(NumericInbetweenCell* cell);
    explicit Numeric2CellData(KIVIStream& stream) : FixedNumericCellData(stream) {}

    gsl::owner<CellData*> duplicate() const override { return new Numeric2CellData(*this); }
};

class Numeric3CellData : public FixedNumericCellData<Vector3> {
    KIV_STORED(Numeric3CellData, BaseNumericCellData);

public:
    explicit Numeric3CellData(NumericKeyCell* key);
    explicit Numeric3CellData(NumericInbetweenCell* cell);
    explicit Numeric3CellData(KIVIStream& stream) : FixedNumericCellData(stream) {}

    gsl::owner<CellData*> duplicate() const override { return new Numeric3CellData(*this); }
};

class Numeric4CellData : public FixedNumericCellData<Vector4> {
    KIV_STORED(Numeric4CellData, BaseNumericCellData);

public:
    explicit Numeric4CellData(NumericKeyCell* key);
    explicit Numeric4CellData(NumericInbetweenCell* cell);
    explicit Numeric4CellData(KIVIStream& stream) : FixedNumericCellData(stream) {}

    gsl::owner<CellData*> duplicate() const override { return new Numeric4CellData(*this); }
};

/// Any number of elements.
class NumericNCellData : public BaseNumericCellData {
    KIV_STORED(NumericNCellData, BaseNumericCellData);

public:
    NumericNCellData(NumericKeyCell* key, int order);
    NumericNCellData(NumericInbetweenCell* cell, int order);
    explicit NumericNCellData(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<CellData*> duplicate() const override { return new NumericNCellData(*this); }

    Vector inq_value() const override { return elements; }
    double inq_element(int i) const override { return elements.elem(i); }
    void set_element(int i, double value) override;

    /// That of the cell's sub-column.
    int inq_order() const override;

private:
    template <class Record> void record(Record& r);

    Vector elements;
};
