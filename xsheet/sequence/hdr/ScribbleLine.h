#pragma once

#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/KIVRectangle.h"

class DisplayScribbleLine;

/// A line drawn by hand over the sheet.
class ScribbleLine : public KIVObject {
    KIV_STORED(ScribbleLine, KIVObject);

public:
    /// An opaque line of the colour's shade; a white one would not be seen on the sheet and is
    /// black.
    explicit ScribbleLine(const KIVColour& colour);

    /// The copy is not on display.
    ScribbleLine(const ScribbleLine& other);
    ScribbleLine& operator=(const ScribbleLine&) = delete;
    explicit ScribbleLine(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<ScribbleLine*> duplicate() const { return new ScribbleLine(*this); }

    /// Of Vector2.
    KIVLinkedList* inq_points() const { return points.get(); }
    void add_point(const Vector2& point) { points->add(new Vector2(point)); }

    /// All zeros without points.
    KIVRectangle inq_bounds() const;

    const KIVColour& inq_colour() const { return colour; }

    /// Kept as it is, white too.
    void set_colour(const KIVColour& new_colour) { colour = new_colour; }

    DisplayScribbleLine* inq_disp_scribble() const { return disp_scribble; }
    void set_disp_scribble(DisplayScribbleLine* line) { disp_scribble = line; }

private:
    void take_points(KIVIStream& stream, const KIVLinkedList& read);

    std::unique_ptr<KIVLinkedList> points;        // owns its points
    DisplayScribbleLine* disp_scribble = nullptr; // not owned
    KIVColour colour;
};
