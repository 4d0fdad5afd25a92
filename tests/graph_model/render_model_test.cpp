#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/affine/lib/hdr/CNodeXYScale.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "render/hdr/RenderScene.h"
#include "tests/graph_model/GraphEditor.h"
#include "tests/museum/Museum.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <random>

namespace {
const unsigned RUNS = std::getenv("MONTARAY_LONG") ? 500 : 8;
constexpr int STEPS = 50; // of a run

/// Cards, pictures and transforms of a scene, wired at random.
class EditedScene {
public:
    EditedScene(unsigned seed, const TempFolder& folder) : random(seed), folder(folder)
    {
        std::string picture = "P6 300 200 255\n";
        for (int i = 0; i < 300 * 200 * 3; ++i)
            picture += char(i / 900 + i % 900 / (2 + i % 3));
        folder.write("picture.ppm", picture);
        scene->inq_xsheet()->set_length(8);
        auto* output = add_node<CNodeRostrum>(*scene);
        scene->inq_graph()->set_root_node(output);
        editor.nodes[0] = output;
    }

    /// Undoes steps now and then, and makes them again.
    void edit()
    {
        const auto n = editor.nodes.size();
        if (below(5) == 0 && editor.undo())
            below(2) == 0 && editor.redo();
        else if (n < 4 || below(4) == 0)
            editor.add(int(n), new_node());
        else if (const int id = 1 + below(n - 1); below(8) == 0 && editor.nodes[id]->inq_graph())
            editor.remove(id);
        else
            connect();
        editor.end_step();
        scene->inq_graph()->set_type_checker_enabled();
    }

    /// How many steps there were.
    int undo_all()
    {
        int n = 0;
        while (editor.undo())
            ++n;
        scene->inq_graph()->set_type_checker_enabled();
        return n;
    }
    void redo(int n)
    {
        for (; n > 0; --n)
            editor.redo();
        scene->inq_graph()->set_type_checker_enabled();
    }

    Scene scene{KIVScene::inq_unsetup_scene()};

private:
    int below(std::size_t end) { return int(random() % end); }
    double between(double low, double high) { return std::lerp(low, high, below(1000) / 1000.0); }

    gsl::owner<CNode*> new_node()
    {
        switch (below(5)) {
        case 0:
            return keyed(new CNodeScreen, 0.0, 1.0);
        case 1:
            return keyed(new CNodeTranslate, -150.0, 150.0);
        case 2:
            return keyed(new CNodeRotate, -90.0, 90.0);
        case 3:
            return keyed(new CNodeXYScale, 0.5, 1.5);
        default:
            auto* image = new CNodeRasterImage(folder.path("picture.ppm"), scene->inq_graph());
            image->init();
            return image;
        }
    }

    gsl::owner<CNode*> keyed(gsl::owner<XSNode*> node, double low, double high)
    {
        node->init();
        const std::unique_ptr<KIVLinkedList> columns(
            node->inq_column()->inq_deep_sub_column_list());
        for (auto* column : columns->of<SubColumn>())
            for (const int frame : {1, 8})
                if (!column->is_column() && column->can_make_key(frame))
                    set_key(column, frame, {between(low, high)});
        return node;
    }

    void connect()
    {
        CNodeGraph& graph = *scene->inq_graph();
        const int from = below(editor.nodes.size());
        const int to = below(2) == 0 ? 0 : below(editor.nodes.size());
        if (!editor.nodes[from]->inq_graph() || !editor.nodes[to]->inq_graph() ||
            !editor.nodes[to]->inq_inputs() ||
            !graph.inq_can_connect_acyclic(editor.output({from, 0}), editor.input({to, 0})))
            return;
        editor.connect(++last_connection, {from, 0}, -1, {to, 0}, below(4));
    }

    std::mt19937 random;
    const TempFolder& folder;
    GraphEditor editor{*scene->inq_graph()};
    int last_connection = 0;
};

std::string render(KIVScene& scene)
{
    std::string pixels;
    RenderScene renderer(&scene, 40, 30, 1.0, 0, 0, 8, 0);
    for (const int frame : {1, 5}) {
        renderer.set_camera_view();
        const std::unique_ptr<KIVPixmap> pixmap(renderer.render_frame(frame, nullptr));
        for (int y = 0; y < pixmap->inq_height(); ++y)
            pixels.append(reinterpret_cast<const char*>(pixmap->inq_row(y)), std::size_t{40 * 3});
    }
    return pixels;
}
} // namespace

TEST(RenderModel, renders_an_edited_scene_as_the_one_read_from_its_saved_form)
{
    unsigned n_shown = 0;
    for (unsigned seed = 0; seed < RUNS; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const TempFolder folder;
        EditedScene edited(seed, folder);
        const std::string blank = render(*edited.scene);
        for (int step = 0; step < STEPS; ++step)
            edited.edit();
        const std::string picture = render(*edited.scene);
        ASSERT_TRUE(edited.scene->save_to_file(folder.path("a"), true, true, false));
        const Scene loaded(KIVScene::load_from_file(folder.path("a"), nullptr, false));
        ASSERT_TRUE(loaded);
        ASSERT_TRUE(render(*loaded) == picture);
        const int n_steps = edited.undo_all();
        ASSERT_TRUE(render(*edited.scene) == blank);
        edited.redo(n_steps);
        ASSERT_TRUE(render(*edited.scene) == picture);
        n_shown += picture != blank;
    }
    EXPECT_GT(n_shown, RUNS / 2);
}
