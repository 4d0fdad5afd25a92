#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

class KIVStringSet;
class MipMap;
class RasterAsset;
class RasterSeqCellData;
class RasterSeqSubColumn;

/// Artwork from files: a background or an overlay. The keys of its column say which file shows
/// from which frame on.
class CNodeRasterImage : public DWNode {
    KIV_NODE_OWN_FACTORY(CNodeRasterImage, DWNode);

public:
    /// One key for each file: at the number that ends the file's name, or on the next frame.
    CNodeRasterImage(const KIVString& file, CNodeGraph* graph);
    CNodeRasterImage(const KIVStringSet& files, CNodeGraph* graph);
    CNodeRasterImage(const CNodeRasterImage& other);
    CNodeRasterImage& operator=(const CNodeRasterImage&) = delete;
    explicit CNodeRasterImage(KIVIStream& stream);
    ~CNodeRasterImage() override;

    /// Lets the user pick files through the delegate. Null without one, or without files.
    static CNode* new_node_s(CNodeGraph* graph, bool* flag);

    void storer(KIVOStream& stream) override;
    bool load_finished_with_abort() override;
    gsl::owner<CNodeOp*> new_nodeop(int type) override;

    /// The file of the first key; empty without a key.
    KIVString inq_path() const override;
    bool inq_is_source_image_node() const override { return true; }

    /// In pixels of the image, not in node space.
    BoundingBox inq_bounding_box(int frame) const override;

    /// From pixels of the image to node space.
    Matrix44 inq_node_transform(int frame) const override;

    /// In the provider of `bits`; -1 if no image shows at the frame.
    int inq_mipmap_id(int frame, int bits) const;

    /// "None" if no image shows at the frame.
    KIVString inq_filename(int frame) const;

    /// Null for a scene of an early release.
    RasterSeqSubColumn* inq_raster_column() const { return raster_column; }

private:
    template <class Record> void record(Record& r);

    void init_column(const KIVStringSet& files);
    void make_keys_for_assets(const KIVStringSet& files, CNodeGraph* graph);
    void make_key(int frame, const KIVString& file);
    void set_sub_column_refs();
    RasterSeqCellData* inq_cell_data(int frame) const;

    KIVString file_name;           // of the old stored form; empty in all current scenes
    int mipmap_id_8 = -1;          // of that file
    int mipmap_id_16 = -1;         // of that file
    MipMap* fixed_image = nullptr; // always null: the old form can't be shown
    RasterSeqSubColumn* raster_column = nullptr; // not owned
};
