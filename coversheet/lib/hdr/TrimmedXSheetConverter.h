#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <memory>

class XSheet;

/// Turns frames of the whole sheet into those of the part that is left when its head and its tail
/// are trimmed off, and back. Frames count from 1 in both.
class TrimmedXSheetConverter : public KIVObject {
    KIV_STORED(TrimmedXSheetConverter, KIVObject);

public:
    explicit TrimmedXSheetConverter(const XSheet* xsheet);
    explicit TrimmedXSheetConverter(KIVIStream& stream);
    ~TrimmedXSheetConverter() override;

    void storer(KIVOStream& stream) override;

    int inq_start_trim_frames() const { return start_trim_frames; }
    int inq_end_trim_frames() const { return end_trim_frames; }
    void set_start_trim_frames(int frames) { start_trim_frames = frames; }
    void set_end_trim_frames(int frames) { end_trim_frames = frames; }

    /// Null until the scene gives one.
    const XSheet* inq_xsheet() const { return xsheet; }
    void set_xsheet(const XSheet* sheet) { xsheet = sheet; }

    int inq_active_length() const;

    /// The length that the sheet needs for `active_length` frames between its trims.
    int inq_new_real_length(int active_length) const;
    bool inq_is_trimmed() const { return start_trim_frames + end_trim_frames != 0; }
    int inq_trimmed_frame_nu(int frame) const { return frame - start_trim_frames; }
    int inq_real_frame_nu(int trimmed_frame) const { return trimmed_frame + start_trim_frames; }

    /// Behind the head and before the last frame of the whole sheet, whatever the tail's trim.
    bool inq_frame_is_in_active_range(int frame) const;
    bool inq_frame_is_in_start_trim_range(int frame) const;
    bool inq_frame_is_in_end_trim_range(int frame) const;

private:
    template <class Record> void record(Record& r);
    int inq_length() const;

    int start_trim_frames = 0;
    int end_trim_frames = 0;
    const XSheet* xsheet = nullptr;       // not owned
    std::unique_ptr<XSheet> stored_sheet; // an old file's own copy of the sheet
};
