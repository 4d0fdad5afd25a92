#include "curveslib/src/ArcLengthTable.h"

#include "curveslib/hdr/Squidge.h"

namespace {
// Gauss and Legendre's places and weights on the way from -1 to 1, one half of eight.
constexpr double PLACES[] = {0.1834346424956498, 0.5255324099163290, 0.7966664774136267,
                             0.9602898564975363};
constexpr double WEIGHTS[] = {0.3626837833783620, 0.3137066458778873, 0.2223810344533745,
                              0.1012285362903763};

constexpr double EXACT = 1e-13; // of the reach of a span, in each of its pieces
constexpr double SMALLEST_PIECE = 0x1p-40;
constexpr double LEAST_REACH = 1e-140; // whose squares are still numbers of full precision

constexpr double CLOSE = 1e-12; // of the length of a piece
constexpr int MOST_STEPS = 60;
} // namespace

ArcLengthTable::Span::Span(const Knot& from, const Knot& to) : knot(&from)
{
    const Vector2& leaving = from.inq_handle_after();
    const Vector2 middle = to.inq_place() + to.inq_handle_before() - from.inq_place() - leaving;
    const Vector2 arriving = -to.inq_handle_before();
    for (int i = 0; i < 2; ++i) {
        start[i] = leaving.elem(i);
        rise[i] = 2.0 * (middle.elem(i) - leaving.elem(i));
        bend[i] = leaving.elem(i) - 2.0 * middle.elem(i) + arriving.elem(i);
    }
    reach = leaving.length() + middle.length() + arriving.length();
}

double ArcLengthTable::Span::speed_at(double parameter) const
{
    const double x = start[0] + parameter * (rise[0] + parameter * bend[0]);
    const double y = start[1] + parameter * (rise[1] + parameter * bend[1]);
    return 3.0 * std::sqrt(x * x + y * y);
}

double ArcLengthTable::Span::measure(double from, double to) const
{
    const double middle = 0.5 * (from + to);
    const double half = 0.5 * (to - from);
    double length = 0.0;
    for (int i = 0; i < 4; ++i)
        length += WEIGHTS[i] *
                  (speed_at(middle - half * PLACES[i]) + speed_at(middle + half * PLACES[i]));
    return length * half;
}

ArcLengthTable::ArcLengthTable(const std::vector<std::unique_ptr<Knot>>& knots)
    : last_knot(knots.empty() ? nullptr : knots.back().get())
{
    spans.reserve(knots.size());
    for (const auto& knot : knots) {
        const Knot* next = knot->inq_next();
        if (!next)
            break;
        spans.emplace_back(*knot, *next);
        cut_into_pieces(spans.size() - 1);
    }
}

// Where the curve turns on the spot its speed has a corner, which no quadrature likes: pieces get
// smaller towards it until it does not count.
void ArcLengthTable::cut_into_pieces(std::size_t index)
{
    Span& span = spans[index];
    span.first_piece = pieces.size();
    double width = 1.0;
    for (double from = 0.0; from < 1.0;) {
        const double to = from + width;
        const double middle = 0.5 * (from + to);
        const double length = span.measure(from, to);
        const double halves = span.measure(from, middle) + span.measure(middle, to);
        const bool is_exact = std::abs(length - halves) <= EXACT * span.reach;
        if (!is_exact && span.reach > LEAST_REACH && width > SMALLEST_PIECE) {
            width *= 0.5;
            continue;
        }
        const double begin = inq_length();
        pieces.push_back({index, from, to, begin, begin + halves});
        from = to;
        while (from < 1.0 && std::fmod(from, 2.0 * width) == 0.0 && from + 2.0 * width <= 1.0)
            width *= 2.0;
    }
}

std::vector<ArcLengthTable::Piece>::const_iterator ArcLengthTable::place_at(std::size_t piece) const
{
    return pieces.begin() + static_cast<std::ptrdiff_t>(piece);
}

double ArcLengthTable::distance_at(const CurvePosition& position, std::size_t knot_index) const
{
    if (knot_index >= spans.size())
        return inq_length();
    const Span& span = spans[knot_index];
    const bool is_last = knot_index + 1 == spans.size();
    const auto end = place_at(is_last ? pieces.size() : spans[knot_index + 1].first_piece);
    const auto piece = std::ranges::upper_bound(place_at(span.first_piece), end, position.parameter,
                                                {}, &Piece::to);
    if (piece == end)
        return (piece - 1)->end;
    return piece->begin + span.measure(piece->from, position.parameter);
}

CurvePosition ArcLengthTable::position_at(double distance) const
{
    if (pieces.empty())
        return {last_knot, 0.0};
    const auto piece = std::ranges::lower_bound(pieces, distance, {}, &Piece::end);
    if (piece == pieces.end())
        return {spans.back().knot, 1.0};
    return {spans[piece->span].knot, find_parameter(*piece, distance - piece->begin)};
}

// Newton's steps, kept between what is known to lie before and behind.
double ArcLengthTable::find_parameter(const Piece& piece, double length) const
{
    const double whole = piece.end - piece.begin;
    if (!(length > 0.0))
        return piece.from;
    if (!(length < whole))
        return piece.to;
    const Span& span = spans[piece.span];
    double low = piece.from;
    double high = piece.to;
    double parameter = std::lerp(low, high, length / whole);
    for (int step = 0; step < MOST_STEPS; ++step) {
        const double error = span.measure(piece.from, parameter) - length;
        if (std::abs(error) <= CLOSE * whole)
            break;
        (error > 0.0 ? high : low) = parameter;
        parameter -= error / span.speed_at(parameter);
        if (!(parameter > low && parameter < high))
            parameter = 0.5 * (low + high);
    }
    return parameter;
}
