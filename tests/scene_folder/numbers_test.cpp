#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <limits>

TEST(WholeScene, with_a_number_that_is_none_is_not_saved_over_one_that_is_sound)
{
    const TempFolder folder;
    const OneOfEach sound, spoilt;
    ASSERT_TRUE(sound.scene->save_to_file(folder.path(), true, true, false));
    spoilt.scene->inq_cover_sheet()->set_unit_offset(std::numeric_limits<double>::infinity());
    spoilt.scene->inq_xsheet()->set_length(3);
    const Captured captured;
    EXPECT_FALSE(spoilt.scene->save_to_file(folder.path(), true, true, false));
    ASSERT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_TRUE(captured.inq_alerts()[0].starts_with("A number is not finite"));
    EXPECT_TRUE(captured.inq_alerts()[0].ends_with("CoverSheet~"));
    const Scene old(KIVScene::load_from_file(folder.path(), nullptr, false));
    ASSERT_TRUE(old);
    EXPECT_EQ(old->inq_scene_length(), 4);
}
