#include "compositor/affine/lib/test/OldNode.h"
#include "compositor/affine/lib/test/keyed.h"
#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/Matrix.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"
#include "xsheet/numeric/hdr/WidthSubColumn.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {
constexpr int LAST_KEY = 11;
constexpr double RADIANS = 3.14159265358979323846 / 180.0;

struct Point {
    double x;
    double y;
};

Point turned(Point p, double degrees)
{
    const double c = std::cos(degrees * RADIANS);
    const double s = std::sin(degrees * RADIANS);
    return {c * p.x - s * p.y, s * p.x + c * p.y};
}

using Values = std::vector<double>;

/// Where a node with these values in its columns takes a point.
using Map = Point (*)(Point p, const Values& v);

constexpr int NONE = -1;

/// Moved by the values of these numbers.
template <int X, int Y> Point moved(Point p, const Values& v)
{
    return {X == NONE ? p.x : p.x + v[X], Y == NONE ? p.y : p.y + v[Y]};
}

template <int X, int Y> Point scaled(Point p, const Values& v)
{
    return {X == NONE ? p.x : p.x * v[X], Y == NONE ? p.y : p.y * v[Y]};
}

template <int X, int Y> Point flipped(Point p, const Values&)
{
    return {X * p.x, Y * p.y};
}

template <int SIGN> Point turned(Point p, const Values& v)
{
    return turned(p, SIGN * v[0]);
}

/// Moved by (v0, v1), turned by v2 and scaled by v3 about (v4, v5).
Point transform(Point p, const Values& v)
{
    const Point q = turned({p.x - v[4], p.y - v[5]}, v[2]);
    return {v[4] + v[0] + v[3] * q.x, v[5] + v[1] + v[3] * q.y};
}

/// What a camera at (v0, v1), turned by v2 and v3 wide sees at a point of the world.
Point camera(Point p, const Values& v)
{
    const Point q = turned({p.x - v[0], p.y - v[1]}, -v[2]);
    return {q.x * 720.0 / v[3], q.y * 720.0 / v[3]};
}

Point camera_size(Point p, const Values& v)
{
    return {p.x * 720.0 / v[0], p.y * 720.0 / v[0]};
}

Point shear(Point p, const Values& v)
{
    const Point q = turned(p, v[2]);
    const double y = q.y * v[4];
    return {v[0] + q.x * v[3] - std::tan(v[5] * RADIANS) * y, v[1] + y};
}

struct Row {
    const char* class_name;
    Map map;
    Values first; // on frame 1, in the order of the sub-columns and their elements
    Values last;
    const char* old_columns = ""; // kinds, in the order of their labels from 1 on
    int n_old_numbers = 0;
    bool is_only_read = false; // a new node behaves otherwise
};

// The old kinds: N numeric, D of two elements, T translation, A angle, S scale, W width.
const Row ROWS[] = {
    {"CNodeTransform", transform, {3, -4, 20, 0.5, 7, -3}, {30, 8, -70, 2, 10, 5}, "NNASD", 0},
    {"CNodeCamera", camera, {100, -40, 30, 720}, {-20, 16, -45, 360}, "NNAW", 4},
    {"CNodeTranslate", moved<0, 1>, {3, 5}, {-11, 40}, "T", 1},
    {"CNodeNSTranslate", moved<NONE, 0>, {3}, {-11}, "N", 1},
    {"CNodeEWTranslate", moved<0, NONE>, {3}, {-11}, "N", 1},
    {"CNodeZTranslate", moved<NONE, NONE>, {3}, {-11}},
    {"CNodeRotate", turned<1>, {90}, {-270}, "A", 1},
    {"CNodeScale", scaled<0, 0>, {0.25}, {3}, "S", 1},
    {"CNodeXScale", scaled<0, NONE>, {0.25}, {3}, "S"},
    {"CNodeYScale", scaled<NONE, 0>, {0.25}, {3}, "S"},
    {"CNodeXYScale", scaled<0, 1>, {0.25, 5}, {3, 4}, "SS", 1},
    {"CNodeHorFlip", flipped<-1, 1>, {}, {}},
    {"CNodeVerFlip", flipped<1, -1>, {}, {}},
    {"CNodeShearTransform", shear, {10, 20, 90, 2, -3, 45}, {-5, 8, 0, -1, 2, -30}, "NNASSA"},
    {"CNodeCameraTranslate", moved<NONE, NONE>, {3, 5}, {-11, 40}},
    {"CNodeCameraTranslate", moved<0, 1>, {3, 5}, {-11, 40}, "D", 1, true},
    {"CNodeCameraRotate", turned<-1>, {90}, {-10}, "A", 1},
    {"CNodeCameraSize", camera_size, {720}, {90}, "W", 1}};

/// All numeric columns of a list, with those inside move columns.
void gather_numeric(SubColumn* column, std::vector<NumericSubColumn*>& numeric)
{
    if (auto* move = object_cast<MoveColumn>(column))
        for (SubColumn* member : move->inq_sub_column_list()->of<SubColumn>())
            gather_numeric(member, numeric);
    else
        numeric.push_back(static_cast<NumericSubColumn*>(column));
}

/// Smooth at both keys: at the share t of the time, t * t * (3 - 2 * t) of the way.
void ease(KeyCell& key)
{
    auto* fairing = new Fairing(LAST_KEY - 2);
    fairing->create_empty_cps(2);
    fairing->inq_control_point(0)->after = {1.0 / 3.0, 0.0};
    fairing->inq_control_point(1)->point = {1.0, 1.0};
    fairing->inq_control_point(1)->before = {-1.0 / 3.0, 0.0};
    key.set_fairing(fairing);
}

void key_columns(const std::vector<NumericSubColumn*>& columns, const Row& row, bool is_eased)
{
    std::size_t i = 0;
    for (NumericSubColumn* column : columns) {
        KeyCell* keys[] = {column->make_key(1), column->make_key(LAST_KEY)};
        keys[0]->set_mode(IM_INBETWEEN);
        if (is_eased)
            ease(*keys[0]);
        for (int element = 0; element < column->inq_order(); ++element, ++i) {
            static_cast<BaseNumericCellData*>(keys[0]->inq_data())
                ->set_element(element, row.first.at(i));
            static_cast<BaseNumericCellData*>(keys[1]->inq_data())
                ->set_element(element, row.last.at(i));
        }
    }
    EXPECT_EQ(i, row.first.size()) << row.class_name;
}

void expect_matrices(const CNodeAffineTransform& node, const Row& row, bool is_eased)
{
    for (const int frame : {1, 4, 6, LAST_KEY, LAST_KEY + 4}) {
        const double time = std::min(1.0, (frame - 1) / (LAST_KEY - 1.0));
        const double share = is_eased ? time * time * (3.0 - 2.0 * time) : time;
        Values now;
        for (std::size_t i = 0; i < row.first.size(); ++i)
            now.push_back(row.first[i] + share * (row.last[i] - row.first[i]));
        for (const Point p : {Point{0, 0}, Point{100, 0}, Point{0, 100}}) {
            const Point wanted = row.map(p, now);
            const Vector2 found = node.inq_node_transform(frame) * Vector2(p.x, p.y);
            EXPECT_NEAR(found.x(), wanted.x, 1e-9) << row.class_name << " at " << frame;
            EXPECT_NEAR(found.y(), wanted.y, 1e-9) << row.class_name << " at " << frame;
        }
    }
}

/// The keys of a file are not held to a limit.
gsl::owner<NumericSubColumn*> new_free_scale()
{
    auto* scale = new ScaleSubColumn;
    scale->set_minimum_values(Vector(1, -1e14));
    return scale;
}

gsl::owner<NumericSubColumn*> new_old_column(char kind)
{
    switch (kind) {
    case 'D':
        return new NumericSubColumn(2);
    case 'T':
        return new NumericTSubColumn;
    case 'A':
        return new AngleSubColumn;
    case 'S':
        return new_free_scale();
    case 'W':
        return new WidthSubColumn;
    default:
        return new NumericSubColumn;
    }
}
} // namespace

TEST(Matrices, are_those_of_the_keyed_columns_on_every_frame)
{
    for (const Row& row : ROWS)
        for (const bool is_eased : {false, true}) {
            if (row.is_only_read)
                continue;
            const std::unique_ptr<CNodeAffineTransform> node(new_affine_node(row.class_name));
            std::vector<NumericSubColumn*> numeric;
            for (auto* member : node->inq_column()->inq_sub_column_list()->of<SubColumn>())
                gather_numeric(member, numeric);
            key_columns(numeric, row, is_eased);
            expect_matrices(*node, row, is_eased);
        }
}

TEST(Matrices, of_old_files_are_the_same)
{
    for (const Row& row : ROWS)
        for (const bool is_eased : {false, true}) {
            std::vector<SubColumn*> columns;
            std::vector<NumericSubColumn*> numeric;
            for (const char* kind = row.old_columns; *kind; ++kind) {
                NumericSubColumn* column = new_old_column(*kind);
                column->init_after_construction();
                numeric.push_back(column);
                columns.push_back(labelled(static_cast<unsigned>(numeric.size()), column));
            }
            if (columns.empty())
                continue; // nothing of it is in old files
            key_columns(numeric, row, is_eased);
            const OldNode old(row.class_name, row.n_old_numbers, columns);
            expect_matrices(*old.node, row, is_eased);
        }
}
