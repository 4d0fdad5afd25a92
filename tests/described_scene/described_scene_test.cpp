#include "scene/hdr/KIVScene.h"
#include "tests/support/TempFolder.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/move/hdr/MoveColumn.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <sstream>

// A scene that montaray-scene builds from a description, against positions and colours that are
// worked out here, from the description alone.

namespace {
constexpr int LENGTH = 48;
constexpr double CLOSE = 1e-6;

constexpr char DESCRIPTION[] = R"({
  "length": 48,
  "notes": [ { "frame": 12, "text": "She looks down" } ],
  "nodes": [
    { "name": "Output", "class": "CNodeRostrum", "inputs": ["Flight", "Sky"] },
    { "name": "Flight", "type": "Move", "inputs": ["Bird"],
      "columns": { "Move": { "path": {
        "knots": [ { "at": [-250, -120], "out": [0, 200] },
                   { "at": [0, 100], "in": [-150, 0], "out": [150, 0] },
                   { "at": [250, -120], "in": [0, 200] } ],
        "keys": [ { "frame": 1, "knot": 1, "ease": "in_out" },
                  { "frame": 33, "knot": 3, "ease": [0.2, 0.6, 0.4, 1] },
                  { "frame": 48, "distance": 100 } ] } } } },
    { "name": "Shadow", "type": "Move", "inputs": ["Bird"],
      "columns": { "Move": { "x": [ { "frame": 1, "value": -30, "follows": {
        "column": ["Flight", "Move", "path"], "ratio": 0.5, "lock_frame": 20 } } ] } } },
    { "name": "Bird", "type": "BG/OL", "columns": {
      "BG/OL": [ { "frame": 1, "file": "bird.ppm" } ] } },
    { "name": "Sky", "type": "Color Card", "columns": { "Color": { "space": "hsv", "keys": [
      { "frame": 1, "value": [0, 0, 1], "ease": "in" }, { "frame": 48, "value": [1, 0, 0] } ] } } }
  ] })";

using Point = std::array<double, 2>;

/// Four control points.
struct Curve {
    std::array<Point, 4> points;

    Point at(double t) const
    {
        std::array<Point, 4> p = points;
        for (int left = 3; left > 0; --left)
            for (std::size_t i = 0; i < static_cast<std::size_t>(left); ++i)
                for (std::size_t axis = 0; axis < 2; ++axis)
                    p[i][axis] += t * (p[i + 1][axis] - p[i][axis]);
        return p[0];
    }

    double speed(double t) const
    {
        const double s = 1.0 - t;
        double square = 0.0;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const auto leg = [&](std::size_t i) { return points[i + 1][axis] - points[i][axis]; };
            square += std::pow(3 * (s * s * leg(0) + 2 * s * t * leg(1) + t * t * leg(2)), 2);
        }
        return std::sqrt(square);
    }

    /// By Simpson's rule.
    double length(double to) const
    {
        constexpr int STEPS = 1000;
        double sum = speed(0.0) + speed(to);
        for (int i = 1; i < STEPS; ++i)
            sum += (i % 2 == 1 ? 4 : 2) * speed(to * i / STEPS);
        return sum * to / STEPS / 3;
    }
};

const Curve RISE{{{{-250, -120}, {-250, 80}, {-150, 100}, {0, 100}}}};
const Curve FALL{{{{0, 100}, {150, 100}, {250, 80}, {250, -120}}}};

/// Where `rising`, which climbs from 0 to 1, reaches `goal`.
template <class Rising> double solve(double goal, Rising rising)
{
    double low = 0.0, high = 1.0;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (rising(middle) < goal ? low : high) = middle;
    }
    return low;
}

double ease(double x1, double y1, double x2, double y2, double time)
{
    const Curve curve{{{{0, 0}, {x1, y1}, {x2, y2}, {1, 1}}}};
    return curve.at(solve(time, [&](double u) { return curve.at(u)[0]; }))[1];
}

Point bird_at(int frame)
{
    const double rise = RISE.length(1.0), whole = rise + FALL.length(1.0);
    const double distance =
        frame < 33 ? whole * ease(0.42, 0, 0.58, 1, (frame - 1) / 32.0)
                   : std::lerp(whole, 100.0, ease(0.2, 0.6, 0.4, 1, (frame - 33) / 15.0));
    const Curve& curve = distance < rise ? RISE : FALL;
    const double behind = distance < rise ? distance : distance - rise;
    return curve.at(solve(behind, [&](double t) { return curve.length(t); }));
}

/// From blue by way of magenta to red.
KIVColour sky_at(int frame)
{
    const double way = 2 * ease(0.42, 0, 1, 1, (frame - 1) / 47.0);
    return {std::min(way, 1.0), 0.0, std::min(2 - way, 1.0)};
}

/// Built by the program, and loaded.
struct Described {
    Described()
    {
        folder.write("scene.json", DESCRIPTION);
        folder.write("bird.ppm", "P3 2 2 255  0 255 0  0 255 0  0 255 0  0 255 0");
        std::ostringstream command;
        command << std::quoted(MONTARAY_SCENE) << " build "
                << std::quoted(folder.path("scene.json").str()) << ' '
                << std::quoted(folder.path("scene").str());
        if (std::system(command.str().c_str()) == 0)
            scene.reset(KIVScene::load_from_file(folder.path("scene"), nullptr, false));
    }

    template <class Wanted> Wanted* find(const char* name) const
    {
        SubColumn* found = nullptr;
        scene->inq_xsheet()->search_for_sub_column_name(name, &found, false);
        return static_cast<Wanted*>(found);
    }

    template <class Wanted> Wanted* find(const char* node, int member) const
    {
        return static_cast<Wanted*>(find<Column>(node)->inq_sub_column_list()->at_index(member));
    }

    TempFolder folder;
    std::unique_ptr<KIVScene> scene;
};
} // namespace

TEST(DescribedScene, moves_along_its_curve_as_its_easing_says)
{
    const Described described;
    ASSERT_TRUE(described.scene);
    auto* flight = described.find<MoveColumn>("Flight", 0);
    auto* shadow = described.find<MoveColumn>("Shadow", 0);
    auto* sky = described.find<ColourSubColumn>("Sky", 0);
    const double locked = bird_at(20)[0];
    for (int frame = 1; frame <= LENGTH; ++frame) {
        const Point bird = bird_at(frame);
        EXPECT_NEAR(flight->inq_translation(frame).x(), bird[0], CLOSE) << frame;
        EXPECT_NEAR(flight->inq_translation(frame).y(), bird[1], CLOSE) << frame;
        EXPECT_NEAR(shadow->inq_translation(frame).x(), -30 + 0.5 * (bird[0] - locked), CLOSE);
        EXPECT_NEAR(sky->inq_colour(frame).inq_red(), sky_at(frame).inq_red(), CLOSE) << frame;
        EXPECT_NEAR(sky->inq_colour(frame).inq_blue(), sky_at(frame).inq_blue(), CLOSE) << frame;
    }
    SubColumn* notes = described.find<SubColumn>("Notes", 0);
    EXPECT_EQ(*notes->inq_cell(12)->inq_data()->inq_string(), "She looks down");
    EXPECT_EQ(notes->inq_cell(13), nullptr);
}
