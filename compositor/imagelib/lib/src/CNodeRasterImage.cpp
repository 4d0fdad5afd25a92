#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"

#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImageLoadDelegate.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImageOp.h"
#include "compositor/imagelib/lib/src/LockedMipMap.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "kivlib/hdr/BoundingBox.h"
#include "kivlib/hdr/IntRect.h"
#include "kivlib/hdr/KIVStringList.h"
#include "kivlib/hdr/Matrix.h"
#include "kivlib/hdr/PCharArray.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/report_error.h"
#include "scene/hdr/RasterAsset.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"
#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"
#include "xsheet/store_control/hdr/LoadFindings.h"

#include <cstdlib>
#include <limits>

namespace {

constexpr FormatVersions HAS_IMAGE_NUMBER = before(95);
constexpr FormatVersions HAS_SECOND_IMAGE_NUMBER = between(93, 94);

/// The depth at which sizes are asked, whatever the depth of a render.
constexpr int SIZE_BITS = 8;

constexpr int NO_IMAGE = -1;
constexpr const char* NO_FILE = "None";
constexpr int PICK_MODE = 1;

void hold_image(int bits, int id)
{
    LockedMipMap::inq_provider(bits)->hold_object_id(id);
}

void release_image(int bits, int id)
{
    LockedMipMap::inq_provider(bits)->delete_object_id(id);
}

/// Null if the cell has none of this kind.
RasterSeqCellData* raster_data_of(BaseCell& cell)
{
    CellData* data = cell.inq_data();
    const bool is_raster = data && data->is_kind_of(RasterSeqCellData::inq_class_name_s());
    return is_raster ? static_cast<RasterSeqCellData*>(data) : nullptr;
}

/// The title of a column of these files: the file's name or the folder's.
KIVString make_title(const KIVStringSet& files)
{
    KIVString title;
    if (files.count() == 1)
        title = files.at_index(0).get_file();
    else if (files.count() > 1)
        title = files.at_index(0).get_path().get_file();
    title.set_extension("");
    return title.is_null() ? "Images" : title;
}

/// The whole number that `text` begins with; 0 without a usable one.
int parse_number(const char* text)
{
    const long number = std::strtol(text, nullptr, 10);
    constexpr long MOST = std::numeric_limits<int>::max();
    return -MOST <= number && number < MOST ? static_cast<int>(number) : 0;
}

/// The number that ends a file's name or, failing that, stands behind the first blank of it; 0
/// without one.
int read_file_number(const KIVString& file)
{
    KIVString base_name = file.get_file();
    base_name.set_extension("");
    const std::string& name = base_name.str();
    const std::size_t digits = name.find_last_not_of("0123456789") + 1;
    if (digits < name.size())
        return parse_number(name.c_str() + digits);
    constexpr const char* BLANKS = " \t\n\v\f\r";
    const std::size_t blank = name.find_first_of(BLANKS, name.find_first_not_of(BLANKS));
    return blank == std::string::npos ? 0 : parse_number(name.c_str() + blank);
}

std::vector<int> read_file_numbers(const KIVStringSet& files)
{
    std::vector<int> numbers;
    for (int i = 0; i < files.count(); ++i)
        numbers.push_back(read_file_number(files.at_index(i)));
    return numbers;
}

/// Lets the user extend a sheet that ends before some of the numbers.
void offer_longer_sheet(XSheet* sheet, const std::vector<int>& numbers)
{
    const int last_frame = sheet->inq_scene_length();
    const auto n_beyond = std::ranges::count_if(numbers, [=](int n) { return n > last_frame; });
    CNodeRasterImageLoadDelegate* delegate = CNodeImageDLLInitialiser::inq_ui_delegate();
    if (n_beyond > 0 && delegate)
        delegate->extend_sheet(sheet, std::ranges::max(numbers), static_cast<int>(n_beyond));
}

} // namespace

CNodeRasterImage::CNodeRasterImage(const KIVString& file, CNodeGraph* graph)
    : CNodeRasterImage(KIVStringSet(file), graph)
{}

CNodeRasterImage::CNodeRasterImage(const KIVStringSet& files, CNodeGraph* graph)
{
    init_column(files);
    make_keys_for_assets(files, graph);
}

CNodeRasterImage::CNodeRasterImage(const CNodeRasterImage& other)
    : DWNode(other), file_name(other.file_name), mipmap_id_8(other.mipmap_id_8),
      mipmap_id_16(other.mipmap_id_16)
{
    if (!file_name.is_null()) {
        hold_image(8, mipmap_id_8);
        hold_image(16, mipmap_id_16);
    }
    set_sub_column_refs();
}

CNodeRasterImage::CNodeRasterImage(KIVIStream& stream) : DWNode(stream)
{
    RecordReader reader_of_fields(stream);
    record(reader_of_fields);
    if (file_name.is_null())
        return;
    mipmap_id_8 = inq_bitmap_provider_8()->new_image_id(file_name);
    mipmap_id_16 = inq_bitmap_provider_16()->new_image_id(file_name);
}

CNodeRasterImage::~CNodeRasterImage()
{
    if (file_name.is_null())
        return;
    release_image(8, mipmap_id_8);
    release_image(16, mipmap_id_16);
}

template <class Record> void CNodeRasterImage::record(Record& r)
{
    r.value(file_name);
    r.dropped_int(HAS_IMAGE_NUMBER);
    r.dropped_int(HAS_SECOND_IMAGE_NUMBER);
}

void CNodeRasterImage::storer(KIVOStream& stream)
{
    DWNode::storer(stream);
    RecordWriter writer_of_fields(stream);
    record(writer_of_fields);
}

CNode* CNodeRasterImage::new_node_s(CNodeGraph* graph, bool* flag)
{
    if (flag)
        *flag = false;
    CNodeRasterImageLoadDelegate* delegate = CNodeImageDLLInitialiser::inq_ui_delegate();
    if (!delegate)
        return nullptr;
    KIVStringSet extensions(inq_pixmap_readable_file_exts());
    extensions << TiledMipMap::inq_tiled_extensions();
    const std::unique_ptr<KIVStringSet> files(delegate->pick_files(extensions, PICK_MODE));
    return files ? new CNodeRasterImage(*files, graph) : nullptr;
}

void CNodeRasterImage::init_column(const KIVStringSet& files)
{
    inq_column()->set_header_text(make_title(files));
    raster_column = new RasterSeqSubColumn;
    init_subcolumn(raster_column, "BG/OL");
}

void CNodeRasterImage::make_keys_for_assets(const KIVStringSet& files, CNodeGraph* graph)
{
    const std::vector<int> numbers = read_file_numbers(files);
    XSheet* sheet = graph ? graph->inq_xsheet() : nullptr;
    if (sheet)
        offer_longer_sheet(sheet, numbers);
    const int last_frame = sheet ? sheet->inq_scene_length() : raster_column->inq_scene_length();
    int frame = 1;
    for (int i = 0; i < files.count(); ++i) {
        const int number = numbers[static_cast<std::size_t>(i)];
        if (files.count() > 1 && frame <= number && number <= last_frame)
            frame = number;
        make_key(frame, files.at_index(i));
        ++frame;
    }
}

void CNodeRasterImage::make_key(int frame, const KIVString& file)
{
    KeyCell* key = raster_column->make_key(frame);
    RasterSeqCellData* data = key ? raster_data_of(*key) : nullptr;
    if (data)
        data->set_file_name(file);
}

void CNodeRasterImage::set_sub_column_refs()
{
    fixed_image = nullptr;
    raster_column = nullptr;
    if (!file_name.is_null()) {
        report_here() << "This version of Montaray can't load PR1 scenes\n";
        return;
    }
    SubColumn* column = inq_subcolumn();
    if (column && column->inq_type() == RasterSeqSubColumn::TYPE)
        raster_column = static_cast<RasterSeqSubColumn*>(column);
}

bool CNodeRasterImage::load_finished_with_abort()
{
    const bool is_aborted = DWNode::load_finished_with_abort();
    set_sub_column_refs();
    if (inq_column() && !raster_column && file_name.is_null())
        LoadFindings::add("The column " + inq_name() + " of a picture node holds no pictures");
    return is_aborted;
}

gsl::owner<CNodeOp*> CNodeRasterImage::new_nodeop(int)
{
    return new CNodeRasterImageOp(this);
}

RasterSeqCellData* CNodeRasterImage::inq_cell_data(int frame) const
{
    BaseCell* cell = raster_column ? raster_column->inq_cell(frame) : nullptr;
    return cell ? raster_data_of(*cell) : nullptr;
}

int CNodeRasterImage::inq_mipmap_id(int frame, int bits) const
{
    if (fixed_image)
        return bits == 8 ? mipmap_id_8 : mipmap_id_16;
    const RasterSeqCellData* data = inq_cell_data(frame);
    const RasterAsset* asset = data ? data->inq_asset() : nullptr;
    if (!asset)
        return NO_IMAGE;
    return bits == 8 ? asset->inq_mipmap_id_8() : asset->inq_mipmap_id_16();
}

KIVString CNodeRasterImage::inq_filename(int frame) const
{
    const RasterSeqCellData* data = inq_cell_data(frame);
    const KIVString* name = data ? data->inq_file_name() : nullptr;
    return name ? *name : NO_FILE;
}

KIVString CNodeRasterImage::inq_path() const
{
    KeyCell* key = raster_column ? raster_column->inq_first_key() : nullptr;
    const RasterSeqCellData* data = key ? raster_data_of(*key) : nullptr;
    const KIVString* name = data ? data->inq_file_name() : nullptr;
    return name ? *name : KIVString();
}

// The image's width stands in place of the upper side: clients rely on this order.
BoundingBox CNodeRasterImage::inq_bounding_box(int frame) const
{
    const int id = inq_mipmap_id(frame, SIZE_BITS);
    if (id < 0)
        return {};
    const LockedMipMap image(SIZE_BITS, id);
    return image.is_usable() ? BoundingBox(IntRect(image->width, 0, 0, image->height))
                             : BoundingBox();
}

Matrix44 CNodeRasterImage::inq_node_transform(int frame) const
{
    const int id = inq_mipmap_id(frame, SIZE_BITS);
    if (id < 0)
        return {};
    const LockedMipMap image(SIZE_BITS, id);
    if (!image.is_usable())
        return {};
    const KIVRectangle bounds = image->get_frame();
    Matrix22 pixel_size;
    pixel_size.set_scale({bounds.inq_width() / image->width, bounds.inq_height() / image->height});
    return Matrix44(Matrix33(pixel_size, bounds.get_bottom_left()));
}
