#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <cstddef>
#include <memory>

/// Operations on one element of a `cdata_tDArray`.
class cdata_tCoOp {
public:
    static int obj_to_read(KIVIStream& stream);
    static void store_elmt(KIVOStream& stream, const int& element);
    static void dump_elmt(KIVOStream& stream, const int& element);

    /// -1, 0 or 1.
    static int sort_ordering(const int& a, const int& b) { return (a > b) - (a < b); }
    static unsigned long inq_hash(const int& element)
    {
        return static_cast<unsigned long>(element);
    }
    static bool inq_equal(const int& a, const int& b) { return a == b; }
};

/// Data types in an order, as the type check carries them from channel to channel. The store
/// doubles when it grows and never shrinks; new elements are not cleared.
class cdata_tDArray : public KIVObject {
    KIV_STORED(cdata_tDArray, KIVObject);

public:
    explicit cdata_tDArray(int size = 0);
    explicit cdata_tDArray(KIVIStream& stream);
    cdata_tDArray(const cdata_tDArray& other);
    cdata_tDArray& operator=(const cdata_tDArray& other);

    void storer(KIVOStream& stream) override;
    void dump_on(KIVOStream& stream) const override;
    gsl::owner<KIVObject*> clone() const override { return new cdata_tDArray(*this); }

    int size() const { return used; }
    bool empty() const { return used == 0; }

    /// Unchecked.
    int& operator[](int i) { return data[static_cast<std::size_t>(i)]; }
    const int& operator[](int i) const { return data[static_cast<std::size_t>(i)]; }

    /// Null out of range.
    int* inq_data_ptr(int i) { return is_index(i) ? &data[static_cast<std::size_t>(i)] : nullptr; }
    const int* inq_data_ptr(int i) const
    {
        return is_index(i) ? &data[static_cast<std::size_t>(i)] : nullptr;
    }

    /// How many elements there is room for.
    int inq_allocated() const { return allocated; }
    bool is_equal_to(const cdata_tDArray& other) const;

    void insert_tail(const int& value) { insert_at(used, value); }
    void remove_tail() { set_size(used - 1); }

    /// Beyond the end the array grows up to `i`.
    void insert_at(int i, const int& value);
    void remove_at(int i);
    void set_size(int size);
    void set_size_at_least(int size);

    /// Ascending.
    void sort();

private:
    bool is_index(int i) const { return 0 <= i && i < used; }

    int allocated;
    int used;
    std::unique_ptr<int[]> data;
};

/// A place in an array: what the two iterators share.
template <class Array> class cdata_tDArrayPlace {
public:
    explicit cdata_tDArrayPlace(Array& array) : array(array) {}

    bool ok() const { return 0 <= position && position < array.size(); }
    void advance() { ++position; }
    void retreat() { --position; }
    int inq_position() const { return position; }
    bool set_position(int p)
    {
        position = p;
        return ok();
    }
    void reset_to_start() { position = 0; }

    /// From the current element on; past the end if there is none.
    bool forward_to_equal(const int& value)
    {
        while (ok() && !cdata_tCoOp::inq_equal(array[position], value))
            advance();
        return ok();
    }

    /// The first that is greater than `value`.
    bool forward_to_successor(const int& value)
    {
        while (ok() && cdata_tCoOp::sort_ordering(array[position], value) <= 0)
            advance();
        return ok();
    }

protected:
    Array& array;
    int position = 0;
};

class cdata_tDArrayROIt : public cdata_tDArrayPlace<const cdata_tDArray> {
public:
    using cdata_tDArrayPlace::cdata_tDArrayPlace;

    const int& cval() const { return array[position]; }
};

class cdata_tDArrayRWIt : public cdata_tDArrayPlace<cdata_tDArray> {
public:
    using cdata_tDArrayPlace::cdata_tDArrayPlace;

    int& val() const { return array[position]; }

    /// Both stay on the same element.
    void insert_before(const int& value) { array.insert_at(position++, value); }
    void insert_after(const int& value) { array.insert_at(position + 1, value); }

    /// Then stands on the next element.
    void delete_node() { array.remove_at(position); }
};
