#pragma once

#include "kivlib/hdr/IntVector2.h"
#include "kivlib/hdr/StoredClass.h"

#include <memory>
#include <span>

/// Elements of a value or of a point.
class BaseVector : public KIVObject {
public:
    using KIVObject::KIVObject;
    virtual std::span<const double> inq_elements() const = 0;

    int size() const { return static_cast<int>(inq_elements().size()); }

    /// An index out of range is reported and means 0.
    double elem(int i) const;

protected:
    /// `i` if it is an index of `elements`. Otherwise 0, and a report.
    static std::size_t check_index(int i, std::size_t elements);
};

/// A vector of any size. Up to four elements stand in the object itself.
class Vector : public BaseVector {
    KIV_STORED(Vector, KIVObject);

public:
    Vector() = default;
    explicit Vector(int size, double value = 0.0);
    Vector(const BaseVector& other) : Vector(other.inq_elements()) {}
    Vector(const Vector& other) : Vector(other.inq_elements()) {}
    explicit Vector(std::span<const double> elements);
    explicit Vector(KIVIStream& stream);
    Vector& operator=(const Vector& other);

    void storer(KIVOStream& stream) override;
    std::span<const double> inq_elements() const override { return {data(), count}; }
    std::span<double> inq_elements() { return {data(), count}; }

    /// New elements are 0.
    void resize(int size);
    double& elem(int i);
    double elem(int i) const
    {
        return static_cast<std::size_t>(i) < count ? data()[i] : BaseVector::elem(i);
    }

private:
    static constexpr std::size_t MOST_INSIDE = 4;

    const double* data() const { return outside ? outside.get() : inside; }
    double* data() { return outside ? outside.get() : inside; }

    std::size_t count = 0;
    double inside[MOST_INSIDE] = {};
    std::unique_ptr<double[]> outside; // the elements of a vector of more
};

class Vector3;

/// A point or a move in the plane.
class Vector2 : public BaseVector {
    KIV_STORED(Vector2, KIVObject);

public:
    Vector2() = default;
    Vector2(double x, double y) : elements{x, y} {}
    explicit Vector2(const BaseVector& other);
    explicit Vector2(const IntVector2& other);
    explicit Vector2(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    std::span<const double> inq_elements() const override { return elements; }

    double x() const { return elements[0]; }
    double y() const { return elements[1]; }
    double& elem(int i) { return elements[check_index(i, 2)]; }
    double elem(int i) const { return elements[check_index(i, 2)]; }

    double length() const;
    double distance(const Vector2& other) const;

    /// Turned counter-clockwise by `angle` radians.
    Vector2 rotate(double angle) const;

    bool operator==(const Vector2& other) const { return x() == other.x() && y() == other.y(); }

private:
    double elements[2] = {0.0, 0.0};
};

Vector2 operator+(const Vector2& a, const Vector2& b);
Vector2 operator-(const Vector2& a, const Vector2& b);
Vector2 operator-(const Vector2& v);
Vector2 operator*(const Vector2& v, double factor);
Vector2 operator*(double factor, const Vector2& v);

class Vector3 : public BaseVector {
    KIV_STORED(Vector3, KIVObject);

public:
    Vector3() = default;
    Vector3(double x, double y, double z) : elements{x, y, z} {}

    /// Elements that `other` lacks are 0.
    explicit Vector3(const BaseVector& other);
    explicit Vector3(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    std::span<const double> inq_elements() const override { return elements; }

    double& elem(int i) { return elements[check_index(i, 3)]; }
    double elem(int i) const { return elements[check_index(i, 3)]; }

private:
    double elements[3] = {0.0, 0.0, 0.0};
};

class Vector4 : public BaseVector {
    KIV_STORED(Vector4, KIVObject);

public:
    Vector4() = default;
    Vector4(double x, double y, double z, double w) : elements{x, y, z, w} {}

    /// Elements that `other` lacks are 0.
    explicit Vector4(const BaseVector& other);
    explicit Vector4(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    std::span<const double> inq_elements() const override { return elements; }

    double& elem(int i) { return elements[check_index(i, 4)]; }
    double elem(int i) const { return elements[check_index(i, 4)]; }

private:
    double elements[4] = {0.0, 0.0, 0.0, 0.0};
};

Vector operator*(double factor, const BaseVector& v);

/// As many elements as the longer of the two has.
Vector operator+(const BaseVector& a, const BaseVector& b);
