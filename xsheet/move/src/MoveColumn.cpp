#include "xsheet/move/hdr/MoveColumn.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/move/hdr/PathSubColumn.h"
#include "xsheet/node/hdr/MoveSubColPrefs.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"

KIV_STORED_CLASS(MoveColumn, 81);

template <class Record> void MoveColumn::record(Record& r)
{
    r.value(mode);
}

KIV_STORED_RECORD(MoveColumn);

void MoveColumn::init_after_construction()
{
    Column::init_after_construction();
    mode = XYCOL_MODE;
    add_x_and_y();
}

void MoveColumn::add_new(gsl::owner<SubColumn*> sub, unsigned sub_label, const KIVString& header,
                         SubColumn* after)
{
    sub->init_after_construction();
    sub->set_header_text(header);
    sub->set_label(sub_label);
    add_sub_column(sub, after);
}

void MoveColumn::add_x_and_y()
{
    auto* x = new NumericXSubColumn;
    add_new(x, XPOS_SUBCOL, "E/W");
    add_new(new NumericYSubColumn, YPOS_SUBCOL, "N/S", x);
}

void MoveColumn::delete_sub_columns()
{
    inq_sub_column_list()->remove_all_deleting_objects();
}

void MoveColumn::prime_column(int new_mode)
{
    if (new_mode == mode)
        return;
    delete_sub_columns();
    mode = new_mode;
    if (mode == PATH_MODE)
        add_new(new PathSubColumn, PPOS_SUBCOL, "PATH");
    else if (mode == TCOL_MODE)
        add_new(new NumericTSubColumn, TPOS_SUBCOL, "E/W - N/S");
    else if (mode == XYCOL_MODE)
        add_x_and_y();
}

NumericSubColumn* MoveColumn::find_numeric(unsigned long sub_label) const
{
    return object_cast<NumericSubColumn>(find_sub_column(sub_label));
}

PathSubColumn* MoveColumn::inq_path_column()
{
    return mode == PATH_MODE ? object_cast<PathSubColumn>(find_sub_column(PPOS_SUBCOL)) : nullptr;
}

Vector2 MoveColumn::inq_translation(int frame)
{
    if (mode == XYCOL_MODE) {
        NumericSubColumn* x = find_numeric(XPOS_SUBCOL);
        NumericSubColumn* y = find_numeric(YPOS_SUBCOL);
        return {x ? x->inq_element(0, frame) : 0.0, y ? y->inq_element(0, frame) : 0.0};
    }
    if (mode != PATH_MODE && mode != TCOL_MODE)
        return {};
    NumericSubColumn* both = find_numeric(mode == PATH_MODE ? PPOS_SUBCOL : TPOS_SUBCOL);
    return both ? Vector2(both->inq_element(0, frame), both->inq_element(1, frame)) : Vector2();
}

void MoveColumn::convert_old_file(gsl::owner<NumericSubColumn*> a, gsl::owner<NumericSubColumn*> b)
{
    delete_sub_columns();
    if (a && b) {
        a->set_label(XPOS_SUBCOL);
        add_sub_column(a, nullptr);
        b->set_label(YPOS_SUBCOL);
        add_sub_column(b, a);
        mode = XYCOL_MODE;
        return;
    }
    std::unique_ptr<NumericSubColumn> given(a ? a : b);
    if (!given)
        return;
    if (given->is_path_column(0)) {
        auto* path = new PathSubColumn(*given);
        path->set_label(PPOS_SUBCOL);
        add_sub_column(path, nullptr);
        mode = PATH_MODE;
    } else {
        given->set_label(TPOS_SUBCOL);
        add_sub_column(given.release(), nullptr);
        mode = TCOL_MODE;
    }
}

gsl::owner<SubColPrefs*> MoveColumn::create_preferences_object()
{
    return new MoveSubColPrefs(this);
}

void MoveColumn::apply_preferences_object(SubColPrefs* prefs)
{
    const auto* move = object_cast<MoveSubColPrefs>(prefs);
    if (!move)
        return;
    prime_column(move->inq_mode());
    for (SubColumn* member : inq_sub_column_list()->of<SubColumn>())
        member->apply_preferences_object(move->find_prefs_of(*member));
}
