#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <limits>

namespace {
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

CNodeScreen* find_card(KIVScene& scene)
{
    for (CNode* node : scene.inq_graph()->inq_nodes_list()->of<CNode>())
        if (node->is_kind_of(CNodeScreen::inq_class_name_s()))
            return static_cast<CNodeScreen*>(node);
    return nullptr;
}

/// A place in a scene where a number can stand that is none.
struct Place {
    const char* part;
    void (*spoil)(KIVScene& scene);
};

constexpr Place PLACES[] = {
    {"XSheet",
     [](KIVScene& scene) {
         KeyCell* key = find_card(scene)->inq_subcolumn()->inq_first_key();
         static_cast<BaseNumericCellData*>(key->inq_data())->set_element(0, NONE);
     }},
    {"CoverSheet", [](KIVScene& scene) { scene.inq_cover_sheet()->set_unit_offset(INFINITE); }},
    {"Graph",
     [](KIVScene& scene) {
         find_card(scene)->set_position({NONE, 0.0});
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
