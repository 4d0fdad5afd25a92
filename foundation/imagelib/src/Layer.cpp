#include "imagelib/src/Layer.h"

void Layer::go_onto(const Tile& area, int x, int y)
{
    columns = {columns.begin + x, columns.end + x};
    columns.cut(area.columns);
    lines = {lines.begin + y, lines.end + y};
    lines.cut(area.lines);
    move(x, y);
}
