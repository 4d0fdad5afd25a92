#include "xsheet/cell/hdr/KeyCell.h"

#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/Record.h"
#include "xsheet/cell/hdr/InbetweenCell.h"
#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"

KIV_STORED_CLASS(KeyCell, -1);

template <class Record> void KeyCell::record(Record& r)
{
    r.value(interp_len);
    r.value(target_interp_len);
    r.value(mode);
    r.value(sample_rate);
    r.owned(fairing);
}

KeyCell::KeyCell(KIVIStream& stream) : BaseCell(stream)
{
    RecordReader r(stream);
    record(r);
    const bool is_mode_known = mode >= IM_INBETWEEN && mode <= IM_STOP;
    if (std::abs(static_cast<long>(interp_len)) > MOST_FRAMES || !is_mode_known)
        stream.set_error_state(KIVStream::BAD_DATA);
    if (sample_rate > 0 && fairing)
        fairing->set_sample_rate(sample_rate);
}

void KeyCell::storer(KIVOStream& stream)
{
    BaseCell::storer(stream);
    RecordWriter r(stream);
    record(r);
}

KeyCell::KeyCell(SubColumn* sub_column, int number, unsigned label)
    : BaseCell(number, label), sub_column(sub_column)
{}

KeyCell::KeyCell(const KeyCell& other)
    : BaseCell(other), interp_len(other.interp_len), target_interp_len(other.target_interp_len),
      mode(other.mode), sample_rate(other.sample_rate)
{
    if (!other.fairing)
        return;
    fairing = std::make_unique<Fairing>(other.fairing->number_between);
    other.fairing->copy_into(fairing.get());
}

KeyCell::~KeyCell()
{
    fairing.reset();
    inbetweens.reset();
}

gsl::owner<BaseCell*> KeyCell::duplicate() const
{
    return new KeyCell(*this);
}

gsl::owner<CellData*> KeyCell::create_data()
{
    return new CellData(this);
}

void KeyCell::set_number(int n)
{
    BaseCell::set_number(n);
    note_change();
}

bool KeyCell::is_a_key() const
{
    return true;
}

void KeyCell::set_needs_saving()
{
    BaseCell::set_needs_saving();
    if (sub_column)
        sub_column->set_needs_saving();
}

int KeyCell::find(const KIVString& text, int frame, int flags)
{
    if ((flags & XSheetFinderFlags::FlagForwards) != 0 && frame > inq_number())
        return 0;
    return BaseCell::find(text, frame, flags);
}

void KeyCell::set_sub_column(SubColumn* column)
{
    sub_column = column;
}

bool KeyCell::is_increasing()
{
    return true;
}

bool KeyCell::can_set_mode(InterpMode) const
{
    return true;
}

void KeyCell::inq_cargo_dependent_slots(SlotList&) {}

void KeyCell::copy_extra_key_data_from(KeyCell*) {}

void KeyCell::added_to_subcolumn(SubColumn*) {}

void KeyCell::removed_from_subcolumn(SubColumn*) {}

InterpMode KeyCell::inq_mode() const
{
    return mode == IM_INBETWEEN && !inq_next() ? IM_HOLD : mode;
}

BaseCell* KeyCell::inq_cell(int frame)
{
    const InterpMode actual = inq_mode();
    const int offset = frame - inq_number();
    // Half a frame late, the key's own frame is on the way to the next key already.
    if (offset == 0 && (actual != IM_INBETWEEN || !Fairing::inq_half_frame()))
        return this;
    if (offset > interp_len)
        return nullptr;
    if (actual == IM_HOLD)
        return this;
    if (actual != IM_INBETWEEN)
        return nullptr;
    BaseCell* cell = find_inbetween(offset);
    return cell ? cell : create_and_add_inbetween(offset);
}

gsl::owner<BaseCell*> KeyCell::create_inbetween(int offset)
{
    return new InbetweenCell(this, offset);
}

BaseCell* KeyCell::create_and_add_inbetween(int offset)
{
    note_change(); // from now on the cell's data count
    BaseCell* cell = create_inbetween(offset);
    if (!inbetweens)
        inbetweens = std::make_unique<BaseCellList>();
    inbetweens->add_cell(cell);
    return cell;
}

BaseCell* KeyCell::find_inbetween(int offset)
{
    return inbetweens ? inbetweens->find_cell(offset) : nullptr;
}

double KeyCell::inq_ifactor(int offset) const
{
    return fairing ? fairing->get_height(offset) : 0.0;
}

bool KeyCell::is_middle_inbetween(int offset) const
{
    if (sample_rate < 1 || offset < 1 || offset > interp_len || offset % sample_rate != 0)
        return false;
    constexpr double MIDDLE = 0.5, BEFORE_ALL = -1.0, BEHIND_ALL = 2.0;
    const int before = offset - sample_rate;
    const int behind = offset + sample_rate;
    const auto distance = [](double height) { return std::abs(height - MIDDLE); };
    const double here = distance(inq_ifactor(offset));
    return here < distance(before >= 1 ? inq_ifactor(before) : BEFORE_ALL) &&
           here <= distance(behind <= interp_len ? inq_ifactor(behind) : BEHIND_ALL);
}

int KeyCell::calc_natural_interp_len() const
{
    if (const BaseCell* next_cell = inq_next())
        return next_cell->inq_number() - inq_number() - 1;
    return inq_mode() == IM_HOLD && sub_column ? sub_column->inq_scene_length() - inq_number() : 0;
}

int KeyCell::calc_interp_len() const
{
    const InterpMode actual = inq_mode();
    if (actual == IM_STOP)
        return 0;
    const int natural = calc_natural_interp_len();
    const bool is_limited = actual == IM_HOLD && target_interp_len >= 0;
    return is_limited ? std::min(natural, target_interp_len) : natural;
}

// What was made before belongs to the old reach and the old neighbours, be it that a watcher read
// it in the middle of an edit.
void KeyCell::reset_interp_len()
{
    drop_inbetweens();
    const int old_len = std::exchange(interp_len, calc_interp_len());
    if (interp_len != old_len) {
        set_needs_saving();
        if (fairing)
            fairing->set_number_between(interp_len);
    }
    if (sub_column)
        tell_reach_changed(old_len);
}

// A reach that is one frame shorter is told to nobody.
void KeyCell::tell_reach_changed(int old_len) const
{
    const int number = inq_number();
    if (interp_len > old_len)
        sub_column->tell_watchers_frame_range_changed(number + old_len + 1, number + interp_len);
    if (old_len > interp_len + 1)
        sub_column->tell_watchers_frame_range_changed(number + interp_len + 1, number + old_len);
}

void KeyCell::note_change() const
{
    if (BaseCellList* list = inq_list())
        list->note_change();
}

void KeyCell::set_interp_len(int frames)
{
    interp_len = frames;
    note_change();
}

void KeyCell::drop_inbetweens()
{
    note_change();
    if (inbetweens)
        inbetweens->delete_all_cells();
}

void KeyCell::clear_inbetweens()
{
    drop_inbetweens();
    if (interp_len > 0 && sub_column)
        sub_column->tell_watchers_frame_range_changed(inq_number() + 1, inq_number() + interp_len);
}

void KeyCell::set_fairing(gsl::owner<Fairing*> new_fairing)
{
    note_change();
    fairing.reset(new_fairing);
    set_needs_saving();
}

void KeyCell::fairing_changed()
{
    clear_inbetweens();
    set_needs_saving();
}

void KeyCell::key_changed()
{
    sub_column->tell_watchers_frame_changed(inq_number());
    clear_inbetweens();
    sub_column->set_needs_saving();
}

void KeyCell::set_target_interp_len(int frames)
{
    const int natural = calc_natural_interp_len();
    target_interp_len = frames == 0 || frames == natural ? -1 : frames;
    if (frames == 0)
        mode = IM_STOP;
    set_needs_saving();
    clear_inbetweens();
    reset_interp_len();
}

void KeyCell::set_mode(InterpMode m)
{
    if (m != mode) {
        if (mode == IM_INBETWEEN)
            clear_inbetweens();
        mode = m;
        note_change();
        if (mode == IM_INBETWEEN && !fairing)
            make_fairing();
        if (inq_number() <= 0)
            return; // still under construction: there is no reach yet
        reset_interp_len();
        tell_frames_up_to_next_key();
    }
    set_needs_saving();
}

void KeyCell::make_fairing()
{
    note_change();
    fairing = std::make_unique<Fairing>(interp_len);
    if (sample_rate > 0)
        fairing->set_sample_rate(sample_rate);
}

void KeyCell::tell_frames_up_to_next_key() const
{
    const int number = inq_number();
    const int next_number = inq_next() ? inq_next()->inq_number() : -1;
    if (next_number > number + 1 && sub_column)
        sub_column->tell_watchers_frame_range_changed(number + 1, next_number - 1);
}

void KeyCell::set_sample_rate(int frames)
{
    if (frames == sample_rate)
        return;
    sample_rate = frames;
    if (fairing)
        fairing->set_sample_rate(frames); // before a watcher reads what it is told of
    clear_inbetweens();
    if (KeyCell* previous = inq_prev_key())
        previous->clear_inbetweens();
    set_needs_saving();
}

bool KeyCell::copy_interp_data_from(const KeyCell* source)
{
    bool has_changed = false;
    if (mode != source->mode && can_set_mode(source->mode)) {
        set_mode(source->mode);
        has_changed = true;
    }
    if (sample_rate != source->sample_rate) {
        set_sample_rate(source->sample_rate);
        has_changed = true;
    }
    return copy_fairing_from(source) || has_changed;
}

bool KeyCell::copy_fairing_from(const KeyCell* source)
{
    if (!source->fairing) {
        note_change();
        fairing.reset();
        return false;
    }
    if (!fairing)
        make_fairing();
    if (fairing->is_same_shape(source->fairing.get()))
        return false;
    source->fairing->copy_into(fairing.get());
    fairing_changed();
    return true;
}
