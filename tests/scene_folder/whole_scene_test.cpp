#include "compositor/imagelib/lib/hdr/CNodeGroup.h"
#include "compositor/imagelib/lib/hdr/CNodeNullTransform.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalTransmitter.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "render/hdr/RenderScene.h"
#include "tests/museum/Museum.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>

namespace {
ino_t inode(const TempFolder& folder, const char* name)
{
    struct stat status {};
    return ::stat(folder.path(name).c_str(), &status) == 0 ? status.st_ino : 0;
}

/// The grey of every frame, as rendered.
std::vector<int> render_all(KIVScene& scene)
{
    RenderScene renderer(&scene, 4, 3, 1.0, 0, 0, 16, 0);
    std::vector<int> greys{0};
    for (int frame = 1; frame <= scene.inq_scene_length(); ++frame) {
        renderer.set_camera_view();
        const std::unique_ptr<KIVPixmap> pixmap(renderer.render_frame(frame, nullptr));
        greys.push_back(*reinterpret_cast<const std::uint16_t*>(pixmap->inq_data()));
    }
    return greys;
}
} // namespace

TEST(WholeScene, is_the_same_after_it_was_saved_and_loaded)
{
    const TempFolder folder;
    const FadingCard museum;
    ASSERT_TRUE(museum.scene->save_to_file(folder.path("a"), true, true, false));
    const Scene loaded = load(folder.path("a"));
    ASSERT_TRUE(loaded);
    EXPECT_FALSE(loaded->inq_needs_saving());
    EXPECT_EQ(render_all(*loaded), render_all(*museum.scene));
    ASSERT_TRUE(loaded->save_to_file(folder.path("b"), true, true, false));
    for (const std::string file :
         {"Scene.contents", "XSheet", "CoverSheet", "Graph", "DLLUsage", "kvd"})
        EXPECT_EQ(folder.read("a/" + file), folder.read("b/" + file)) << file;
}

TEST(WholeScene, looks_the_same_through_universal_nodes_and_keeps_them)
{
    const FadingCard plain, museum;
    CNodeGraph& graph = *museum.scene->inq_graph();
    graph.delete_connection(
        static_cast<CNodeConnection*>(museum.card->inq_out_connections_list().at_index(0)), true);
    CNode* last = museum.card;
    const auto lead_on = [&](CNode* next) {
        connect(*museum.scene, last, next);
        return last = next;
    };
    lead_on(add_node<CNodeUniversalTransmitter>(*museum.scene));
    lead_on(add_node<CNodeUniversalReceiver>(*museum.scene));
    CNode* folded = lead_on(add_node<CNodeNullTransform>(*museum.scene));
    CNode* group = lead_on(add_node<CNodeGroup>(*museum.scene));
    lead_on(museum.camera);
    folded->set_position({5.0, 7.0});
    group->set_position({3.0, 3.0});
    folded->add_to_group(group);
    folded->set_is_hidden(true);
    museum.camera->add_to_macro(add_node<CNodeUniversalMacro>(*museum.scene));
    museum.camera->inq_inputs()->inq_channel(0)->set_is_in_macro(true);

    const TempFolder folder;
    ASSERT_TRUE(museum.scene->save_to_file(folder.path(), true, true, false));
    const Scene loaded = load(folder.path());
    ASSERT_TRUE(loaded);
    EXPECT_EQ(render_all(*loaded), render_all(*plain.scene));
    const auto node = [&](int i) {
        return static_cast<CNode*>(loaded->inq_graph()->inq_nodes_list()->at_index(i));
    };
    EXPECT_EQ(node(5)->inq_effective_node(), node(6));
    node(5)->set_is_hidden(false);
    EXPECT_EQ(node(5)->inq_position(), Vector2(5.0, 7.0));
    EXPECT_TRUE(node(1)->inq_is_in_macro());
    EXPECT_EQ(node(1)->inq_macro(), node(7));
}

TEST(WholeScene, an_unchanged_one_rewrites_only_what_it_must)
{
    const TempFolder folder;
    ASSERT_TRUE(FadingCard().scene->save_to_file(folder.path(), true, true, false));
    const Scene scene = load(folder.path());
    std::map<std::string, ino_t> before;
    for (const char* file : {"Scene.contents", "XSheet", "CoverSheet", "Graph", "DLLUsage", "kvd"})
        before[file] = inode(folder, file);
    ASSERT_TRUE(scene->save_to_file(folder.path(), false, true, false));
    for (const auto& [file, old_inode] : before) {
        const bool is_kept = file == "XSheet" || file == "CoverSheet";
        EXPECT_EQ(inode(folder, file.c_str()) == old_inode, is_kept) << file;
    }
}

TEST(WholeScene, goes_whole_into_a_folder_that_holds_another)
{
    const TempFolder folder;
    const FadingCard museum;
    std::filesystem::current_path(folder.path().str());
    ASSERT_TRUE(museum.scene->save_to_file("a", true, true, false));
    const Scene other = load("a");
    other->inq_xsheet()->set_length(7);
    ASSERT_TRUE(other->save_to_file("a", false, true, false));
    EXPECT_FALSE(folder.has("a/a"));
    EXPECT_EQ(load(folder.path("a"))->inq_scene_length(), 7);

    // The first scene has not changed, but its sheet is not there any more.
    ASSERT_TRUE(museum.scene->save_to_file(folder.path("a"), false, true, false));
    EXPECT_EQ(load(folder.path("a"))->inq_scene_length(), 40);
    ASSERT_TRUE(museum.scene->save_to_file(folder.path("b"), false, true, true));
    EXPECT_EQ(load(folder.path("b"))->inq_scene_length(), 40);
}
