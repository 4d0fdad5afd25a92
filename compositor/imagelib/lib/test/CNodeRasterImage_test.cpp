#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImageLoadDelegate.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImageOp.h"
#include "compositor/imagelib/lib/test/ImageGraph.h"
#include "compositor/imagelib/lib/test/Pixels.h"
#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "kivlib/hdr/KIVStringList.h"
#include "scene/hdr/RasterAsset.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"
#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"

#include <gtest/gtest.h>

namespace {

KIVStringSet make_set(const std::vector<const char*>& files)
{
    KIVStringSet set;
    for (const char* file : files)
        set.add(file);
    return set;
}

/// The frames of the keys, each with its file.
std::string tell_keys(const CNodeRasterImage& image)
{
    std::string text;
    KeyCellIterator keys(image.inq_raster_column());
    while (const KeyCell* key = keys++)
        text += std::to_string(key->inq_number()) + ":" +
                image.inq_filename(key->inq_number()).get_file().str() + " ";
    return text;
}

/// Images on disc and the assets that a scene would have for them.
class Artwork {
public:
    /// A node that shows the picture from the frame on.
    CNodeRasterImage* make_node(const char* name, const Picture& picture, int frame = 1)
    {
        const ClassDescriptor* tiff = ClassManager::inq_main()->find_cd_for("TiffWriter");
        const std::unique_ptr<KIVPixmapWriter> writer(
            static_cast<const KIVPixmapWriterDescriptor*>(tiff)->new_writer(0));
        EXPECT_TRUE(writer->write_pixmap(folder.path(name), make_pixmap(picture).get()));
        auto* node = new CNodeRasterImage(folder.path(name), nullptr);
        RasterSeqSubColumn* column = node->inq_raster_column();
        KeyCell* key = column->inq_first_key();
        column->move_key_to(key, frame);
        assets.push_back(
            std::make_unique<RasterAsset>(assets.size(), RASTER_ASSET, KIVFile(node->inq_path())));
        static_cast<RasterSeqCellData*>(key->inq_data())->set_asset(assets.back().get());
        return node;
    }

    TempFolder folder;
    std::vector<std::unique_ptr<RasterAsset>> assets;
};

class Delegate final : public CNodeRasterImageLoadDelegate {
public:
    Delegate() { CNodeImageDLLInitialiser::set_delegate(this); }
    ~Delegate() { CNodeImageDLLInitialiser::set_delegate(nullptr); }

    gsl::owner<KIVStringSet*> pick_files(const KIVStringSet& extensions, int mode) override
    {
        EXPECT_EQ(mode, 1);
        EXPECT_GT(extensions.count(), 0);
        return picked.release();
    }

    void extend_sheet(XSheet* sheet, int highest_frame, int n_files) override
    {
        asked = std::to_string(n_files) + " to " + std::to_string(highest_frame);
        if (new_length)
            sheet->set_length(new_length);
    }

    std::unique_ptr<KIVStringSet> picked;
    std::string asked;
    int new_length = 0;
};

} // namespace

TEST(CNodeRasterImage, puts_files_on_the_frames_of_their_numbers)
{
    ImageGraph graph;
    const auto keys_of = [&](const std::vector<const char*>& files) {
        return tell_keys(CNodeRasterImage(make_set(files), &graph.graph));
    };
    EXPECT_EQ(keys_of({"c/a.tif", "c/b.tif", "c/d.tif"}), "1:a.tif 2:b.tif 3:d.tif ");
    EXPECT_EQ(keys_of({"c/a3.tif", "c/a0007.tif", "c/b.tif", "c/a2.tif"}),
              "3:a3.tif 7:a0007.tif 8:b.tif 9:a2.tif ");
    EXPECT_EQ(keys_of({"c/pan 20b.tif", "c/a99999999999999999999.tif"}),
              "20:pan 20b.tif 21:a99999999999999999999.tif ");
    EXPECT_EQ(keys_of({"c/a0012.tif"}), "1:a0012.tif ");
    EXPECT_EQ(keys_of({}), "");
}

TEST(CNodeRasterImage, is_made_of_files_that_the_user_picks_for_a_sheet_as_long_as_they_need)
{
    ImageGraph graph;
    graph.sheet.set_length(10);
    EXPECT_EQ(CNodeRasterImage::new_node_s(&graph.graph, nullptr), nullptr);
    Delegate delegate;
    const auto pick = [&](const KIVStringSet& files) {
        delegate.picked = std::make_unique<KIVStringSet>(files);
        bool flag = true;
        const std::unique_ptr<CNode> node(CNodeRasterImage::new_node_s(&graph.graph, &flag));
        EXPECT_FALSE(flag);
        return tell_keys(static_cast<CNodeRasterImage&>(*node));
    };
    const KIVStringSet files = make_set({"c/a0009.tif", "c/a0012.tif"});
    EXPECT_EQ(pick(files), "9:a0009.tif 10:a0012.tif ");
    EXPECT_EQ(delegate.asked, "1 to 12");
    delegate.new_length = 12;
    EXPECT_EQ(pick(files), "9:a0009.tif 12:a0012.tif ");
    EXPECT_EQ(CNodeRasterImage::new_node_s(&graph.graph, nullptr), nullptr) << "nothing picked";
}

TEST(CNodeRasterImage, is_titled_after_its_file_or_its_folder)
{
    EXPECT_EQ(CNodeRasterImage("art/sky.v2.tif", nullptr).inq_name(), "sky.v2");
    const KIVStringSet files = make_set({"art/walk.old/1.tif", "x/2.tif"});
    EXPECT_EQ(CNodeRasterImage(files, nullptr).inq_name(), "walk");
    EXPECT_EQ(CNodeRasterImage(KIVStringSet(), nullptr).inq_name(), "Images");
}

TEST(CNodeRasterImage, is_copied_with_a_column_of_its_own)
{
    Artwork artwork;
    const std::unique_ptr<CNodeRasterImage> image(artwork.make_node("a.tif", {"R"}, 5));
    const std::unique_ptr<CNodeRasterImage> copy(static_cast<CNodeRasterImage*>(image->clone()));
    EXPECT_NE(copy->inq_raster_column(), image->inq_raster_column());
    EXPECT_EQ(tell_keys(*copy), tell_keys(*image));
}

TEST(CNodeRasterImageOp, covers_what_the_request_sees_of_the_placed_image)
{
    Artwork artwork;
    const std::unique_ptr<CNodeRasterImage> image(artwork.make_node("a.tif", {"RRRR", "RRRR"}, 2));
    CNodeRasterImageOp op(image.get());
    auto* output = new CDataImage;
    op.set_outputs(CDataImage::inq_type_s(), output);
    const auto cover = [&](int frame, double angle, const Vector2& place) {
        Matrix33 turn;
        turn.set_rotation(angle, Vector2());
        Matrix33 move;
        move.set_translation(place);
        output->set_request_data(frame, true, false, 0, Matrix44(move * turn),
                                 IntBBox(IntRect(20, 0, 0, 20)));
        op.copy_node_info(image.get());
        op.init_data(nullptr);
        EXPECT_FALSE(output->inq_image_is_opaque());
        return output->inq_image_ibbox_v();
    };
    EXPECT_EQ(cover(2, 0.0, {8.25, 9.0}), IntBBox(IntRect(10, 6, 8, 11)));
    EXPECT_EQ(cover(2, std::acos(-1.0) / 4.0, {10.0, 10.0}), IntBBox(IntRect(13, 7, 7, 13)));
    EXPECT_EQ(cover(2, 0.0, {0.0, 20.0}), IntBBox(IntRect(20, 0, 19, 2)));
    EXPECT_TRUE(cover(2, 0.0, {30.0, 9.0}).inq_is_empty());
    EXPECT_TRUE(cover(1, 0.0, {8.0, 9.0}).inq_is_empty());

    const Captured quiet;
    std::filesystem::remove(artwork.folder.path("a.tif").str());
    artwork.assets[0]->check_for_lost_file();
    EXPECT_EQ(cover(2, 0.0, {8.0, 9.0}), IntBBox(IntRect(20, 0, 0, 20))) << "box as requested";
    op.generate_data(nullptr);
    EXPECT_EQ(output->extract_pixmap(), nullptr);
}

TEST(CNodeRasterImage, of_an_early_release_is_read_and_refused)
{
    const auto read = [](int version, int n_numbers) {
        OldRecord old("CNodeRasterImage", version);
        tell_old_node(old, version);
        old << KIVString("sky.tif");
        for (int i = 0; i < n_numbers; ++i)
            old << 7;
        return old.read<CNodeRasterImage>();
    };
    EXPECT_TRUE(read(92, 1));
    EXPECT_FALSE(read(92, 0));
    EXPECT_TRUE(read(93, 2));
    EXPECT_FALSE(read(94, 1));
    const std::unique_ptr<CNodeRasterImage> image = read(95, 0);
    ASSERT_TRUE(image);
    Captured said;
    image->set_column(nullptr);
    const std::unique_ptr<CNodeRasterImage> copy(static_cast<CNodeRasterImage*>(image->clone()));
    for (const char* part : {"This version of Montaray can't load PR1 scenes\n",
                             "compositor/imagelib/lib/src/CNodeRasterImage"})
        EXPECT_NE(said.inq_errors().find(part), std::string::npos);
    EXPECT_EQ(copy->inq_raster_column(), nullptr);
    EXPECT_EQ(copy->inq_mipmap_id(1, 8), -1);
    EXPECT_EQ(copy->inq_path(), "");
}
