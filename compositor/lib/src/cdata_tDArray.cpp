#include "compositor/lib/hdr/cdata_tDArray.h"

#include "kivlib/hdr/KIVOStream.h"

#include <limits>

KIV_STORED_CLASS(cdata_tDArray, 75);

namespace {
std::unique_ptr<int[]> new_store(int elements)
{
    return std::make_unique_for_overwrite<int[]>(static_cast<std::size_t>(elements));
}
} // namespace

int cdata_tCoOp::obj_to_read(KIVIStream& stream)
{
    int element = 0;
    stream >> element;
    return element;
}

void cdata_tCoOp::store_elmt(KIVOStream& stream, const int& element)
{
    stream << element;
}

void cdata_tCoOp::dump_elmt(KIVOStream& stream, const int& element)
{
    stream << element;
}

cdata_tDArray::cdata_tDArray(int size)
    : allocated(std::max(size, 1)), used(std::max(size, 0)), data(new_store(allocated))
{}

cdata_tDArray::cdata_tDArray(const cdata_tDArray& other)
    : KIVObject(other), allocated(other.allocated), used(other.used), data(new_store(allocated))
{
    std::copy_n(other.data.get(), used, data.get());
}

cdata_tDArray& cdata_tDArray::operator=(const cdata_tDArray& other)
{
    if (this == &other)
        return *this;
    allocated = other.allocated;
    used = other.used;
    data = new_store(allocated);
    std::copy_n(other.data.get(), used, data.get());
    return *this;
}

cdata_tDArray::cdata_tDArray(KIVIStream& stream) : KIVObject(stream), allocated(0)
{
    stream >> allocated;
    used = stream.read_count(sizeof(int));
    if (allocated < used)
        stream.set_error_state(KIVStream::BAD_COUNT);
    if (stream.inq_error_state() == KIVStream::OKAY)
        data.reset(new (std::nothrow) int[static_cast<std::size_t>(allocated)]);
    if (!data) {
        stream.set_error_state(KIVStream::NO_MEMORY); // the first error stays
        *this = cdata_tDArray();
        return;
    }
    for (int i = 0; i < used; ++i)
        (*this)[i] = cdata_tCoOp::obj_to_read(stream);
}

void cdata_tDArray::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << allocated << used;
    for (int i = 0; i < used; ++i)
        cdata_tCoOp::store_elmt(stream, (*this)[i]);
}

void cdata_tDArray::dump_on(KIVOStream& stream) const
{
    stream << "cdata_tDArray size = " << used << "   allocated = " << allocated << "\n{\n";
    for (int i = 0; i < used; ++i) {
        stream << "Member (" << i << ") ";
        cdata_tCoOp::dump_elmt(stream, (*this)[i]);
        stream << " \n";
    }
    stream << "}\n";
}

bool cdata_tDArray::is_equal_to(const cdata_tDArray& other) const
{
    return std::equal(data.get(), data.get() + used, other.data.get(),
                      other.data.get() + other.used, cdata_tCoOp::inq_equal);
}

void cdata_tDArray::set_size(int size)
{
    const int wanted = std::max(size, 0);
    if (wanted > allocated) {
        constexpr int MOST = std::numeric_limits<int>::max();
        allocated = std::max(wanted, allocated > MOST / 2 ? MOST : 2 * allocated);
        std::unique_ptr<int[]> grown = new_store(allocated);
        std::copy_n(data.get(), used, grown.get());
        data = std::move(grown);
    }
    used = wanted;
}

void cdata_tDArray::set_size_at_least(int size)
{
    if (size > used)
        set_size(size);
}

void cdata_tDArray::insert_at(int i, const int& value)
{
    constexpr int MOST = std::numeric_limits<int>::max();
    if (i < 0 || std::max(i, used) == MOST)
        return;             // no size would hold it
    const int kept = value; // it may be one of ours
    const int old_size = used;
    set_size(std::max(i, used) + 1);
    if (i < old_size)
        std::copy_backward(data.get() + i, data.get() + old_size, data.get() + used);
    (*this)[i] = kept;
}

void cdata_tDArray::remove_at(int i)
{
    if (!is_index(i))
        return;
    std::copy(data.get() + i + 1, data.get() + used, data.get() + i);
    --used;
}

void cdata_tDArray::sort()
{
    std::sort(data.get(), data.get() + used,
              [](int a, int b) { return cdata_tCoOp::sort_ordering(a, b) < 0; });
}
