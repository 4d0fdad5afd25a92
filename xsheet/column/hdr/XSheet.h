#pragma once

class ChangeEvt;
class ChangeRecorder;
class KIVScene;

#include "xsheet/column/hdr/Column.h"

#include <vector>

/// The exposure sheet of a scene: the column around all columns. It knows how long the scene is
/// and how many lines stand above and below the frames.
class XSheet : public Column {
    KIV_STORED(XSheet, Column);

public:
    /// `scene` may be null.
    explicit XSheet(KIVScene* scene) : scene(scene) {}

    /// Its scene is given by load_finished_with_abort.
    explicit XSheet(KIVIStream& stream);
    XSheet(const XSheet&) = delete;

    void storer(KIVOStream& stream) override;
    XSheet* inq_xsheet() override { return this; }
    int inq_scene_length() const override { return scene_length; }
    int inq_header_lines() const override { return header_lines; }
    int inq_footer_lines() const override { return footer_lines; }
    int inq_header_line() override;
    KIVString inq_header_path() override;
    bool can_set_length(int frames) override;
    void set_length(int frames) override;

    /// 1 and 1 without keys; what the two held before counts for nothing.
    void inq_key_range(int* low, int* high) override;

    /// The columns at every depth.
    gsl::owner<KIVLinkedList*> inq_shallow_sub_column_list() override;

    virtual bool add_column(gsl::owner<Column*> column, Column* after);
    virtual gsl::owner<Column*> remove_column(Column* column);
    virtual bool move_column(Column* column, Column* after);

    /// Above the header: the sheet has none of its own.
    virtual int inq_header_line() const;

    /// Of the stream that this was read from: columns that keys follow though they lie in no sheet
    /// any more. They stay as long as the sheet.
    void claim_rest(KIVIStream& stream);

    /// Joins a sheet that was read to its scene. True if the load can't go on.
    bool load_finished_with_abort(KIVScene* loaded_scene);
    using Column::load_finished_with_abort;

    KIVScene* inq_scene() const { return scene; }

    /// Null without one.
    ChangeRecorder* inq_change_recorder() const { return change_recorder; }
    void set_change_recorder(ChangeRecorder* recorder) { change_recorder = recorder; }

    /// Whether keys that are moved trade places with those in their way.
    bool inq_insert_edit_mode() const { return insert_edit_mode; }
    void change_insert_edit_mode(bool on) { insert_edit_mode = on; }

    /// The change is taken over by the recorder; without one it stays the caller's.
    void add_change_event(ChangeEvt* change);
    void end_change(const char* label);

    void convert_ratioed_columns();

private:
    template <class Record> void record(Record& r);

    int footer_lines = 5;
    int header_lines = 7;
    int scene_length = 100;                    // frames
    KIVScene* scene = nullptr;                 // not owned
    ChangeRecorder* change_recorder = nullptr; // not owned
    bool insert_edit_mode = false;
    std::vector<std::unique_ptr<KIVObject>> unplaced; // of the file; in no list
};
