#pragma once

class Vector2;

/// A place or a size in whole pixels.
class IntVector2 {
public:
    IntVector2() = default;
    IntVector2(long x, long y) : x_part(x), y_part(y) {}

    long x() const { return x_part; }
    long y() const { return y_part; }

    /// Each part rounded up to a whole number.
    static IntVector2 roundup(const Vector2& v);

    bool operator==(const IntVector2&) const = default;

private:
    long x_part = 0;
    long y_part = 0;
};

inline IntVector2 operator+(const IntVector2& a, const IntVector2& b)
{
    return {a.x() + b.x(), a.y() + b.y()};
}
inline IntVector2 operator-(const IntVector2& a, const IntVector2& b)
{
    return {a.x() - b.x(), a.y() - b.y()};
}
