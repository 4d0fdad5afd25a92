#include "kivlib/hdr/Vector.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/report_error.h"

KIV_STORED_CLASS(Vector, -1);
KIV_STORED_CLASS(Vector2, -1);
KIV_STORED_CLASS(Vector3, -1);
KIV_STORED_CLASS(Vector4, -1);

namespace {
void report_bad_index(int line = __builtin_LINE())
{
    report_error("kivlib/hdr/Vector", line)
        << "VECLIB [Vector::elem]: element index out of bounds\n";
}

void copy_elements(const BaseVector& from, std::span<double> to)
{
    const std::span<const double> elements = from.inq_elements();
    std::ranges::copy(elements.first(std::min(elements.size(), to.size())), to.begin());
}

void read_elements(KIVIStream& stream, std::span<double> to)
{
    for (double& element : to)
        stream >> element;
}

void store_elements(KIVOStream& stream, std::span<const double> from)
{
    for (const double element : from)
        stream << element;
}
} // namespace

std::size_t BaseVector::check_index(int i, std::size_t elements)
{
    if (i >= 0 && static_cast<std::size_t>(i) < elements)
        return static_cast<std::size_t>(i);
    report_bad_index();
    return 0;
}

double BaseVector::elem(int i) const
{
    const std::span<const double> elements = inq_elements();
    const std::size_t index = check_index(i, elements.size());
    return elements.empty() ? 0.0 : elements[index];
}

Vector::Vector(int size, double value)
{
    resize(size);
    std::ranges::fill(inq_elements(), value);
}

Vector::Vector(std::span<const double> elements)
{
    resize(static_cast<int>(elements.size()));
    std::ranges::copy(elements, data());
}

Vector::Vector(KIVIStream& stream) : BaseVector(stream)
{
    resize(stream.read_count(sizeof(double)));
    read_elements(stream, inq_elements());
}

Vector& Vector::operator=(const Vector& other)
{
    if (this == &other)
        return *this;
    resize(other.size());
    std::ranges::copy(other.inq_elements(), data());
    return *this;
}

void Vector::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << size();
    store_elements(stream, inq_elements());
}

void Vector::resize(int size)
{
    const auto new_count = static_cast<std::size_t>(std::max(size, 0));
    if (new_count > MOST_INSIDE && new_count > count) {
        auto larger = std::make_unique<double[]>(new_count);
        std::ranges::copy(inq_elements(), larger.get());
        outside = std::move(larger);
    } else if (new_count <= MOST_INSIDE && outside) {
        std::copy_n(outside.get(), new_count, inside);
        outside.reset();
    }
    count = new_count;
    std::fill(data() + count, data() + std::max(count, MOST_INSIDE), 0.0);
}

double& Vector::elem(int i)
{
    if (count == 0) {
        check_index(i, 0);
        resize(1); // somewhere for the caller to write
        return inside[0];
    }
    return data()[check_index(i, count)];
}

Vector2::Vector2(const BaseVector& other)
{
    copy_elements(other, elements);
}

Vector2::Vector2(const IntVector2& other)
    : elements{static_cast<double>(other.x()), static_cast<double>(other.y())}
{}

Vector2::Vector2(KIVIStream& stream) : BaseVector(stream)
{
    read_elements(stream, elements);
}

void Vector2::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    store_elements(stream, elements);
}

double Vector2::length() const
{
    return std::hypot(x(), y());
}

double Vector2::distance(const Vector2& other) const
{
    return (*this - other).length();
}

Vector2 Vector2::rotate(double angle) const
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c * x() - s * y(), s * x() + c * y()};
}

Vector2 operator+(const Vector2& a, const Vector2& b)
{
    return {a.x() + b.x(), a.y() + b.y()};
}

Vector2 operator-(const Vector2& a, const Vector2& b)
{
    return {a.x() - b.x(), a.y() - b.y()};
}

Vector2 operator-(const Vector2& v)
{
    return {-v.x(), -v.y()};
}

Vector2 operator*(const Vector2& v, double factor)
{
    return {v.x() * factor, v.y() * factor};
}

Vector2 operator*(double factor, const Vector2& v)
{
    return v * factor;
}

Vector3::Vector3(const BaseVector& other)
{
    copy_elements(other, elements);
}

Vector3::Vector3(KIVIStream& stream) : BaseVector(stream)
{
    read_elements(stream, elements);
}

void Vector3::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    store_elements(stream, elements);
}

Vector4::Vector4(const BaseVector& other)
{
    copy_elements(other, elements);
}

Vector4::Vector4(KIVIStream& stream) : BaseVector(stream)
{
    read_elements(stream, elements);
}

void Vector4::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    store_elements(stream, elements);
}

Vector operator*(double factor, const BaseVector& v)
{
    Vector product(v);
    for (int i = 0; i < product.size(); ++i)
        product.elem(i) *= factor;
    return product;
}

Vector operator+(const BaseVector& a, const BaseVector& b)
{
    Vector sum(a.size() >= b.size() ? a : b);
    const BaseVector& shorter = a.size() >= b.size() ? b : a;
    for (int i = 0; i < shorter.size(); ++i)
        sum.elem(i) += shorter.elem(i);
    return sum;
}
