#pragma once

#include "xsheet/cell/hdr/CellData.h"

class KIVStringList;
class RasterAsset;
class XSheet;

/// Which image a frame shows: the path of its file, and the scene's asset for it once the cell has
/// come into a scene. The cell shows the asset's user name.
class RasterSeqCellData : public CellData {
    KIV_STORED(RasterSeqCellData, CellData);

public:
    /// `cell` may be null.
    explicit RasterSeqCellData(BaseCell* cell) : CellData(cell) {}

    /// The copy has the same asset.
    RasterSeqCellData(const RasterSeqCellData& other);
    explicit RasterSeqCellData(KIVIStream& stream);
    ~RasterSeqCellData() override;

    void storer(KIVOStream& stream) override;
    gsl::owner<CellData*> duplicate() const override;

    /// Finds the asset, and lets it look for its file.
    bool load_finished_with_abort() override;

    /// The tag of the asset; -1 for none.
    int inq_asset_id() const { return asset_id; }

    /// Null until it is found.
    RasterAsset* inq_asset() const { return asset; }

    /// Null where none is known.
    const KIVString* inq_file_name() const { return file_name.get(); }

    /// The scene keeps the asset.
    void set_asset(RasterAsset* new_asset);

    /// Makes an asset of the scene for the file, if the cell is in one.
    void set_file_name(const KIVString& path);
    void update_string();

    /// The key came into a column: the image becomes a new asset of its scene.
    void added_to_column();

    /// The key came into another sub-column: the same, if that lies in another scene.
    void moved_to_sub_column();
    void get_dependencies(KIVStringList& files, bool flag) const;
    void mark_used_assets();

private:
    template <class Record> void record(Record& r);

    XSheet* inq_xsheet() const;
    void setup_assets(bool notify);
    void look_up_asset(bool notify);
    void tell_lost_asset() const;
    void create_asset();
    void bind_anew();
    void set_path(const KIVString& path);

    std::unique_ptr<KIVString> file_name;
    int asset_id = -1;
    RasterAsset* asset = nullptr; // not owned
};
