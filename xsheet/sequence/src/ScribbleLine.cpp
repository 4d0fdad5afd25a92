#include "xsheet/sequence/hdr/ScribbleLine.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(ScribbleLine, -1);

ScribbleLine::ScribbleLine(const KIVColour& colour)
    : points(std::make_unique<KIVLinkedList>(true)), colour(colour)
{
    const KIVColour white(1.0, 1.0, 1.0, 1.0);
    this->colour.set_alpha(1.0);
    if (this->colour == white)
        this->colour.set_rgb(0.0, 0.0, 0.0);
}

ScribbleLine::ScribbleLine(const ScribbleLine& other)
    : KIVObject(other), points(std::make_unique<KIVLinkedList>(true)), colour(other.colour)
{
    for (const Vector2* point : other.points->of<Vector2>())
        add_point(*point);
}

ScribbleLine::ScribbleLine(KIVIStream& stream)
    : KIVObject(stream), points(std::make_unique<KIVLinkedList>(true))
{
    std::unique_ptr<KIVLinkedList> read;
    RecordReader fields(stream);
    fields.embedded(colour);
    fields.owned(read);
    if (read)
        take_points(stream, *read);
    stream.forget(read.get());
}

/// A list reads objects of any class, and does not own them.
void ScribbleLine::take_points(KIVIStream& stream, const KIVLinkedList& read)
{
    for (KIVObject* object : read.of<KIVObject>()) {
        if (!stream.claim(object))
            return;
        if (object->is_kind_of(Vector2::inq_class_name_s())) {
            points->add(object);
        } else {
            delete object;
            stream.set_error(KIVStream::WRONG_CLASS, "expected Vector2");
            return;
        }
    }
}

void ScribbleLine::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter fields(stream);
    fields.embedded(colour);
    fields.owned(points);
}

KIVRectangle ScribbleLine::inq_bounds() const
{
    std::vector<Vector2> corners;
    for (const Vector2* point : points->of<Vector2>())
        corners.push_back(*point);
    return {static_cast<int>(corners.size()), corners.data()};
}
