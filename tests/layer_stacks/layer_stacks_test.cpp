#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"
#include "compositor/affine/lib/hdr/CNodeHorFlip.h"
#include "compositor/affine/lib/hdr/CNodeNSTranslate.h"
#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/affine/lib/hdr/CNodeScale.h"
#include "compositor/affine/lib/hdr/CNodeShearTransform.h"
#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/affine/lib/hdr/CNodeVerFlip.h"
#include "compositor/affine/lib/hdr/CNodeXScale.h"
#include "compositor/affine/lib/hdr/CNodeXYScale.h"
#include "compositor/affine/lib/hdr/CNodeYScale.h"
#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "tests/layer_stacks/Stack.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <sys/inotify.h>
#include <unistd.h>

namespace {
constexpr int N_CELS = 4;
constexpr int WIDTH = 144;
constexpr int HEIGHT = 81;

template <class Node> DWNode* make()
{
    return new Node;
}

/// Draws a stack of layers from a seed: the same on either path.
class StackPainter {
public:
    StackPainter(Stack& stack, const TempFolder& cels, unsigned seed)
        : stack(stack), cels(cels), random(seed)
    {
        put_layers(stack.output, 2);
    }

private:
    int pick(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }

    /// Often a round number, at which pixels fall together.
    double pick(double least, double most)
    {
        const double value = least + (most - least) * pick(10'000) / 10'000.0;
        return pick(3) == 0 ? std::ceil(2.0 * value) / 2.0 : value;
    }

    void put_layers(CNode* consumer, int depth)
    {
        for (int n = 1 + pick(4); n > 0; --n) {
            CNode* under = consumer;
            for (int n_moves = pick(3); n_moves > 0; --n_moves)
                under = put_transform(under);
            if (pick(12) == 0)
                stack.put_card(under, {pick(0.0, 1.0), 0.5, 0.2, pick(2) == 0 ? 0.6 : 1.0});
            else if (depth > 0 && pick(3) == 0)
                put_layers(stack.put(new CNodeRostrum, under), depth - 1);
            else
                stack.put_picture(under, cels.path(std::to_string(pick(N_CELS)) + ".tif"));
        }
    }

    CNode* put_transform(CNode* consumer)
    {
        DWNode* node = stack.put(new_transform(), consumer);
        node->set_is_disabled(pick(6) == 0);
        return node;
    }

    /// A transform whose columns of every kind have keys.
    DWNode* new_transform()
    {
        static constexpr DWNode* (*MAKE[])() = {
            make<CNodeTransform>, make<CNodeCamera>,  make<CNodeTranslate>,
            make<CNodeRotate>,    make<CNodeScale>,   make<CNodeNSTranslate>,
            make<CNodeXScale>,    make<CNodeYScale>,  make<CNodeEWTranslate>,
            make<CNodeXYScale>,   make<CNodeHorFlip>, make<CNodeShearTransform>,
            make<CNodeVerFlip>};
        DWNode* node = MAKE[pick(static_cast<int>(std::size(MAKE)))]();
        for (SubColumn* member : node->inq_column()->inq_sub_column_list()->of<SubColumn>())
            set_random_key(*member);
        return node;
    }

    void set_random_key(SubColumn& column)
    {
        constexpr int SCALE = 11;
        constexpr int ANGLE = 12;
        constexpr int WIDTH = 13;
        constexpr int MOVE = 20;
        const double place = pick(-150.0, 150.0);
        const double other_place = pick(-150.0, 150.0);
        if (column.inq_type() == MOVE)
            set_place(static_cast<MoveColumn&>(column), {place, other_place});
        else if (column.inq_type() == SCALE)
            set_key(&column, 1, {pick(0.3, 4.0)});
        else if (column.inq_type() == ANGLE)
            set_key(&column, 1, {pick(2) == 0 && !is_shear(column) ? 90.0 : place});
        else if (column.inq_type() == WIDTH)
            set_key(&column, 1, {pick(400.0, 1400.0)});
        else
            set_key(&column, 1, {place});
    }

    static bool is_shear(const SubColumn& angle)
    {
        return angle.inq_label() == CNodeShearTransform::SHEAR_SUBCOL;
    }

    static void set_place(MoveColumn& move, const Vector2& place)
    {
        set_key(move.find_sub_column(MoveColumn::XPOS_SUBCOL), 1, {place.x()});
        set_key(move.find_sub_column(MoveColumn::YPOS_SUBCOL), 1, {place.y()});
    }

    Stack& stack;
    const TempFolder& cels;
    std::mt19937 random;
};

/// How many samples of two pixmaps differ by so many code values.
using Differences = std::map<int, int>;

template <class Sample> void count_samples(const KIVPixmap& a, const KIVPixmap& b, Differences& n)
{
    for (int y = 0; y < a.inq_height(); ++y) {
        const auto* one = reinterpret_cast<const Sample*>(a.inq_row(y));
        const auto* other = reinterpret_cast<const Sample*>(b.inq_row(y));
        for (int i = 0; i < a.inq_samples_per_pixel() * a.inq_width(); ++i)
            ++n[std::abs(one[i] - other[i])];
    }
}

void count_differences(const KIVPixmap& a, const KIVPixmap& b, Differences& n)
{
    if (a.inq_bits_per_sample() == 8)
        count_samples<std::uint8_t>(a, b, n);
    else
        count_samples<std::uint16_t>(a, b, n);
}

int find_largest_difference(const KIVPixmap& a, const KIVPixmap& b)
{
    Differences n;
    count_differences(a, b, n);
    return n.rbegin()->first;
}

/// The files of a folder that are opened from now on.
class OpenedFiles {
public:
    explicit OpenedFiles(const TempFolder& folder)
    {
        EXPECT_GE(::inotify_add_watch(queue, folder.path().c_str(), IN_OPEN), 0);
    }
    OpenedFiles(const OpenedFiles&) = delete;
    OpenedFiles& operator=(const OpenedFiles&) = delete;
    ~OpenedFiles() { ::close(queue); }

    /// How many files were opened since the last call.
    std::size_t count_new()
    {
        std::set<std::string> names;
        alignas(inotify_event) char events[4096];
        for (ssize_t n = 0; (n = ::read(queue, events, sizeof(events))) > 0;)
            for (const char* at = events; at < events + n;) {
                const auto* event = reinterpret_cast<const inotify_event*>(at);
                if (event->len > 0)
                    names.insert(event->name);
                at += sizeof(inotify_event) + event->len;
            }
        return names.size();
    }

private:
    int queue = ::inotify_init1(IN_NONBLOCK);
};

/// Turns its two inputs round: the lower one comes to lie on top.
class Turned : public CNodeRostrum {
public:
    gsl::owner<CNodeOp*> new_nodeop(int) override { return new Op(this); }

private:
    class Op : public CNodeNullOp {
    public:
        using CNodeNullOp::CNodeNullOp;
        void copy_request_data_to_inputs() override
        {
            IntArray order;
            order.add(1);
            order.add(0);
            inq_inputs(0)->reorder(&order, false);
            CNodeNullOp::copy_request_data_to_inputs();
        }
    };
};
} // namespace

// With MONTARAY_LONG in the environment there are thousands.
TEST(LayerStacks, look_the_same_drawn_into_one_pixmap_and_merged_from_many)
{
    const unsigned n_stacks = std::getenv("MONTARAY_LONG") ? 5'000 : 150;
    const TempFolder cels;
    for (int i = 0; i < N_CELS; ++i)
        write_cel(cels.path(std::to_string(i) + ".tif"), 96 + 37 * i, 80 + 11 * i, i);
    for (const int bits : {8, 16})
        for (const int quality : {0, 1}) {
            Differences n;
            Wall::n_pictures = 0;
            for (unsigned seed = 0; seed < n_stacks; ++seed) {
                Stack direct(Stack::Path::DIRECT);
                Stack merging(Stack::Path::MERGING);
                StackPainter(direct, cels, seed);
                StackPainter(merging, cels, seed);
                count_differences(*direct.render(WIDTH, HEIGHT, bits, quality),
                                  *merging.render(WIDTH, HEIGHT, bits, quality), n);
            }
            EXPECT_LE(n.rbegin()->first, 1) << bits << " bits at quality " << quality;
            EXPECT_GT(Wall::n_pictures, n_stacks) << "the paths are two";
        }
}

TEST(LayerStacks, leave_the_files_of_hidden_layers_closed)
{
    constexpr std::size_t N_LAYERS = 50;
    const KIVColour green(0.0, 1.0, 0.0);
    const TempFolder cels;
    for (std::size_t i = 0; i < N_LAYERS; ++i)
        write_cel(cels.path("cel" + std::to_string(i) + ".tif"), 40, 30, static_cast<int>(i));
    OpenedFiles opened(cels);
    Stack stack;
    auto* moved = stack.put(new CNodeEWTranslate, stack.put(new CNodeRostrum, stack.output));
    CNodeScreen* card = stack.put_card(moved, green);
    auto* group = stack.put(new CNodeRostrum, stack.output);
    auto* inner_group = stack.put(new CNodeRostrum, group);
    for (std::size_t i = 0; i < N_LAYERS; ++i) {
        CNode* const consumers[] = {stack.output,
                                    moved,
                                    group,
                                    inner_group,
                                    stack.put(new CNodeScale, stack.output),
                                    stack.put(new Wall, stack.output)};
        stack.put_picture(consumers[i % std::size(consumers)],
                          cels.path("cel" + std::to_string(i) + ".tif"));
    }
    const TempFolder saved;
    ASSERT_TRUE(stack.scene->save_to_file(saved.path(), true, true, false));
    Stack loaded;
    loaded.scene.reset(KIVScene::load_from_file(saved.path(), nullptr, false));
    Stack alone;
    alone.put_card(alone.output, green);
    for (const int bits : {8, 16}) {
        const auto expected = alone.render(WIDTH, HEIGHT, bits);
        EXPECT_EQ(find_largest_difference(*stack.render(WIDTH, HEIGHT, bits), *expected), 0);
        EXPECT_EQ(find_largest_difference(*loaded.render(WIDTH, HEIGHT, bits), *expected), 0);
    }
    EXPECT_EQ(opened.count_new(), 0U);
    card->set_is_disabled(true);
    stack.render(WIDTH, HEIGHT);
    EXPECT_EQ(opened.count_new(), N_LAYERS);
}

TEST(LayerStacks, show_a_layer_that_comes_out_above_the_card_that_was_to_hide_it)
{
    const KIVColour green(0.0, 1.0, 0.0);
    const TempFolder cels;
    write_cel(cels.path("cel.tif"), 300, 200, 1);
    Stack turned;
    auto* layers = turned.put(new Turned, turned.output);
    turned.put_card(layers, green);
    turned.put_picture(layers, cels.path("cel.tif"));
    Stack plain;
    plain.put_picture(plain.output, cels.path("cel.tif"));
    plain.put_card(plain.output, green);
    const auto expected = plain.render(WIDTH, HEIGHT);
    EXPECT_EQ(find_largest_difference(*turned.render(WIDTH, HEIGHT), *expected), 0);
    Stack alone;
    alone.put_card(alone.output, green);
    EXPECT_GT(find_largest_difference(*alone.render(WIDTH, HEIGHT), *expected), 0);
}
