#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "kivlib/hdr/KIVStringList.h"
#include "tests/museum/Museum.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"
#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"

#include <gtest/gtest.h>

namespace {
/// Two scenes on disc, whose parts a test exchanges: one with a picture, one without anything.
class ExchangedParts : public testing::Test {
protected:
    ExchangedParts()
    {
        const FadingCard full;
        auto* node = new CNodeRasterImage(KIVString("/art/walk.tif"), full.scene->inq_graph());
        node->init();
        node->add_to_graph(full.scene->inq_graph());
        key_of(*node).set_file_name("/art/walk.tif");
        save(*full.scene, "full");
        save(*Scene(KIVScene::inq_unsetup_scene()), "empty");
    }

    static RasterSeqCellData& key_of(const CNodeRasterImage& node)
    {
        return *static_cast<RasterSeqCellData*>(node.inq_subcolumn()->inq_first_key()->inq_data());
    }

    void save(KIVScene& scene, const char* name) const
    {
        EXPECT_TRUE(scene.save_to_file(folder.path(name), true, true, false));
    }

    Scene load_with(const char* part_of_the_empty_one)
    {
        const std::string part = std::string("/") + part_of_the_empty_one;
        folder.write("full" + part, folder.read("empty" + part));
        return Scene(KIVScene::load_from_file(folder.path("full"), nullptr, false));
    }

    TempFolder folder;
    Captured captured;
};
} // namespace

TEST_F(ExchangedParts, nodes_without_their_columns_are_named_once)
{
    const Scene scene = load_with("XSheet");
    ASSERT_TRUE(scene);
    EXPECT_EQ(captured.inq_alerts(),
              std::vector<std::string>{"The parts of the scene " + folder.path("full").str() +
                                       " contradict one another:\n"
                                       "The sheet has no column 1 of the node Output.\n"
                                       "The sheet has no column 2 of the node Camera.\n"
                                       "The sheet has no column 3 of the node Color Card.\n"
                                       "The sheet has no column 4 of the node BG/OL."});
    scene->mark_used_assets();
    save(*scene, "again");
}

TEST_F(ExchangedParts, no_key_shows_the_picture_of_another_whose_tag_is_lost)
{
    const FadingCard film;
    auto* node = new CNodeRasterImage(KIVString("a.tif"), film.scene->inq_graph());
    node->init();
    node->add_to_graph(film.scene->inq_graph());
    auto* column = static_cast<RasterSeqSubColumn*>(node->inq_subcolumn());
    for (const int frame : {3, 2}) { // the later key has the first of the two tags
        auto* data = static_cast<RasterSeqCellData*>(column->make_key(frame)->inq_data());
        data->set_file_name(frame == 2 ? "/art/first.tif" : "/art/second.tif");
    }
    save(*film.scene, "full");
    const Scene scene = load_with("kvd");
    ASSERT_TRUE(scene);
    KIVStringList files;
    scene->get_dependencies(files, false);
    ASSERT_EQ(files.count(), 3);
    EXPECT_EQ(files.at_index(1), "/art/first.tif");
    EXPECT_EQ(files.at_index(2), "/art/second.tif");
}
