#include "curveslib/hdr/Fairing.h"
#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <limits>

namespace {
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

template <class Node> Node* find_node(KIVScene& scene)
{
    for (CNode* node : scene.inq_graph()->inq_nodes_list()->of<CNode>())
        if (node->is_kind_of(Node::inq_class_name_s()))
            return static_cast<Node*>(node);
    return nullptr;
}

template <class Member> Member* find_column(KIVScene& scene)
{
    const std::unique_ptr<KIVLinkedList> all(scene.inq_xsheet()->inq_deep_sub_column_list());
    for (SubColumn* member : all->of<SubColumn>())
        if (member->is_kind_of(Member::inq_class_name_s()))
            return static_cast<Member*>(member);
    return nullptr;
}

KeyCell* find_key(KIVScene& scene)
{
    return find_node<CNodeScreen>(scene)->inq_subcolumn()->inq_first_key();
}

ScribbleLine* find_line(KIVScene& scene)
{
    return static_cast<ScribbleLine*>(
        find_column<NotesSubColumn>(scene)->inq_scribbles()->at_index(0));
}

/// A place in a scene where a number can stand that is none.
struct Place {
    const char* part;
    void (*spoil)(KIVScene& scene);
};

constexpr Place PLACES[] = {
    {"XSheet",
     [](KIVScene& scene) {
         static_cast<BaseNumericCellData*>(find_key(scene)->inq_data())->set_element(0, NONE);
     }},
    {"XSheet",
     [](KIVScene& scene) {
         auto* curve = new Fairing(1);
         curve->create_empty_cps(2);
         curve->inq_control_point(1)->after.time = -INFINITE;
         find_key(scene)->set_fairing(curve);
     }},
    {"XSheet",
     [](KIVScene& scene) {
         find_line(scene)->add_point({0.0, NONE});
     }},
    {"XSheet", [](KIVScene& scene) { find_line(scene)->set_colour(KIVColour(NONE, 0.0, 0.0)); }},
    {"XSheet",
     [](KIVScene& scene) {
         const SquidgeSet* set =
             find_column<PathSubColumn>(scene)->inq_path_policy()->inq_squidges();
         set->inq_squidges()[0]->add_knot({NONE, 0.0}, {}, {});
     }},
    {"CoverSheet", [](KIVScene& scene) { scene.inq_cover_sheet()->set_aspect_ratio(NONE); }},
    {"CoverSheet", [](KIVScene& scene) { scene.inq_cover_sheet()->set_unit_offset(INFINITE); }},
    {"Graph",
     [](KIVScene& scene) {
         find_node<CNodeScreen>(scene)->set_position({NONE, 0.0});
     }},
};
} // namespace

TEST(WholeScene, with_a_number_that_is_none_is_not_saved_over_one_that_is_sound)
{
    const TempFolder folder;
    const OneOfEach sound;
    ASSERT_TRUE(sound.scene->save_to_file(folder.path(), true, true, false));
    for (const Place& place : PLACES) {
        SCOPED_TRACE(testing::Message() << "place " << &place - PLACES);
        const OneOfEach spoilt;
        place.spoil(*spoilt.scene);
        spoilt.scene->inq_xsheet()->set_length(3);
        const Captured captured;
        EXPECT_FALSE(spoilt.scene->save_to_file(folder.path(), true, true, false));
        ASSERT_EQ(captured.inq_alerts().size(), 1U);
        EXPECT_TRUE(captured.inq_alerts()[0].starts_with("A number is not finite"));
        EXPECT_TRUE(captured.inq_alerts()[0].ends_with(std::string(place.part) + "~"));
        const Scene old(KIVScene::load_from_file(folder.path(), nullptr, false));
        ASSERT_TRUE(old);
        EXPECT_EQ(old->inq_scene_length(), 4);
    }
}
