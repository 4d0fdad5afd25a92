#pragma once

class Knot;
struct CurvePosition;

#include <memory>
#include <vector>

/// How far it is along a squidge as it stands. The way from each knot to the next is cut into
/// pieces so smooth that one quadrature measures each, so every question costs the same.
class ArcLengthTable {
public:
    explicit ArcLengthTable(const std::vector<std::unique_ptr<Knot>>& knots);

    double inq_length() const { return pieces.empty() ? 0.0 : pieces.back().end; }

    /// Distances are from the first knot.
    double distance_at(const CurvePosition& position, std::size_t knot_index) const;

    /// There is a knot. Distances beyond an end mean the end.
    CurvePosition position_at(double distance) const;

private:
    /// A third of the velocity at a parameter is `start` + parameter * (`rise` + parameter *
    /// `bend`).
    struct Span {
        explicit Span(const Knot& from, const Knot& to);

        double speed_at(double parameter) const;
        double measure(double from, double to) const;

        const Knot* knot; // not owned
        double start[2];
        double rise[2];
        double bend[2];
        double reach; // of its handles: it is no longer than that
        std::size_t first_piece = 0;
    };

    struct Piece {
        std::size_t span;
        double from; // parameters
        double to;
        double begin; // distances
        double end;
    };

    void cut_into_pieces(std::size_t span);
    std::vector<Piece>::const_iterator place_at(std::size_t piece) const;
    double find_parameter(const Piece& piece, double length) const;

    const Knot* last_knot; // not owned
    std::vector<Span> spans;
    std::vector<Piece> pieces;
};
