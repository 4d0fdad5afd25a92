#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

class KIVPixmap;

/// A side of such a copy.
inline int half_of(int size)
{
    return std::max(1, size / 2);
}

/// Makes single rows of a copy that is half as large.
class RowMaker {
public:
    virtual ~RowMaker() = default;

    /// From this row on, so many rows of the source go into row `y`.
    int inq_first(int y) const
    {
        return static_cast<int>(std::int64_t{y} * source_height / height);
    }
    int inq_count() const { return (source_height + height - 1) / height; }

    virtual void make_row(unsigned char* out, const unsigned char* const* rows, int y) = 0;

protected:
    RowMaker(int source_height, int height) : source_height(source_height), height(height) {}

private:
    const int source_height;
    const int height;
};

/// A copy of a pixmap with alpha at half its width, its height or both, each pixel the mean of the
/// area that it stands for; odd sizes are rounded down, and nothing goes below 1. Null without
/// memory.
std::unique_ptr<KIVPixmap> make_reduced(const KIVPixmap& source, bool halve_width,
                                        bool halve_height);

/// The same while the rows of the source come from its top.
class GrowingCopy {
public:
    GrowingCopy(const KIVPixmap& source, bool halve_width, bool halve_height);

    /// Makes the rows that the first `source_rows` rows are enough for, and gives how many there
    /// are. There must be memory.
    int make_rows(int source_rows);

    /// Null without memory.
    KIVPixmap* inq_copy() const { return copy.get(); }
    std::unique_ptr<KIVPixmap> take_copy() { return std::move(copy); }

private:
    const KIVPixmap& source; // not owned
    std::unique_ptr<KIVPixmap> copy;
    std::unique_ptr<RowMaker> maker;
    int made = 0;
};

/// The same for rows that come one by one, with both sides halved.
class RowReducer {
public:
    RowReducer(int source_width, int source_height, int bits);

    /// Takes the next row of the source, and gives the row of the copy that it completes, until the
    /// next call; null for none.
    const unsigned char* take_row(const void* row);

private:
    const int width;
    const int height;
    const std::size_t row_bytes; // of the source
    const std::unique_ptr<RowMaker> maker;
    std::vector<std::vector<unsigned char>> last_rows; // of the source, by number
    std::vector<unsigned char> made;
    int taken = 0;
    int given = 0;
};
