#include "frontend/montaray_scene/ColumnBuilder.h"

#include "curveslib/hdr/SquidgeSet.h"
#include "frontend/montaray_scene/describe_key.h"
#include "frontend/montaray_scene/words.h"
#include "kivlib/hdr/object_cast.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/move/hdr/PathSubColumn.h"
#include "xsheet/node/hdr/MoveSubColPrefs.h"
#include "xsheet/node/hdr/XSNode.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"
#include "xsheet/sequence/hdr/NotesSubColumn.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"

namespace {
void remove_all_keys(SubColumn& sub_column)
{
    while (KeyCell* key = sub_column.inq_last_key())
        delete sub_column.remove_key(key);
}

/// By the road of a user's preferences: the members of the new mode come with it.
void change_mode(MoveColumn& move, int mode)
{
    MoveColumn model;
    model.really_set_mode(mode);
    MoveSubColPrefs prefs(&model);
    move.apply_preferences_object(&prefs);
}

/// (0, 0) if it is not told.
Vector2 inq_handle(const Place& knot, const char* name)
{
    const auto place = knot.find(name);
    return place ? inq_point(*place) : Vector2();
}

void add_knots(const Place& place, Squidge& curve)
{
    for (const Place& knot : place.items()) {
        knot.check_names({"at", "in", "out"});
        curve.add_knot(inq_point(knot.at("at")), inq_handle(knot, "in"), inq_handle(knot, "out"));
    }
    if (!curve.inq_first_knot())
        place.refuse("a knot at least");
}

/// Where a key of a path stands on the curve.
CurvePosition inq_curve_position(const Place& key, const Squidge& curve)
{
    const auto& knots = curve.inq_knots();
    const auto knot = key.find("knot");
    if (knot && key.find("distance"))
        knot->refuse("a knot or a distance and not both");
    if (knot)
        return knots[static_cast<std::size_t>(knot->whole(1, static_cast<int>(knots.size())) - 1)]
            ->inq_curve_position();
    const Place place = key.at("distance");
    if (place.number() < 0.0 || place.number() > curve.calc_length())
        place.refuse("a distance along the path, from 0 to " + std::to_string(curve.calc_length()));
    return curve.find_position_along(knots[0]->inq_curve_position(), 1, place.number());
}

KeyCell* make_path_key(PathSubColumn& path, int frame, unsigned long bead_label)
{
    auto* key = static_cast<PathKeyCell*>(path.create_new_key());
    key->set_data(key->create_data());
    key->set_bead_label(bead_label);
    path.insert_key(key, frame);
    key->key_changed();
    path.inq_path_policy()->added_key(key);
    return key;
}

/// Null if there is none of that name, or more than one.
SubColumn* find_by_name(Column& column, const std::string& name)
{
    SubColumn* found = nullptr;
    column.search_for_sub_column_name(name.c_str(), &found, false);
    return found;
}

/// The member of a move that a description calls `word`, or null.
SubColumn* find_member(const MoveColumn& move, const Place& word)
{
    return move.find_sub_column(MOVE_LABELS[static_cast<std::size_t>(word.one_of(MOVE_WORDS))]);
}

/// By the names of node and column and, within a move, the word of its member.
NumericSubColumn& find_source(const Place& place, const std::map<std::string, CNode*>& nodes)
{
    const std::vector<Place> names = place.items();
    const auto node = names.empty() ? nodes.end() : nodes.find(names[0].text());
    if (node == nodes.end() || !node->second->is_kind_of("XSNode") || names.size() < 2)
        place.refuse("the names of a node and of its column");
    Column* column = static_cast<XSNode*>(node->second)->inq_column();
    SubColumn* found = find_by_name(*column, names[1].text());
    const auto* move = object_cast<MoveColumn>(found);
    if (move && names.size() > 2)
        found = find_member(*move, names[2]);
    auto* source = object_cast<NumericSubColumn>(found);
    if (!source || !inq_valid_for_ratioing(static_cast<unsigned long>(source->inq_type())))
        place.refuse("a column of numbers; of a move \"x\", \"y\", \"xy\" or \"path\" as well");
    return *source;
}
} // namespace

ColumnBuilder::ColumnBuilder(KIVScene& scene, std::filesystem::path art_folder)
    : scene(scene), art_folder(std::move(art_folder))
{}

void ColumnBuilder::refuse_columns(const Place& place)
{
    place.refuse("no columns: a node of this kind has none");
}

void ColumnBuilder::fill_columns(const Place& place, XSNode& node)
{
    for (const auto& [name, value] : place.members()) {
        if (SubColumn* sub_column = find_by_name(*node.inq_column(), name)) {
            fill_sub_column(value, *sub_column);
            continue;
        }
        if (node.inq_column()->inq_sub_column_list()->inq_is_empty())
            refuse_columns(place);
        std::string known;
        for (auto* each : node.inq_column()->inq_sub_column_list()->of<SubColumn>())
            known += (known.empty() ? "\"" : ", \"") + each->inq_header_text()->str() + "\"";
        value.refuse("one of the columns " + known + " as the member's name");
    }
}

void ColumnBuilder::add_notes(const Place& place)
{
    auto* column = new Column;
    column->init_after_construction();
    scene.inq_xsheet()->add_column(column, nullptr);
    auto* notes = new NotesSubColumn;
    notes->init_after_construction();
    column->add_sub_column(notes, nullptr);
    column->set_header_text(notes->inq_default_header_string());
    fill(place, [notes](const Place& item, int frame) {
        item.check_names({"frame", "text"});
        KeyCell* key = notes->make_key(frame);
        key->inq_data()->set_string(item.at("text").text().c_str());
        return key;
    });
}

/// Easings come last, when every key has its next one.
void ColumnBuilder::fill(const Place& place, const MakeKey& make_key)
{
    const std::vector<Place> items = place.items();
    std::vector<KeyCell*> keys;
    int least_frame = 1;
    for (const Place& item : items) {
        const int frame = item.at("frame").whole(least_frame, scene.inq_scene_length());
        least_frame = frame + 1;
        keys.push_back(make_key(item, frame));
    }
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (const auto ease = items[i].find("ease"))
            set_ease(*ease, *keys[i]);
}

void ColumnBuilder::fill_sub_column(const Place& place, SubColumn& sub_column)
{
    if (sub_column.inq_type() == MOVE_COLUMN)
        fill_move(place, static_cast<MoveColumn&>(sub_column));
    else if (sub_column.inq_type() == COLOUR_COLUMN && !place.is_array())
        fill_colour(place, static_cast<ColourSubColumn&>(sub_column));
    else
        fill_keys(place, sub_column);
}

void ColumnBuilder::fill_colour(const Place& place, ColourSubColumn& colour)
{
    place.check_names({"space", "keys"});
    colour.set_colour_interp_mode(
        SPACES[static_cast<std::size_t>(place.at("space").one_of(SPACE_WORDS))]);
    fill_keys(place.at("keys"), colour);
}

void ColumnBuilder::fill_move(const Place& place, MoveColumn& move)
{
    place.check_names({"x", "y", "xy", "path"});
    const auto path = place.find("path");
    const auto both = place.find("xy");
    if ((path || both) && place.count() > 1)
        place.refuse("\"path\" alone, \"xy\" alone, or \"x\" and \"y\"");
    change_mode(move, path   ? MoveColumn::PATH_MODE
                      : both ? MoveColumn::TCOL_MODE
                             : MoveColumn::XYCOL_MODE);
    if (path)
        fill_path(*path, *move.inq_path_column());
    if (both)
        fill_keys(*both, *move.find_sub_column(MoveColumn::TPOS_SUBCOL));
    if (const auto x = place.find("x"))
        fill_keys(*x, *move.find_sub_column(MoveColumn::XPOS_SUBCOL));
    if (const auto y = place.find("y"))
        fill_keys(*y, *move.find_sub_column(MoveColumn::YPOS_SUBCOL));
}

/// Each key has a bead of its own, whose label is the key's place among them.
void ColumnBuilder::fill_path(const Place& place, PathSubColumn& path)
{
    place.check_names({"closed", "knots", "keys"});
    const auto closed = place.find("closed");
    auto set = std::make_unique<SquidgeSet>();
    Squidge& curve = *set->add_squidge(new Squidge(closed && closed->truth()));
    add_knots(place.at("knots"), curve);
    unsigned long label = 0;
    for (const Place& key : place.at("keys").items())
        curve.add_bead(inq_curve_position(key, curve), ++label);
    path.inq_path_policy()->set_squidges(set.release());
    label = 0;
    fill(place.at("keys"), [&](const Place& item, int frame) {
        item.check_names({"frame", "knot", "distance", "mode", "step", "ease"});
        KeyCell* key = make_path_key(path, frame, ++label);
        set_interpolation(item, *key, IM_INBETWEEN);
        return key;
    });
}

void ColumnBuilder::fill_keys(const Place& place, SubColumn& sub_column)
{
    remove_all_keys(sub_column);
    fill(place, [&](const Place& item, int frame) { return make_key(item, sub_column, frame); });
}

KeyCell* ColumnBuilder::make_key(const Place& place, SubColumn& sub_column, int frame)
{
    const bool has_images = sub_column.inq_type() == RASTER_COLUMN;
    const bool has_texts = sub_column.inq_type() == TEXT_COLUMN;
    if (!has_images && !has_texts && !object_cast<NumericSubColumn>(&sub_column))
        place.refuse("no keys: a description can't tell what columns of this kind hold");
    KeyCell* key = sub_column.make_key(frame);
    if (has_images) {
        place.check_names({"frame", "file", "mode"});
        set_image(place.at("file"), *key);
        set_interpolation(place, *key, IM_HOLD);
    } else if (has_texts) {
        place.check_names({"frame", "text"});
        key->inq_data()->set_string(place.at("text").text().c_str());
    } else {
        describe_numbers(place, sub_column, *key);
        set_interpolation(place, *key, IM_INBETWEEN);
    }
    return key;
}

void ColumnBuilder::describe_numbers(const Place& place, SubColumn& sub_column, KeyCell& key)
{
    place.check_names({"frame", "value", "follows", "mode", "step", "ease"});
    set_values(place.at("value"), static_cast<NumericSubColumn&>(sub_column).inq_order(), key);
    const auto follows = place.find("follows");
    if (!follows)
        return;
    if (!inq_valid_for_ratioing(static_cast<unsigned long>(sub_column.inq_type())))
        follows->refuse("no other column to follow: a column of this kind does not");
    followers.push_back({*follows, static_cast<NumericKeyCell*>(&key)});
}

void ColumnBuilder::follow_sources(const std::map<std::string, CNode*>& nodes)
{
    for (const Follower& follower : followers) {
        follower.place.check_names({"column", "ratio", "lock_frame"});
        follow(follower, find_source(follower.place.at("column"), nodes));
    }
}

/// The value that was told holds on the lock frame.
void ColumnBuilder::follow(const Follower& follower, NumericSubColumn& source)
{
    NumericSubColumn& own = *follower.key->inq_numeric_sub_column();
    if (source.inq_order() < own.inq_order())
        follower.place.at("column").refuse("a column of as many numbers");
    if (&source == &own || source.inq_is_ratio_looped(&own))
        follower.place.at("column").refuse("a column that does not follow this one");
    follower.key->set_is_ratioed(true);
    RatioKeyCellData& link = *follower.key->inq_ratio_data();
    if (const auto frame = follower.place.find("lock_frame"))
        link.set_lock_frame(frame->whole(1, scene.inq_scene_length()));
    link.set_source_column(&source);
    if (const auto ratio = follower.place.find("ratio")) {
        Vector values(own.inq_order());
        const std::vector<Place> numbers = inq_numbers(*ratio, own.inq_order());
        for (int i = 0; i < own.inq_order(); ++i)
            values.elem(i) = numbers[static_cast<std::size_t>(i)].number();
        link.set_ratio_value(values);
    }
    link.update_keycell();
}

void ColumnBuilder::set_image(const Place& place, KeyCell& key) const
{
    static_cast<RasterSeqCellData&>(*key.inq_data()).set_file_name(inq_art_file(place).c_str());
}

std::string ColumnBuilder::inq_art_file(const Place& place) const
{
    const std::filesystem::path file = art_folder / place.text();
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        place.refuse("an image file; there is no " + file.string());
    return std::filesystem::absolute(file).lexically_normal().string();
}
