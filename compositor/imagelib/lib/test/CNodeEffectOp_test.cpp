#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeEffectOp.h"
#include "compositor/imagelib/lib/test/Pixels.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/test/SketchGraph.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/KIVColour.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>

namespace {

IntRect area(long left, long bottom, long right, long top)
{
    return {top, left, bottom, right};
}

std::string text_of(const IntRect& r)
{
    std::ostringstream text;
    text << r.inq_left() << ' ' << r.inq_bottom() << ' ' << r.inq_right() << ' ' << r.inq_top();
    return text.str();
}

std::string text_of(const IntBBox& box)
{
    return box.inq_is_empty() ? "empty" : text_of(box.inq_rectangle());
}

/// A white patch, somewhere in view space. It notes the last of them that was asked.
class PatchOp : public CNodeOp {
public:
    PatchOp(CNode* node, const IntRect& cover) : CNodeOp(node), cover(cover) {}

    void init_data(AbortPanel*) override
    {
        asked = own()->inq_image_ibbox_v();
        asked_transform = own()->inq_node_to_view_transform();
        IntBBox covered(cover);
        covered.set_intersection(asked);
        own()->set_immediate_data(covered, false);
    }
    void generate_data(AbortPanel*) override
    {
        drawn = nullptr;
        if (inq_composite_output(own()->inq_type()) == own() &&
            !own()->inq_image_ibbox_v().inq_is_empty())
            drawn = own()->create_pixmap(KIVColour(1.0), PT_RGBA_8);
    }
    bool inq_can_composite() override { return true; }
    bool inq_interactive() override { return true; }

    inline static IntBBox asked;
    inline static Matrix44 asked_transform;
    inline static const KIVPixmap* drawn = nullptr;

private:
    CDataImage* own() const { return CDataImage::from(inq_node_data()); }

    IntRect cover;
};

/// Asks for what the test says, and notes what it was given.
class TrialOp : public CNodeEffectOp {
public:
    using CNodeEffectOp::CNodeEffectOp;
    using CNodeEffectOp::inq_effect_radius;
    using CNodeEffectOp::inq_int_effect_radius;
    using CNodeEffectOp::set_border;
    using CNodeEffectOp::set_pixel_border;
    using CNodeEffectOp::set_transform;

    void set_effect_request() override
    {
        ++n_asked;
        if (request)
            request(*this);
        radius = inq_effect_radius();
        whole_radius = inq_int_effect_radius();
    }
    void generate_effect(AbortPanel*) override
    {
        ++n_made;
        process_rect = inq_process_rect();
        input.reset(inq_input_image()->extract_pixmap());
        is_as_drawn = input && input.get() == PatchOp::drawn;
    }

    inline static std::function<void(TrialOp&)> request;
    inline static int n_asked = 0;
    inline static int n_made = 0;
    inline static Vector2 radius;
    inline static IntVector2 whole_radius;
    inline static IntRect process_rect;
    inline static std::unique_ptr<KIVPixmap> input;
    inline static bool is_as_drawn = false;
};

class Effect : public testing::Test {
protected:
    Effect()
    {
        sketch.new_op = [](CNode* node) -> CNodeOp* { return new TrialOp(node); };
        effect = sketch.add("effect", 2, CDataImage::inq_type_s());
        TrialOp::request = nullptr;
        TrialOp::n_asked = TrialOp::n_made = 0;
    }

    ~Effect() override { TrialOp::input.reset(); }

    template <int LEFT, int BOTTOM, int RIGHT, int TOP> void add_patch(int input = 0)
    {
        sketch.new_op = [](CNode* node) -> CNodeOp* {
            return new PatchOp(node, area(LEFT, BOTTOM, RIGHT, TOP));
        };
        sketch.connect(sketch.add("patch", 0, CDataImage::inq_type_s()), effect, input);
    }

    /// What the effect says that it covers.
    std::string run(const IntBBox& wanted, double zoom = 1.0)
    {
        Matrix44 to_view;
        to_view.set_scale(Vector3(zoom, zoom, 1.0));
        GraphExec exec(CDataImage::inq_type_s(), effect, 0);
        exec.set_is_interactive(is_interactive);
        exec.set_interactive_node(static_cast<int>(effect->inq_label()));
        auto* root = static_cast<CDataImage*>(exec.inq_root_data());
        root->set_request_data(1, true, false, 0, to_view, wanted);
        exec.setup_data();
        exec.generate_data(panel);
        return text_of(root->inq_image_ibbox_v());
    }

    SketchGraph sketch;
    SketchNode* effect;
    bool is_interactive = false;
    AbortPanel* panel = nullptr;
};

const IntBBox FRAME(area(0, 0, 40, 30));

/// Stops the effect once it has begun.
class Impatient : public AbortPanel {
public:
    bool inq_abort() override { return PatchOp::drawn && ++n_asked > 1; }
    int n_asked = 0;
};

} // namespace

TEST_F(Effect, asks_for_its_border_in_node_units_that_grow_with_zoom)
{
    add_patch<-100, -100, 100, 100>();
    TrialOp::request = [](TrialOp& op) { op.set_border(Vector2(3.0, 1.25)); };
    run(FRAME, 2.0);
    EXPECT_EQ(TrialOp::radius, Vector2(6.0, 2.5));
    EXPECT_EQ(TrialOp::whole_radius, IntVector2(6, 3));
    EXPECT_EQ(text_of(PatchOp::asked), "-6 -3 46 33");
    EXPECT_EQ(PatchOp::asked_transform(0, 0), 2.0);

    TrialOp::request = [](TrialOp& op) {
        op.set_border(Vector2(3.0, 1.0));
        op.set_pixel_border(IntVector2(4, 0));
    };
    run(FRAME, 2.0);
    EXPECT_EQ(TrialOp::radius, Vector2(4.0, 0.0));
    EXPECT_EQ(text_of(PatchOp::asked), "-4 0 44 30");
}

TEST_F(Effect, does_nothing_without_an_area_or_an_input)
{
    add_patch<0, 0, 10, 10>(1);
    EXPECT_EQ(run(FRAME), "empty");
    EXPECT_EQ(TrialOp::n_asked + TrialOp::n_made, 0);
    add_patch<0, 0, 10, 10>();
    EXPECT_EQ(run(IntBBox()), "empty");
    EXPECT_EQ(TrialOp::n_asked, 0);
    EXPECT_EQ(text_of(PatchOp::asked), "empty");
    EXPECT_EQ(run(FRAME), "0 0 10 10");
    EXPECT_EQ(TrialOp::n_asked, 1);
    EXPECT_EQ(TrialOp::n_made, 2);
}

TEST_F(Effect, may_have_an_output_that_is_no_image)
{
    static constexpr int IMAGE = CDataImage::inq_type_s();
    static constexpr int UNKNOWN = 987;
    static auto* const descriptor =
        new CNodeDescriptor("EffectWithoutImage", "CNode", nullptr, -1, nullptr, "", 0, true, 1, 1,
                            &IMAGE, &UNKNOWN, nullptr);
    effect = new SketchNode(descriptor, "effect", sketch.new_op);
    sketch.graph.add_node(effect);
    add_patch<0, 0, 10, 10>();
    GraphExec exec(UNKNOWN, effect, 0);
    exec.setup_data();
    exec.generate_data(nullptr);
    EXPECT_EQ(TrialOp::n_asked, 0);
    EXPECT_EQ(TrialOp::n_made, 1);
}

TEST_F(Effect, can_be_stopped_while_its_input_is_drawn)
{
    add_patch<0, 0, 10, 10>();
    Impatient impatient;
    panel = &impatient;
    PatchOp::drawn = nullptr;
    run(FRAME);
    EXPECT_EQ(impatient.n_asked, 2);
    EXPECT_EQ(TrialOp::n_made, 0);
}

TEST_F(Effect, sees_its_input_with_a_clear_border)
{
    add_patch<3, 1, 5, 2>();
    TrialOp::request = [](TrialOp& op) { op.set_pixel_border(IntVector2(1, 1)); };
    EXPECT_EQ(run(FRAME), "2 0 6 3");
    EXPECT_EQ(find_picture(TrialOp::input.get()),
              Picture({"......", "......", "..WW..", "......", "......"}));
    EXPECT_EQ(text_of(TrialOp::process_rect), "2 2 6 5");

    // What the view cuts off is there as far as the border reaches.
    EXPECT_EQ(run(IntBBox(area(0, 0, 4, 30))), "2 0 4 3");
    EXPECT_EQ(find_picture(TrialOp::input.get()),
              Picture({"....", "....", "..WW", "....", "...."}));
}

TEST_F(Effect, takes_a_pixmap_that_needs_no_border_as_it_is)
{
    add_patch<-100, -100, 100, 100>();
    for (const IntVector2& border : {IntVector2(0, 0), IntVector2(2, 3)}) {
        is_interactive = !is_interactive; // draws nothing past the node that the user moves
        TrialOp::request = [&](TrialOp& op) { op.set_pixel_border(border); };
        EXPECT_EQ(run(FRAME), "0 0 40 30");
        EXPECT_TRUE(TrialOp::is_as_drawn);
    }
    EXPECT_EQ(text_of(TrialOp::process_rect), "0 0 44 36");
}

TEST_F(Effect, may_want_its_input_in_a_space_of_its_own)
{
    add_patch<2, 2, 5, 4>();
    TrialOp::request = [](TrialOp& op) {
        Matrix44 halved;
        halved.set_scale(Vector3(0.5, 0.5, 1.0));
        op.set_transform(halved);
        op.set_border(Vector2(2.0, 2.0));
    };
    EXPECT_EQ(run(IntBBox(area(1, 1, 41, 31))), "2 2 12 10");
    EXPECT_EQ(TrialOp::radius, Vector2(1.0, 1.0));
    EXPECT_EQ(text_of(PatchOp::asked), "-1 -1 22 17");
    EXPECT_EQ(PatchOp::asked_transform(1, 1), 0.5);
}
